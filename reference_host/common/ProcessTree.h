#pragma once

#include "reference_host/common/ProcessStart.h"

namespace refhost {

/// A program with every process that it starts. The tree ends with this object, or with the host
/// should that die, unless it is released.
class ProcessTree {
 public:
  /// Starts the program.
  explicit ProcessTree(ProcessOrder order);

  bool IsRunning() const { return static_cast<bool>(_started); }

  /// @return the system's error number when the program did not start.
  unsigned long Error() const { return _error; }

  HANDLE Process() const { return _started.process.Get(); }

  /// Ends the program and every process that it started; blocks until the program is gone.
  void End();

  /// Lets the processes that the program has left behind run on.
  void Release();

 private:
  /// The program waits meanwhile, so that it starts nothing outside the job.
  bool Enclose();

  Handle _job;
  StartedProcess _started;
  unsigned long _error = 0;
};

}  // namespace refhost
