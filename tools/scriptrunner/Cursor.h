#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace scriptrunner {

/// Walks over a script's text.
class Cursor {
 public:
  explicit Cursor(std::string text) : _text(std::move(text)) {}

  bool AtEnd() const { return _position >= _text.size(); }
  /// @return the character that lies `ahead` behind the current one; '\0' behind the end.
  char Peek(std::size_t ahead = 0) const;
  char Take();
  bool TakeIf(char expected);
  /// @return the letters, digits and '_' (with '?', which names may hold too) from here on.
  std::string TakeName();
  /// @return the letters and digits from here on, in lower case, without moving.
  std::string PeekWord(std::size_t ahead = 0) const;
  void Skip(std::size_t count) { _position += count; }

  /// Skips blanks, comments and backticks at line ends.
  void SkipBlank();
  /// Skips blanks and line ends.
  void SkipLines();
  /// Skips blanks, line ends and semicolons.
  void SkipSeparators();
  /// @return true when nothing but blanks lies before a line end, ';', '}', ')', '|' or the end.
  bool AtStatementEnd();

  std::size_t Position() const { return _position; }
  void ReturnTo(std::size_t position) { _position = position; }
  int Line() const;
  [[noreturn]] void Fail(const std::string& text) const;

 private:
  void SkipBlockComment();

  std::string _text;
  std::size_t _position = 0;
};

bool IsLetter(char c);
bool IsDigit(char c);
bool IsNameCharacter(char c);

}  // namespace scriptrunner
