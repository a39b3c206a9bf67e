#include "bench/load/WaitingThreads.h"

#include <stdexcept>

WaitingThreads::WaitingThreads(int count, const std::function<void(int)>& work)
    : _ends(static_cast<std::size_t>(count)) {
  for (int i = 0; i < count; ++i) {
    _threads.emplace_back([this, work, i] {
      work(i);
      _ends[static_cast<std::size_t>(i)] = Clock::now();
    });
  }
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
