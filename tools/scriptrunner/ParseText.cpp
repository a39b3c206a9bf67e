#include <string_view>

#include "tools/scriptrunner/Parser.h"

namespace scriptrunner {

namespace {

constexpr std::string_view WordEnds = " \t\r\n;|&(){},";
constexpr std::string_view NotInWords = "'\"`<>@";

bool StartsVariable(char next) { return IsNameCharacter(next) || next == '{'; }

/// @return the name as variables are looked up: without regard to case.
std::string NormalName(const std::string& name) {
  if (Lower(name).starts_with("env:")) return "env:" + name.substr(4);
  return Lower(name);
}

}  // namespace

ExpressionPtr Parser::ParseVariable() {
  ExpressionPtr variable = Make(ExpressionKind::Variable);
  _cursor.Skip(1);
  std::string name;
  if (_cursor.TakeIf('{')) {
    while (!_cursor.AtEnd() && _cursor.Peek() != '}' && _cursor.Peek() != '\n') {
      name += _cursor.Take();
    }
    Expect('}', "'}' behind a variable's name");
  } else {
    name = _cursor.TakeName();
    if (Lower(name) == "env" && _cursor.TakeIf(':')) name = "env:" + _cursor.TakeName();
    if (_cursor.Peek() == ':') _cursor.Fail("':' behind $" + name + " is not in the subset");
  }
  if (name.empty()) _cursor.Fail("'$' without a variable's name");
  variable->name = NormalName(name);
  return variable;
}

ExpressionPtr Parser::ParseLiteralText() {
  const Cursor opening = _cursor;
  ExpressionPtr literal = Make(ExpressionKind::Literal);
  std::string text;
  _cursor.Skip(1);
  for (;;) {
    if (_cursor.AtEnd()) opening.Fail("the quote is not closed");
    const char c = _cursor.Take();
    // Two quotes stand for one.
    if (c == '\'' && !_cursor.TakeIf('\'')) break;
    text += c;
  }
  literal->value = std::move(text);
  return literal;
}

char Parser::ParseEscape() {
  if (_cursor.AtEnd()) _cursor.Fail("'`' at the end of the script");
  const char c = _cursor.Take();
  switch (c) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case '"':
    case '$':
    case '`':
      return c;
    default:
      _cursor.Fail(std::string("'`") + c + "' is not in the subset");
  }
}

/// What a '$' in an expandable text stands for; null when it is just a '$'.
ExpressionPtr Parser::ParseEmbedded() {
  const char next = _cursor.Peek(1);
  if (next == '(') {
    _cursor.Skip(1);
    return ParseParenthesis();
  }
  if (next == '$' || next == '^') _cursor.Fail(std::string("$") + next + " is not in the subset");
  return StartsVariable(next) ? ParseVariable() : nullptr;
}

ExpressionPtr Parser::ParseExpandableText() {
  const Cursor opening = _cursor;
  ExpressionPtr text = Make(ExpressionKind::Text);
  std::string literal;
  _cursor.Skip(1);
  for (;;) {
    if (_cursor.AtEnd()) opening.Fail("the quote is not closed");
    if (_cursor.Peek() == '$') {
      if (ExpressionPtr embedded = ParseEmbedded()) {
        text->parts.push_back(MakeText(std::move(literal)));
        text->parts.push_back(std::move(embedded));
        literal.clear();
        continue;
      }
    }
    const char c = _cursor.Take();
    if (c == '"' && !_cursor.TakeIf('"')) break;
    literal += c == '`' ? ParseEscape() : c;
  }
  text->parts.push_back(MakeText(std::move(literal)));
  return text;
}

/// A word of a command line; variables in it are put in.
ExpressionPtr Parser::ParseBareWord() {
  ExpressionPtr word = Make(ExpressionKind::Text);
  std::string literal;
  while (!_cursor.AtEnd() && WordEnds.find(_cursor.Peek()) == std::string_view::npos) {
    const char c = _cursor.Peek();
    if (NotInWords.find(c) != std::string_view::npos) {
      _cursor.Fail(std::string("'") + c + "' in a word is not in the subset: quote the whole");
    }
    if (c == '$' && StartsVariable(_cursor.Peek(1))) {
      word->parts.push_back(MakeText(std::move(literal)));
      word->parts.push_back(ParseVariable());
      literal.clear();
    } else {
      literal += _cursor.Take();
    }
  }
  word->parts.push_back(MakeText(std::move(literal)));
  return word;
}

}  // namespace scriptrunner
