#pragma once

#include <string>
#include <vector>

namespace scriptrunner {

class System;

/// What the program is started with.
struct Invocation {
  std::string script;                  ///< path
  std::vector<std::string> arguments;  ///< the script's own
};

/// Reads the program's arguments (without its own name), as PowerShell's command line has them.
/// @param invocation out, complete on success only.
/// @return an empty text on success, else what is wrong.
std::string ReadCommandLine(const std::vector<std::string>& words, Invocation& invocation);

/// Runs a script file to its end; what goes wrong is told with file and line on standard error.
/// @return the script's exit code, or one of ExitCode.
int RunScript(const Invocation& invocation, System& system);

}  // namespace scriptrunner
