#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace refhost {

/// How long to wait before a transfer is tried again that transient trouble has ended: a second at
/// first, then twice as long each time up to a minute, until the patience is over. It begins anew
/// with every byte that is further than all before. Pure.
class RetryPatience {
 public:
  using Time = std::chrono::milliseconds;

  /// @param patience in, from the first failure to the last try. @param scale in, below 1 shortens
  /// the patience and each wait.
  RetryPatience(Time patience, double scale);

  /// @param now in, of any clock. @param bytes in, had so far; may be less than before.
  /// @return the wait before the next try; nothing when there is none left.
  std::optional<Time> Next(Time now, std::uint64_t bytes);

  /// Forgets the trouble so far.
  void Restart() { _began.reset(); }

 private:
  Time Scaled(Time time) const;

  const Time _patience;
  const double _scale;
  std::uint64_t _most = 0;
  std::optional<Time> _began;
  Time _wait{0};
};

}  // namespace refhost
