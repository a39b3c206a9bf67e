#include "tools/tolmarpack/ScriptText.h"

#include <algorithm>
#include <string_view>

#include "host/common/Text.h"

namespace tolmarpack {

namespace {

bool IsWordSign(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
         std::string_view("$_-/.:\\").find(c) != std::string_view::npos || c < 0;
}

/// Goes through a script sign by sign.
class Scanner {
 public:
  explicit Scanner(const std::string& text) : _text(Lower(text)) {}

  std::vector<ScriptLine> Lines() {
    if (_text.starts_with("\xEF\xBB\xBF")) _at = 3;
    while (_at < _text.size()) Step();
    return std::move(_lines);
  }

 private:
  enum class Mode { Code, Comment, Block, Single, Double, SingleHere, DoubleHere };

  bool IsNext(std::string_view sign) const {
    return std::string_view(_text).substr(_at).starts_with(sign);
  }

  /// A here-string ends at the begin of a line only.
  bool EndsHere(std::string_view sign) const {
    return IsNext(sign) && _at > 0 && _text[_at - 1] == '\n';
  }

  void Put(bool isCode, bool isBare) {
    ScriptLine& line = _lines.back();
    const char c = _text[_at];
    if (isCode) line.code += c;
    if (isBare) line.bare += c;
  }

  void Enter(Mode mode, std::size_t signs) {
    _mode = mode;
    for (; signs > 0; --signs, ++_at) Put(mode != Mode::Comment && mode != Mode::Block, false);
  }

  void Leave(std::size_t signs) {
    for (; signs > 0; --signs, ++_at) Put(_mode != Mode::Comment && _mode != Mode::Block, false);
    _mode = Mode::Code;
  }

  void Step() {
    if (_text[_at] == '\n') {
      if (_mode == Mode::Comment) _mode = Mode::Code;
      _lines.push_back({{}, {}, _depth});
      ++_at;
    } else if (_mode == Mode::Code) {
      StepInCode();
    } else {
      StepInside();
    }
  }

  void StepInCode() {
    if (IsNext("<#")) return Enter(Mode::Block, 2);
    if (IsNext("#") && !FollowsWord()) return Enter(Mode::Comment, 1);
    if (IsNext("@'")) return Enter(Mode::SingleHere, 2);
    if (IsNext("@\"")) return Enter(Mode::DoubleHere, 2);
    if (IsNext("'")) return Enter(Mode::Single, 1);
    if (IsNext("\"")) return Enter(Mode::Double, 1);
    if (IsNext("{")) ++_depth;
    if (IsNext("}") && _depth > 0) --_depth;
    Put(true, true);
    ++_at;
  }

  /// "a#b" is one word.
  bool FollowsWord() const {
    return !_lines.back().code.empty() && IsWordSign(_lines.back().code.back());
  }

  void StepInside() {
    if (_mode == Mode::Block && IsNext("#>")) return Leave(2);
    if (_mode == Mode::Single && IsNext("'")) return Leave(1);
    if (_mode == Mode::Double && IsNext("\"")) return Leave(1);
    if (_mode == Mode::SingleHere && EndsHere("'@")) return Leave(2);
    if (_mode == Mode::DoubleHere && EndsHere("\"@")) return Leave(2);
    const bool isEscaped = _mode == Mode::Double && IsNext("`") && _at + 1 < _text.size();
    for (int signs = isEscaped && _text[_at + 1] != '\n' ? 2 : 1; signs > 0; --signs, ++_at) {
      Put(_mode != Mode::Comment && _mode != Mode::Block, false);
    }
  }

  const std::string _text;
  std::size_t _at = 0;
  Mode _mode = Mode::Code;
  int _depth = 0;
  std::vector<ScriptLine> _lines{1};
};

}  // namespace

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  return text;
}

std::string ScriptIn(const std::string& bytes) {
  if (!bytes.starts_with("\xFF\xFE")) return bytes;
  std::wstring text;
  for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
    const auto low = static_cast<unsigned char>(bytes[at]);
    const auto high = static_cast<unsigned char>(bytes[at + 1]);
    text += static_cast<wchar_t>(low | high << 8);
  }
  return ZLT::String::UTF16ToUTF8(text);
}

std::vector<ScriptLine> LinesOf(const std::string& text) { return Scanner(text).Lines(); }

std::vector<std::string> WordsOf(const std::string& line) {
  std::vector<std::string> words;
  for (auto at = line.begin(); at != line.end();) {
    const auto begin = std::find_if(at, line.end(), IsWordSign);
    at = std::find_if_not(begin, line.end(), IsWordSign);
    if (begin != at) words.emplace_back(begin, at);
  }
  return words;
}

}  // namespace tolmarpack
