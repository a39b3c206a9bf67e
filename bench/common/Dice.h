#pragma once

#include <cstdint>
#include <random>

/// Even numbers from 0 to below 1 that are the same with every standard library.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : _engine(seed) {}
  double Roll() { return static_cast<double>(_engine() >> 11) * 0x1p-53; }
  std::int64_t MillisecondsBelow(int seconds) {
    return static_cast<std::int64_t>(seconds * 1000.0 * Roll());
  }

 private:
  std::mt19937_64 _engine;
};
