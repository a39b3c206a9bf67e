#pragma once

// The little of Windows that the agent uses, for building it natively under sanitizers. Stands on
// the include path in the place of the real header.

#include <cstdint>

using DWORD = std::uint32_t;
using BOOL = int;
using HANDLE = void*;
using HKEY = void*;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  unsigned char Data4[8];
};

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});

#define WINAPI

// Whatever waits is called through a slot, as through a program's import table on Windows: the
// tests redirect the same slots in both lanes.
extern "C" {
extern void (*__imp_Sleep)(DWORD);
extern DWORD (*__imp_WaitForSingleObject)(HANDLE, DWORD);
extern DWORD (*__imp_WaitForMultipleObjects)(DWORD, const HANDLE*, BOOL, DWORD);
}

HANDLE CreateEventW(void* security, BOOL manualReset, BOOL initialState, const wchar_t* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
BOOL CloseHandle(HANDLE event);

inline DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds) {
  return __imp_WaitForSingleObject(event, milliseconds);
}

inline DWORD WaitForMultipleObjects(DWORD count, const HANDLE* events, BOOL all,
                                    DWORD milliseconds) {
  return __imp_WaitForMultipleObjects(count, events, all, milliseconds);
}

inline void Sleep(DWORD milliseconds) { __imp_Sleep(milliseconds); }
