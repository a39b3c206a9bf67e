#pragma once

#include <utility>

#include "reference_host/process/ProcessStart.h"

namespace refhost {

/// A program with every process that it starts. The tree ends with this object, or with the host
/// should that die, unless it is released.
class ProcessTree {
 public:
  /// Starts the program. It is in its job from the first: a host that dies while it starts one
  /// leaves no program behind that waits for ever to be let go.
  explicit ProcessTree(ProcessOrder order);

  bool IsRunning() const { return static_cast<bool>(_process); }

  /// @return the system's error number when the program did not start.
  unsigned long Error() const { return _error; }

  HANDLE Process() const { return _process.Get(); }

  /// Ends the program and every process that it started; blocks until the program is gone.
  void End();

  /// Lets the program and what it has started run on.
  void Release();

  /// @return the program's handle, which is the caller's from now on.
  Handle TakeProcess() { return std::move(_process); }

 private:
  Handle _job;
  Handle _process;
  unsigned long _error = 0;
};

}  // namespace refhost
