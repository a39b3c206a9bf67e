#pragma once

#include <chrono>
#include <cstdint>

namespace cloudsim {

/// @return seconds since 1970-01-01 UTC.
inline std::int64_t UnixNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

}  // namespace cloudsim
