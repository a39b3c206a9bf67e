#pragma once

#include "host/common/CriticalSection.h"

/// Holds a lock of the agent for one scope.
class StateGuard {
 public:
  explicit StateGuard(CriticalSection& lock) : _lock(lock) { _lock.EnterLock(); }
  ~StateGuard() { _lock.ExitLock(); }
  StateGuard(const StateGuard&) = delete;
  StateGuard& operator=(const StateGuard&) = delete;

 private:
  CriticalSection& _lock;
};
