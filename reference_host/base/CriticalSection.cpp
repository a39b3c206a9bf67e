#include "host/common/CriticalSection.h"

#include <windows.h>

struct CriticalSection::State {
  CRITICAL_SECTION section;
};

CriticalSection::CriticalSection() : m_pState(new State) {
  InitializeCriticalSection(&m_pState->section);
}

CriticalSection::~CriticalSection() {
  DeleteCriticalSection(&m_pState->section);
  delete m_pState;
}

void CriticalSection::EnterLock() { EnterCriticalSection(&m_pState->section); }

void CriticalSection::ExitLock() { LeaveCriticalSection(&m_pState->section); }
