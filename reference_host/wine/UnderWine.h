#pragma once

#include <windows.h>

/// @return true in a Wine prefix, false on a real PC.
inline bool IsUnderWine() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}
