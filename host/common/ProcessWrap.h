#pragma once

#include <windows.h>

#include <string>

#include "host/Export.h"

namespace ZLT {

/// Starts programs. No operation throws; each may be called from any thread.
class ZLT_API ProcessWrap {
 public:
  /// Starts a program in the signed-in user's session where this process may do that, else in its
  /// own. Once it has ended, its exit code, its duration and the end of its output go to the
  /// suite's log; its standard input is at its end. In a session that is not this process's own it
  /// has no handle of this process: no output of it is kept, and its input is that of a console
  /// that nobody sees. After the suite's time-out for installers it is ended, what it has started
  /// goes on.
  /// @param commandLine in, program and arguments. @param workingDirectory in, an existing folder.
  /// @param processHandle out, the process, for the caller to wait on and to close; null on
  /// failure.
  /// @param hidden in, true: without a visible window.
  /// @return non-zero when the process runs.
  static int CreateProcessInUserSession(const std::wstring& commandLine,
                                        const std::wstring& workingDirectory, HANDLE& processHandle,
                                        bool hidden);

  /// Runs a program to its end and tells whether it succeeded. Blocks until it is the program's
  /// turn (the suite runs so many at once, the first to come is the first to go), and then until
  /// the program has ended, the cancel handle is signalled or the suite's time-out has passed; in
  /// the two latter cases it ends the program and every process that the program started. One that
  /// still waits for its turn when the handle is signalled is not started. With a handle that is
  /// signalled before the call, as after a cancelled installation, the program runs all the same,
  /// and the suite's grace, turn included, takes the place of the handle. Input and log as above.
  /// @param commandLine in, program and arguments. @param workingDirectory in, an existing folder.
  /// @param hidden in, true: without a visible window. @param cancelHandle in, an event; may be
  /// null.
  /// @return non-zero exactly when the program ran to its end and its exit code was 0.
  static int LaunchApplicationAndCheckExitCode(const std::wstring& commandLine,
                                               const std::wstring& workingDirectory, bool hidden,
                                               HANDLE cancelHandle);
};

}  // namespace ZLT
