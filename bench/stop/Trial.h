#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "bench/stop/Phase.h"

/// How the agent is told to stop.
enum class Way {
  Cancel,   ///< the host runs an operation and signals the handle that it gave it
  CleanUp,  ///< the host runs an operation and calls CleanUp on another thread
  Worker    ///< the agent's own pre-install worker is at it, and the host calls CleanUp
};

/// Milliseconds from the call to stop; nothing where there is no such thing in this way.
struct StopTimes {
  std::optional<unsigned long> operation;  ///< until the host's operation returned
  std::optional<unsigned long> cleanUp;    ///< until CleanUp returned
};

/// One stop in one phase. The agent ends with it, so a process makes one trial.
class Trial {
 public:
  /// @param folder in, the trial's own. @param limitMs in, how long a stop is waited for.
  Trial(const Phase& phase, Way way, std::wstring folder, DWORD limitMs);

  /// Brings the agent into the phase and stops it; blocks.
  /// @param times out, a time of `limitMs` means that control did not come back for so long; the
  /// process is then to be ended without further ado, since a thread is still at work.
  /// @return false when the phase was not reached.
  bool Run(StopTimes& times);

 private:
  void LockDownloadFolder() const;
  void StartOperation();
  StopTimes Stop();

  const Phase& _phase;
  const Way _way;
  const std::wstring _folder;
  const DWORD _limitMs;
  const HANDLE _cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE _operationDone = nullptr;
};
