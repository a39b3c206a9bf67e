#pragma once

#include <chrono>
#include <functional>

/// Runs since it was made.
class Stopwatch {
 public:
  double Milliseconds() const;

 private:
  std::chrono::steady_clock::time_point _begin = std::chrono::steady_clock::now();
};

/// @return how long `work` takes, in milliseconds.
double MillisecondsOf(const std::function<void()>& work);

/// Blocks until the condition holds; looks every `pollMs`, and once at least.
/// @return false when it does not hold within `limitMs`.
bool WaitUntil(const std::function<bool()>& condition, unsigned int limitMs, unsigned int pollMs);
