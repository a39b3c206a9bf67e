#pragma once

#include "host/Export.h"

namespace ZLT {

/// What callers of the cloud's interfaces share.
class ZLT_API ApiUtility {
 public:
  /// How long to wait before a request is sent again: equal jitter below a bound that grows
  /// geometrically from `minSeconds` to `maxSeconds` over the three retries. Any thread.
  /// @param retryCount in, number of retries made so far: 0, 1, 2 (larger values count as 2).
  /// @param minSeconds, maxSeconds in, bounds in seconds, 0 < min <= max.
  /// @return milliseconds within the bounds.
  static unsigned int GetSleepDurationInMillis(const int& retryCount, const int& minSeconds,
                                               const int& maxSeconds);
};

}  // namespace ZLT
