#pragma once

#include <windows.h>

#include <chrono>

namespace refhost {

/// The time that the machine has been awake: a laptop's sleep does not count.
struct AwakeClock {
  using Time = std::chrono::milliseconds;

  static Time Now() {
    ULONGLONG ticks = 0;  // of 100 ns
    QueryUnbiasedInterruptTime(&ticks);
    return Time{ticks / 10000};
  }
};

}  // namespace refhost
