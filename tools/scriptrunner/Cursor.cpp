#include "tools/scriptrunner/Cursor.h"

#include <algorithm>

#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/Value.h"

namespace scriptrunner {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) { return IsLetter(c) || IsDigit(c) || c == '_' || c == '?'; }

char Cursor::Peek(std::size_t ahead) const {
  return _position + ahead < _text.size() ? _text[_position + ahead] : '\0';
}

char Cursor::Take() {
  const char c = Peek();
  if (!AtEnd()) ++_position;
  return c;
}

bool Cursor::TakeIf(char expected) {
  if (AtEnd() || Peek() != expected) return false;
  ++_position;
  return true;
}

std::string Cursor::TakeName() {
  const std::size_t start = _position;
  while (IsNameCharacter(Peek())) ++_position;
  return _text.substr(start, _position - start);
}

std::string Cursor::PeekWord(std::size_t ahead) const {
  std::string word;
  for (char c = Peek(ahead); IsLetter(c) || IsDigit(c); c = Peek(++ahead)) word += c;
  return Lower(word);
}

void Cursor::SkipBlockComment() {
  const std::size_t end = _text.find("#>", _position + 2);
  if (end == std::string::npos) Fail("'<#' is not closed");
  _position = end + 2;
}

void Cursor::SkipBlank() {
  for (;;) {
    const char c = Peek();
    if (c == ' ' || c == '\t' || c == '\r') {
      ++_position;
    } else if (c == '#') {
      while (!AtEnd() && Peek() != '\n') ++_position;
    } else if (c == '<' && Peek(1) == '#') {
      SkipBlockComment();
    } else if (c == '`' && (Peek(1) == '\n' || (Peek(1) == '\r' && Peek(2) == '\n'))) {
      _position += Peek(1) == '\n' ? 2 : 3;
    } else {
      return;
    }
  }
}

void Cursor::SkipLines() {
  for (SkipBlank(); TakeIf('\n'); SkipBlank()) {
  }
}

void Cursor::SkipSeparators() {
  for (SkipBlank(); TakeIf('\n') || TakeIf(';'); SkipBlank()) {
  }
}

bool Cursor::AtStatementEnd() {
  SkipBlank();
  return AtEnd() || std::string_view("\n;})|").find(Peek()) != std::string_view::npos;
}

int Cursor::Line() const {
  const auto end = _text.begin() + static_cast<std::ptrdiff_t>(std::min(_position, _text.size()));
  return 1 + static_cast<int>(std::count(_text.begin(), end, '\n'));
}

void Cursor::Fail(const std::string& text) const { throw ScriptError(Line(), text); }

}  // namespace scriptrunner
