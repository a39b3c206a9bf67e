#pragma once

#include <chrono>
#include <cstdint>

namespace refhost {

/// Judges whether a transfer has come to a standstill. It knows only the time that it is told of,
/// so that neither the machine's sleep nor a report that hangs counts. Pure.
class StallWatch {
 public:
  using Time = std::chrono::milliseconds;
  enum class Verdict { GoesOn, Silent, HeldBack };

  /// @param silence in, how long a job that runs may get no byte. @param held in, how long BITS may
  /// leave a job aside: behind others, for a policy, for a user who is signed out.
  StallWatch(Time silence, Time held) : _silence(silence), _heldBack(held) {}

  /// @param waited in, time since the last call in which nothing but the job was waited for.
  /// @param runs in, whether the job is connecting or transferring. @param bytes in, had so far.
  Verdict Look(Time waited, bool runs, std::uint64_t bytes);

 private:
  const Time _silence;
  const Time _heldBack;
  std::uint64_t _bytes = 0;
  Time _silent{0};
  Time _held{0};
};

}  // namespace refhost
