#pragma once

#include <stdexcept>
#include <string>

namespace scriptrunner {

/// The script is outside the subset, or is no script at all. Nothing has a meaning behind it, so
/// the run ends with ExitCode::Refused.
class ScriptError : public std::runtime_error {
 public:
  ScriptError(int line, const std::string& text) : std::runtime_error(text), _line(line) {}
  int Line() const { return _line; }

 private:
  int _line;
};

/// A command could not do what it was asked for, such as copying a file that does not exist.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The runner's own exit codes; a script's `exit` gives any other.
namespace ExitCode {
inline constexpr int CommandFailed = 1;
inline constexpr int Refused = 64;
inline constexpr int NoScript = -196608;  ///< what PowerShell gives for a -File that is not there
}  // namespace ExitCode

}  // namespace scriptrunner
