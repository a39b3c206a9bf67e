#pragma once

/// What the program's exit status says.
namespace ExitStatus {

inline constexpr int Success = 0;
inline constexpr int Failure = 1;    ///< the agent's code is not 0, or a reply has another shape
inline constexpr int Usage = 2;      ///< command line or configuration
inline constexpr int Cancelled = 3;  ///< Ctrl-C, or the console was closed
inline constexpr int TimedOut = 4;   ///< --timeout, or what `configure` waits for did not come

}  // namespace ExitStatus
