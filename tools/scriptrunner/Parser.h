#pragma once

#include <string>

#include "tools/scriptrunner/Cursor.h"
#include "tools/scriptrunner/Syntax.h"

namespace scriptrunner {

/// Reads a whole script before anything of it runs: every construct, cmdlet and parameter that the
/// subset lacks throws ScriptError with its line.
class Parser {
 public:
  /// @param text in, UTF-8 without a byte order mark.
  explicit Parser(std::string text) : _cursor(std::move(text)) {}

  Script Parse();

 private:
  // ParseStatements.cpp
  void ParseParamBlock(Script& script);
  ScriptParameter ParseScriptParameter();
  ParameterType ParseParameterType();
  Block ParseBlock();
  Statement ParseStatement();
  void ParseIf(Statement& statement);
  ExpressionPtr ParseCondition();
  bool ParseAssignment(Statement& statement);

  // ParseExpressions.cpp
  enum class Use { AsStatement, AsValue };
  ExpressionPtr ParsePipeline(Use use);
  ExpressionPtr ParseLogical();
  ExpressionPtr ParseComparison();
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseParenthesis();
  ExpressionPtr ParseNumber();
  bool TakeOperator(const char* name);

  // ParseText.cpp
  ExpressionPtr ParseVariable();
  ExpressionPtr ParseLiteralText();
  ExpressionPtr ParseExpandableText();
  ExpressionPtr ParseEmbedded();
  char ParseEscape();
  ExpressionPtr ParseBareWord();

  // ParseCommands.cpp
  ExpressionPtr ParseCmdletCall();
  ExpressionPtr ParseProgramCall();
  std::string ParseCommandName();
  void ParseNamedArgument(Command& command);
  void BindUnnamed(Command& command, std::vector<ExpressionPtr> unnamed);
  void Bind(Command& command, const std::string& parameter, ExpressionPtr value);
  ExpressionPtr ParseArgumentValue();
  void ParseOutNull(Command& command);

  ExpressionPtr Make(ExpressionKind kind) const;
  ExpressionPtr MakeText(std::string text) const;
  void ExpectStatementEnd();
  void Expect(char c, const std::string& what);

  Cursor _cursor;
};

}  // namespace scriptrunner
