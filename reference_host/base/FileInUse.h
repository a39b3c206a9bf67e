#pragma once

#include <windows.h>

#include <chrono>

#include "reference_host/base/AwakeClock.h"
#include "reference_host/base/RunningWork.h"

namespace refhost {

/// @return whether a scanner or another program that holds a file for a moment may be the cause.
inline bool IsFileInUse(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED) ||
         result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION) ||
         result == HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION);
}

/// @return how long a file that others have open is waited for: 10 s until it is set, by the
/// configuration. Any thread.
std::chrono::milliseconds FileInUsePatience();
void SetFileInUsePatience(std::chrono::milliseconds patience);

/// Does something with a file that others may hold for a moment, such as a virus scanner that looks
/// at what has just been written: again and again while they do.
/// @param wait in, waits so many milliseconds; false ends the tries.
/// @param attempt in, gives an HRESULT.
/// @return the last result.
template <typename Wait, typename Attempt>
HRESULT Patiently(Wait&& wait, const Attempt& attempt) {
  constexpr DWORD PauseMs = 100;
  const auto end = AwakeClock::Now() + FileInUsePatience();
  HRESULT result = attempt();
  while (IsFileInUse(result) && AwakeClock::Now() < end && wait(PauseMs)) result = attempt();
  return result;
}

/// How long several files together are waited for: the patience for one, from the first on that is
/// in use. It ends when the suite is told to stop.
class SharedPatience {
 public:
  /// Waits so many milliseconds. @return false when the patience is over.
  bool operator()(DWORD milliseconds) {
    if (_end == AwakeClock::Time{0}) _end = AwakeClock::Now() + FileInUsePatience();
    if (_work.IsToStop() || AwakeClock::Now() >= _end) return false;
    Sleep(milliseconds);
    return true;
  }

 private:
  RunningWork _work;
  AwakeClock::Time _end{0};
};

}  // namespace refhost
