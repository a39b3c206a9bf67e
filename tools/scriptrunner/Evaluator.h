#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/scriptrunner/Syntax.h"

namespace scriptrunner {

class System;

/// Runs a script that was read.
class Evaluator {
 public:
  /// @param folder in, the script's folder ($PSScriptRoot), without a trailing backslash.
  Evaluator(System& system, std::string folder);

  /// Binds the command line's arguments to the script's parameters and runs it.
  /// @return its exit code. Throws ScriptError, and CommandFailure when a command fails.
  int Run(const Script& script, const std::vector<std::string>& arguments);

 private:
  void BindParameters(const Script& script, const std::vector<std::string>& arguments);
  void BindStandards(const Script& script);
  /// @return the exit code when the block exits.
  std::optional<int> RunBlock(const Block& block);
  std::optional<int> RunStatement(const Statement& statement);
  std::optional<int> RunIf(const Statement& statement);
  int ExitCodeOf(const Statement& statement);
  void Assign(const Statement& statement);
  void Print(const Expression& expression);
  Value Evaluate(const Expression& expression);
  Value Lookup(const Expression& variable);
  Value RunCommand(const Expression& call);
  Value RunCmdlet(const Expression& call);
  void RunProgram(const Command& command);

  System& _system;
  std::map<std::string, Value> _variables;
};

}  // namespace scriptrunner
