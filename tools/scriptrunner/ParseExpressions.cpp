#include "tools/scriptrunner/Parser.h"

namespace scriptrunner {

namespace {

ExpressionPtr Join(ExpressionPtr join, ExpressionPtr left, ExpressionPtr right) {
  join->parts.push_back(std::move(left));
  join->parts.push_back(std::move(right));
  return join;
}

}  // namespace

ExpressionPtr Parser::ParsePipeline(Use use) {
  _cursor.SkipBlank();
  if (_cursor.Peek() == '&') {
    if (use == Use::AsValue) _cursor.Fail("a program's output cannot be used as a value");
    return ParseProgramCall();
  }
  return IsLetter(_cursor.Peek()) ? ParseCmdletCall() : ParseLogical();
}

/// Takes -name in any case, followed by no letter.
bool Parser::TakeOperator(const char* name) {
  _cursor.SkipBlank();
  if (_cursor.Peek() != '-' || _cursor.PeekWord(1) != name) return false;
  _cursor.Skip(1);
  _cursor.TakeName();
  _cursor.SkipLines();
  return true;
}

ExpressionPtr Parser::ParseLogical() {
  ExpressionPtr left = ParseComparison();
  for (;;) {
    ExpressionKind kind;
    if (TakeOperator("and")) {
      kind = ExpressionKind::And;
    } else if (TakeOperator("or")) {
      kind = ExpressionKind::Or;
    } else {
      break;
    }
    ExpressionPtr join = Make(kind);
    left = Join(std::move(join), std::move(left), ParseComparison());
  }
  if (_cursor.Peek() == '-' && IsLetter(_cursor.Peek(1))) {
    _cursor.Fail("operator -" + _cursor.PeekWord(1) + " is not in the subset");
  }
  return left;
}

ExpressionPtr Parser::ParseComparison() {
  ExpressionPtr left = ParseUnary();
  for (;;) {
    ExpressionKind kind;
    if (TakeOperator("eq")) {
      kind = ExpressionKind::Equal;
    } else if (TakeOperator("ne")) {
      kind = ExpressionKind::NotEqual;
    } else {
      return left;
    }
    ExpressionPtr join = Make(kind);
    left = Join(std::move(join), std::move(left), ParseUnary());
  }
}

ExpressionPtr Parser::ParseUnary() {
  _cursor.SkipBlank();
  if (!TakeOperator("not") && !_cursor.TakeIf('!')) return ParsePrimary();
  ExpressionPtr negation = Make(ExpressionKind::Not);
  negation->parts.push_back(ParseUnary());
  return negation;
}

ExpressionPtr Parser::ParsePrimary() {
  _cursor.SkipBlank();
  const char c = _cursor.Peek();
  ExpressionPtr primary;
  if (c == '(') {
    primary = ParseParenthesis();
  } else if (c == '\'') {
    primary = ParseLiteralText();
  } else if (c == '"') {
    primary = ParseExpandableText();
  } else if (c == '$') {
    primary = ParseVariable();
  } else if (IsDigit(c) || (c == '-' && IsDigit(_cursor.Peek(1)))) {
    primary = ParseNumber();
  } else if (_cursor.AtEnd()) {
    _cursor.Fail("unexpected end of the script");
  } else {
    _cursor.Fail(std::string("'") + c + "' is not in the subset here");
  }
  const char next = _cursor.Peek();
  if (next == '.' || next == '[') _cursor.Fail("members and elements are not in the subset");
  return primary;
}

ExpressionPtr Parser::ParseParenthesis() {
  const Cursor opening = _cursor;
  _cursor.Skip(1);
  _cursor.SkipLines();
  ExpressionPtr inner = ParsePipeline(Use::AsValue);
  _cursor.SkipLines();
  if (_cursor.AtEnd()) opening.Fail("'(' is not closed");
  Expect(')', "')'");
  return inner;
}

ExpressionPtr Parser::ParseNumber() {
  std::string digits(_cursor.TakeIf('-') ? 1 : 0, '-');
  digits += _cursor.TakeName();
  const std::optional<long long> number = ToInteger(digits);
  if (!number) _cursor.Fail("'" + digits + "' is not a whole number");
  ExpressionPtr literal = Make(ExpressionKind::Literal);
  literal->value = *number;
  return literal;
}

}  // namespace scriptrunner
