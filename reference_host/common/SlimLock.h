#pragma once

#include <windows.h>

namespace refhost {

/// The system's slim lock, for std::unique_lock and its like: where many threads meet, it and its
/// condition cost a fraction of std::mutex and std::condition_variable.
class SlimLock {
 public:
  void lock() { AcquireSRWLockExclusive(&_lock); }
  void unlock() { ReleaseSRWLockExclusive(&_lock); }
  /// Gives the lock up until `condition` is woken, or for no reason.
  void Wait(CONDITION_VARIABLE& condition) {
    SleepConditionVariableSRW(&condition, &_lock, INFINITE, 0);
  }

 private:
  SRWLOCK _lock = SRWLOCK_INIT;
};

}  // namespace refhost
