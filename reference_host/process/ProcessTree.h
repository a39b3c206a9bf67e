#pragma once

#include <chrono>
#include <utility>

#include "reference_host/process/ProcessStart.h"

namespace refhost {

/// How long the end of a program is waited for. It takes milliseconds, unless a driver neither
/// finishes nor gives up the program's input or output: nobody can do anything about that one.
constexpr auto EndWait = std::chrono::seconds(5);

/// @return true when a program that was ended is gone within `bound`.
bool IsGoneWithin(HANDLE process, std::chrono::milliseconds bound = EndWait);

/// A program with every process that it starts. The tree ends with this object, or with the host
/// should that die, unless it is released.
class ProcessTree {
 public:
  /// Starts the program. It is in its job from the first: a host that dies while it starts one
  /// leaves no program behind that waits for ever to be let go.
  /// @param order in, of this process's own session: a job has programs of one session only.
  explicit ProcessTree(ProcessOrder order);

  bool IsRunning() const { return static_cast<bool>(_process); }

  /// @return the system's error number when the program did not start.
  unsigned long Error() const { return _error; }

  HANDLE Process() const { return _process.Get(); }

  /// Ends the program and every process that it started; blocks until the program is gone.
  /// @return false when it is not gone within `bound`.
  bool End(std::chrono::milliseconds bound = EndWait);

  /// Lets the program and what it has started run on; what it starts from now on is in no job.
  void Release();

  /// @return the program's handle, which is the caller's from now on.
  Handle TakeProcess() { return std::move(_process); }

 private:
  Handle _job;
  Handle _process;
  unsigned long _error = 0;
};

}  // namespace refhost
