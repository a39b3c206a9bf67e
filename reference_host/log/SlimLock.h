#pragma once

#include <windows.h>

namespace refhost {

/// The system's slim lock, for std::unique_lock and its like: where many threads meet, it costs a
/// fraction of std::mutex.
class SlimLock {
 public:
  void lock() { AcquireSRWLockExclusive(&_lock); }
  void unlock() { ReleaseSRWLockExclusive(&_lock); }

 private:
  SRWLOCK _lock = SRWLOCK_INIT;
};

}  // namespace refhost
