#pragma once

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

/// Threads that are all at work until they are told to stop.
class WaitingThreads {
 public:
  /// @param work in, what each runs; it is given the thread's number, from 0.
  WaitingThreads(int count, const std::function<void(int)>& work);
  /// Threads that were not stopped cannot be waited for: the process has to end then.
  ~WaitingThreads();
  WaitingThreads(const WaitingThreads&) = delete;
  WaitingThreads& operator=(const WaitingThreads&) = delete;

  /// Stops them and waits for their end.
  /// @param stop in, what makes `work` come to an end.
  /// @return milliseconds from the call of `stop` until `work` was over, for each thread. @throws
  /// std::runtime_error when one was over before.
  std::vector<double> EndBy(const std::function<void()>& stop);

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<Clock::time_point> _ends;
  std::vector<std::thread> _threads;
};
