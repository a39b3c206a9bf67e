#pragma once

#include <windows.h>

#include <string>

#include "host/Export.h"

namespace ZLT {

/// Starts programs. No operation throws; each may be called from any thread.
class ZLT_API ProcessWrap {
 public:
  /// Starts a program in the signed-in user's session where this process may do that, else in its
  /// own. Its standard input is at its end; once it has ended, its exit code, its duration and the
  /// end of its output go to the suite's log. After the suite's time-out for installers it is
  /// ended, what it has started goes on.
  /// @param commandLine in, program and arguments. @param workingDirectory in, an existing folder.
  /// @param processHandle out, the process, for the caller to wait on and to close; null on
  /// failure.
  /// @param hidden in, true: without a visible window.
  /// @return non-zero when the process runs.
  static int CreateProcessInUserSession(const std::wstring& commandLine,
                                        const std::wstring& workingDirectory, HANDLE& processHandle,
                                        bool hidden);

  /// Runs a program to its end and tells whether it succeeded. Blocks until the program has ended,
  /// the cancel handle is signalled or the suite's time-out has passed; in the two latter cases it
  /// ends the program and every process that the program started. Input and log as above.
  /// @param commandLine in, program and arguments. @param workingDirectory in, an existing folder.
  /// @param hidden in, true: without a visible window. @param cancelHandle in, an event; may be
  /// null.
  /// @return non-zero exactly when the program ran to its end and its exit code was 0.
  static int LaunchApplicationAndCheckExitCode(const std::wstring& commandLine,
                                               const std::wstring& workingDirectory, bool hidden,
                                               HANDLE cancelHandle);
};

}  // namespace ZLT
