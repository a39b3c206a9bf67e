#pragma once

#include <string>
#include <vector>

#include "tests/scriptrunner/Cases.h"

/// What a script came to.
struct Answer {
  unsigned long code = 0;
  std::string output;  ///< both streams, as the host's log has them; lines end in LF
  ScriptCases::Files files;

  bool operator==(const Answer&) const = default;
};

/// Who runs it.
enum class Program { PowerShell, ScriptRunner };

/// A script in a folder of its own.
struct Question {
  std::string text;
  std::vector<std::string> arguments = {};
  ScriptCases::Files files = {};    ///< beside it
  std::wstring policy = L"bypass";  ///< -ExecutionPolicy
  bool isThere = true;              ///< false: there is no such script
};

/// Runs a script by the agent's own command line, started as the reference host starts checks.
/// Blocks until it has ended; may be called from several threads.
Answer Ask(const Question& question, Program program);
