#include "reference_host/download/RetryPatience.h"

#include <algorithm>

namespace refhost {

namespace {

constexpr RetryPatience::Time FirstWait = std::chrono::seconds(1);
constexpr RetryPatience::Time LongestWait = std::chrono::minutes(1);

}  // namespace

RetryPatience::RetryPatience(Time patience, double scale) : _patience(patience), _scale(scale) {}

RetryPatience::Time RetryPatience::Scaled(Time time) const {
  return std::chrono::duration_cast<Time>(time * _scale);
}

std::optional<RetryPatience::Time> RetryPatience::Next(Time now, std::uint64_t bytes) {
  if (bytes > _most || !_began) {
    _most = std::max(_most, bytes);
    _began = now;
    _wait = FirstWait;
  }
  const Time left = Scaled(_patience) - (now - *_began);
  if (left <= Time{0}) return std::nullopt;
  const Time wait = std::min(Scaled(_wait), left);
  _wait = std::min(2 * _wait, LongestWait);
  return wait;
}

}  // namespace refhost
