#pragma once

#include <cstdint>
#include <string>

#include "host/Export.h"

/// Points in time as 64-bit values. Any thread; nothing throws.
class ZLT_API DateTimeUtility {
 public:
  /// @return now, in seconds since 1970-01-01 00:00 UTC; always above 0.
  static std::int64_t GetCurrentDatetime();

  /// @param later in, seconds since 1970-01-01 00:00 UTC. @param earlier in, the same.
  /// @return the seconds from `earlier` to `later`; negative when they are the other way round.
  static double CompareDateTime(std::int64_t later, std::int64_t earlier);
};

namespace ZLT {

/// The device's clock as text.
class ZLT_API System {
 public:
  /// @return the device's local date and time, "YYYY-MM-DD HH:MM:SS". Any thread.
  static std::wstring GetTime();
};

}  // namespace ZLT
