#pragma once

#include "host/Export.h"

/// A lock for the threads of one process. The thread that holds it may enter it again.
class ZLT_API CriticalSection {
 public:
  CriticalSection();
  ~CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  /// Blocks until the calling thread holds the lock.
  void EnterLock();

  /// Gives the lock up; once for every `EnterLock`, by the same thread.
  void ExitLock();

 private:
  struct State;
  State* m_pState;
};
