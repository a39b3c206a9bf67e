#pragma once

#include <windows.h>

#include <string>

#include "reference_host/process/ProcessStart.h"

/// A moment in a visit: so much later than the agent has written so many records.
struct Moment {
  unsigned int record = 0;
  DWORD delayMs = 0;
};

/// A visit to the service in a process of its own, which can be killed.
class HostProcess {
 public:
  /// Starts the process. @param folder in, with the agent's log below it.
  /// @param again in, as for `VisitService`.
  HostProcess(const std::wstring& folder, bool again);

  /// Kills the process at the moment; blocks until it is dead or has ended.
  /// @return false when it has ended before, or its records did not get that far in the time.
  bool KillAt(Moment moment, DWORD limitMs);

  /// Blocks until the process has ended, for `limitMs` at most; it is killed then.
  /// @param exitCode out, its exit code; untouched when it was killed.
  /// @return false when it was killed.
  bool RunToEnd(DWORD limitMs, DWORD& exitCode);

  /// @return what the agent has logged since the process began.
  const std::string& Log();

 private:
  void Kill();

  const std::wstring _logPath;
  std::uintmax_t _logRead = 0;
  std::string _log;
  refhost::Handle _process;
};
