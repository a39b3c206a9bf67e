#include "bench/load/WaitingThreads.h"

#include <stdexcept>

void WaitingThreads::Start(const std::function<void()>& work) {
  Clock::time_point& end = _ends.emplace_back();
  _threads.emplace_back([work, &end] {
    work();
    end = Clock::now();
  });
}

WaitingThreads::~WaitingThreads() {
  for (std::thread& thread : _threads) {
    if (thread.joinable()) thread.detach();
  }
}

std::vector<double> WaitingThreads::EndBy(const std::function<void()>& stop) {
  const Clock::time_point begin = Clock::now();
  stop();
  for (std::thread& thread : _threads) thread.join();
  std::vector<double> times;
  for (const Clock::time_point end : _ends) {
    times.push_back(std::chrono::duration<double, std::milli>(end - begin).count());
    if (times.back() < 0) throw std::runtime_error("an operation was over before the stop");
  }
  return times;
}
