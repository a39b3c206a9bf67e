#pragma once

#include <windows.h>

#include <chrono>

#include "reference_host/base/AwakeClock.h"

namespace refhost {

/// @return whether a scanner or another program that holds a file for a moment may be the cause.
inline bool IsFileInUse(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED) ||
         result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION) ||
         result == HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION);
}

/// Does something with a file that others may hold for a moment, such as a virus scanner that looks
/// at what has just been written: again and again while they do.
/// @param attempt in, gives an HRESULT. @param patience in, how long at most.
/// @param wait in, waits so many milliseconds; false ends the tries.
/// @return the last result.
template <typename Attempt, typename Wait>
HRESULT Patiently(std::chrono::milliseconds patience, const Wait& wait, const Attempt& attempt) {
  constexpr DWORD PauseMs = 100;
  const auto end = AwakeClock::Now() + patience;
  HRESULT result = attempt();
  while (IsFileInUse(result) && AwakeClock::Now() < end && wait(PauseMs)) result = attempt();
  return result;
}

}  // namespace refhost
