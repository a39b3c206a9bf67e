#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace refhost {

/// A question whose answer may never come, on a thread of its own that nobody waits for.
template <typename Answer>
class Asked {
 public:
  Asked() = default;
  explicit Asked(std::function<Answer()> ask) {
    std::packaged_task<Answer()> task(std::move(ask));
    _answer = task.get_future().share();
    std::thread(std::move(task)).detach();
  }

  /// @return nothing when the answer is not there in time, or nobody has asked.
  std::optional<Answer> Until(std::chrono::steady_clock::time_point end) const {
    const bool came = _answer.valid() && _answer.wait_until(end) == std::future_status::ready;
    return came ? std::optional<Answer>(_answer.get()) : std::nullopt;
  }

 private:
  std::shared_future<Answer> _answer;
};

/// What the service's host said to a request for nothing in particular.
struct ServiceAnswer {
  unsigned long number = 0;                    ///< HTTP status, or WinHTTP's error
  std::optional<std::int64_t> secondsAhead{};  ///< this machine's clock; nothing: it tells no time
};

struct BitsAnswer {
  long result = 0;         ///< S_OK or BITS's error
  unsigned long jobs = 0;  ///< that fetch into the download folder
};

/// What the checks ask of others, all at once, so that a dead service costs its time but once.
class Questions {
 public:
  /// @param patience in, how long from now on answers are waited for.
  explicit Questions(std::chrono::milliseconds patience);

  /// Each blocks until its answer is there, or the time is over (then with WinHTTP's or the
  /// system's number for that).
  ServiceAnswer Service() const;
  unsigned long Token() const;
  BitsAnswer Bits() const;

 private:
  std::chrono::steady_clock::time_point _end;
  Asked<ServiceAnswer> _service;
  Asked<unsigned long> _token;
  Asked<BitsAnswer> _bits;
};

}  // namespace refhost
