#pragma once

#include <cstdint>
#include <limits>

/// @return the percentage of `total` that `transferred` is, truncated toward zero; computed in
/// single precision as services before this one expect it. A total of 0 and results beyond 32 bits
/// give the smallest 32-bit integer, what the x86-64 conversion instruction yields.
inline std::int32_t PercentageOf(std::uint64_t transferred, std::uint64_t total) {
  constexpr std::int32_t Indefinite = std::numeric_limits<std::int32_t>::min();
  const float part = static_cast<float>(transferred);
  const float whole = static_cast<float>(total);
  if (whole == 0.0F) return Indefinite;
  const double percent = static_cast<double>(part / whole) * 100.0;
  return percent < 2147483648.0 ? static_cast<std::int32_t>(percent) : Indefinite;
}
