#include <array>
#include <string_view>

#include "tools/scriptrunner/Parser.h"

namespace scriptrunner {

namespace {

constexpr std::array<std::string_view, 6> ReadOnly{"psscriptroot", "true", "false",
                                                   "null",         "args", "lastexitcode"};

}  // namespace

ExpressionPtr Parser::Make(ExpressionKind kind) const {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  expression->line = _cursor.Line();
  return expression;
}

ExpressionPtr Parser::MakeText(std::string text) const {
  ExpressionPtr literal = Make(ExpressionKind::Literal);
  literal->value = std::move(text);
  return literal;
}

void Parser::Expect(char c, const std::string& what) {
  if (!_cursor.TakeIf(c)) _cursor.Fail("expected " + what);
}

void Parser::ExpectStatementEnd() {
  if (_cursor.AtStatementEnd() && _cursor.Peek() != ')' && _cursor.Peek() != '|') return;
  _cursor.Fail(std::string("unexpected '") + _cursor.Peek() + "'");
}

Script Parser::Parse() {
  Script script;
  _cursor.SkipSeparators();
  if (_cursor.PeekWord() == "param") ParseParamBlock(script);
  for (_cursor.SkipSeparators(); !_cursor.AtEnd(); _cursor.SkipSeparators()) {
    script.body.push_back(ParseStatement());
  }
  return script;
}

void Parser::ParseParamBlock(Script& script) {
  script.hasParamBlock = true;
  _cursor.TakeName();
  _cursor.SkipLines();
  Expect('(', "'(' behind param");
  for (_cursor.SkipLines(); !_cursor.TakeIf(')'); _cursor.SkipLines()) {
    if (!script.parameters.empty()) Expect(',', "',' between parameters");
    script.parameters.push_back(ParseScriptParameter());
  }
}

ScriptParameter Parser::ParseScriptParameter() {
  ScriptParameter parameter;
  _cursor.SkipLines();
  parameter.line = _cursor.Line();
  parameter.type = ParseParameterType();
  _cursor.SkipLines();
  if (_cursor.Peek() != '$') _cursor.Fail("expected a parameter's name");
  parameter.name = ParseVariable()->name;
  _cursor.SkipLines();
  if (_cursor.TakeIf('=')) {
    _cursor.SkipLines();
    parameter.standard = ParsePrimary();
  }
  return parameter;
}

ParameterType Parser::ParseParameterType() {
  if (!_cursor.TakeIf('[')) return ParameterType::Text;
  const std::string name = Lower(_cursor.TakeName());
  Expect(']', "']'");
  if (name == "string") return ParameterType::Text;
  if (name == "int") return ParameterType::Integer;
  if (name == "switch") return ParameterType::Switch;
  _cursor.Fail("[" + name + "] is not in the subset: only [string], [int] and [switch] are");
}

Block Parser::ParseBlock() {
  Block block;
  _cursor.SkipLines();
  Expect('{', "'{'");
  const Cursor opening = _cursor;
  for (_cursor.SkipSeparators(); !_cursor.TakeIf('}'); _cursor.SkipSeparators()) {
    if (_cursor.AtEnd()) opening.Fail("'{' is not closed");
    block.push_back(ParseStatement());
  }
  return block;
}

Statement Parser::ParseStatement() {
  Statement statement;
  statement.line = _cursor.Line();
  const std::string word = _cursor.PeekWord();
  if (word == "if") {
    ParseIf(statement);
    return statement;
  }
  if (word == "exit") {
    statement.kind = StatementKind::Exit;
    _cursor.TakeName();
    if (!_cursor.AtStatementEnd()) statement.expression = ParsePipeline(Use::AsValue);
  } else if (!ParseAssignment(statement)) {
    statement.expression = ParsePipeline(Use::AsStatement);
  }
  ExpectStatementEnd();
  return statement;
}

void Parser::ParseIf(Statement& statement) {
  statement.kind = StatementKind::If;
  bool isMore = true;
  while (isMore) {
    const bool isElse = Lower(_cursor.TakeName()) == "else";
    ExpressionPtr condition = isElse ? nullptr : ParseCondition();
    Block body = ParseBlock();
    statement.branches.push_back({std::move(condition), std::move(body)});
    const std::size_t end = _cursor.Position();
    _cursor.SkipLines();
    const std::string word = _cursor.PeekWord();
    isMore = !isElse && (word == "else" || word == "elseif");
    if (!isMore) _cursor.ReturnTo(end);
  }
}

ExpressionPtr Parser::ParseCondition() {
  _cursor.SkipLines();
  if (_cursor.Peek() != '(') _cursor.Fail("expected '(' before a condition");
  return ParseParenthesis();
}

bool Parser::ParseAssignment(Statement& statement) {
  if (_cursor.Peek() != '$') return false;
  const std::size_t start = _cursor.Position();
  const std::string name = ParseVariable()->name;
  _cursor.SkipBlank();
  if (!_cursor.TakeIf('=')) {
    _cursor.ReturnTo(start);
    return false;
  }
  for (const std::string_view fixed : ReadOnly) {
    if (name == fixed) _cursor.Fail("$" + name + " cannot be assigned to");
  }
  if (name.starts_with("env:")) _cursor.Fail("assigning to $env: is not in the subset");
  statement.kind = StatementKind::Assign;
  statement.variable = name;
  _cursor.SkipLines();
  statement.expression = ParsePipeline(Use::AsValue);
  return true;
}

}  // namespace scriptrunner
