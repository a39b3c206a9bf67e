#include "bench/common/Time.h"

#include <thread>

double Stopwatch::Milliseconds() const {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - _begin)
      .count();
}

double MillisecondsOf(const std::function<void()>& work) {
  const Stopwatch watch;
  work();
  return watch.Milliseconds();
}

bool WaitUntil(const std::function<bool()>& condition, unsigned int limitMs, unsigned int pollMs) {
  const Stopwatch watch;
  while (!condition()) {
    if (watch.Milliseconds() >= limitMs) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(pollMs));
  }
  return true;
}
