#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

/// Threads that are all at work until they are told to stop.
class WaitingThreads {
 public:
  WaitingThreads() = default;
  /// Threads that were not stopped cannot be waited for: the process has to end then.
  ~WaitingThreads();
  WaitingThreads(const WaitingThreads&) = delete;
  WaitingThreads& operator=(const WaitingThreads&) = delete;

  /// Starts one more.
  /// @param work in, what it runs.
  void Start(const std::function<void()>& work);

  /// Stops them and waits for their end.
  /// @param stop in, what makes `work` come to an end.
  /// @return milliseconds from the call of `stop` until `work` was over, for each thread. @throws
  /// std::runtime_error when one was over before.
  std::vector<double> EndBy(const std::function<void()>& stop);

 private:
  using Clock = std::chrono::steady_clock;

  std::deque<Clock::time_point> _ends;  ///< one a thread, which stay where they are
  std::vector<std::thread> _threads;
};
