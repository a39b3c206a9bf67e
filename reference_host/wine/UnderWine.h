#pragma once

#include <windows.h>

/// @return true in a Wine prefix, false on a real PC.
inline bool IsUnderWine() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

namespace refhost::wine {

/// @return true under Wine. The environment variable TOLMAR_AS_ON_WINDOWS, whatever it holds, makes
/// it false there: for tests of the way of Windows, as far as Wine can go it.
inline bool IsInForce() {
  static const bool inForce =
      IsUnderWine() && GetEnvironmentVariableW(L"TOLMAR_AS_ON_WINDOWS", nullptr, 0) == 0;
  return inForce;
}

}  // namespace refhost::wine
