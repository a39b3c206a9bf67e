#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace scriptrunner {

/// What a script reaches of the machine besides its files. All texts are UTF-8.
class System {
 public:
  virtual ~System() = default;

  /// @return the environment variable, empty when there is none.
  virtual std::optional<std::string> Environment(const std::string& name) = 0;

  virtual void Sleep(std::chrono::milliseconds duration) = 0;

  /// Runs a program to its end.
  /// @param discardOutput in, true: its standard output goes nowhere.
  /// @return the program's exit code. Throws CommandFailure when it cannot be started.
  virtual int RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         bool discardOutput) = 0;

  /// Writes one line to standard output.
  virtual void Write(const std::string& line) = 0;

  /// Writes one line to standard error.
  virtual void WriteError(const std::string& line) = 0;
};

}  // namespace scriptrunner
