#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tools/scriptrunner/Value.h"

namespace scriptrunner {

struct Cmdlet;
struct Command;
struct Expression;
struct Statement;
using ExpressionPtr = std::unique_ptr<Expression>;
using Block = std::vector<Statement>;

enum class ExpressionKind { Literal, Variable, Text, Not, Equal, NotEqual, And, Or, Command };

struct Expression {
  ExpressionKind kind = ExpressionKind::Literal;
  int line = 0;
  Value value;                       ///< Literal
  std::string name;                  ///< Variable: lower case, or "env:" and the name as written
  std::vector<ExpressionPtr> parts;  ///< Text: to be joined; the operators: their operands
  std::unique_ptr<Command> command;  ///< Command
};

/// A call of a cmdlet, bound to its parameters, or (with `program`) of a program.
struct Command {
  const Cmdlet* cmdlet = nullptr;
  std::map<std::string, ExpressionPtr> values;  ///< by the parameter's declared name
  std::set<std::string> switches;               ///< declared names
  ExpressionPtr program;
  std::vector<ExpressionPtr> programArguments;
  bool discardOutput = false;  ///< "| Out-Null"
};

enum class StatementKind { Evaluate, Assign, If, Exit };

struct Branch {
  ExpressionPtr condition;  ///< null: else
  Block body;
};

struct Statement {
  StatementKind kind = StatementKind::Evaluate;
  int line = 0;
  std::string variable;          ///< Assign: lower case
  ExpressionPtr expression;      ///< Evaluate, Assign; Exit: null is 0
  std::vector<Branch> branches;  ///< If
};

enum class ParameterType { Text, Integer, Switch };

/// One entry of the script's param block.
struct ScriptParameter {
  ParameterType type = ParameterType::Text;
  std::string name;        ///< lower case
  ExpressionPtr standard;  ///< null: nothing
  int line = 0;
};

struct Script {
  bool hasParamBlock = false;
  std::vector<ScriptParameter> parameters;
  Block body;
};

}  // namespace scriptrunner
