#pragma once

#include <vector>

namespace herd {

constexpr int MaxRetries = 3;  ///< the agent's: a query is sent four times at most

/// A rule for how long a device waits before it asks again.
struct Policy {
  const char* name;
  /// @param retry in, retries made so far, from 0. @param previous in, the wait before this one, in
  /// ms; 0 at the first. @param random in, from 0 to 1. @return milliseconds.
  unsigned int (*wait)(int retry, unsigned int previous, double random);
};

/// @return the policies to compare, the reference host's own last. All keep to the bounds that the
/// agent gives after a transient failure.
const std::vector<Policy>& Policies();

/// @return milliseconds from a device's first request to its last, at the longest.
unsigned int LongestRetries();

}  // namespace herd
