#pragma once

#include <cstdint>
#include <vector>

#include "bench/herd/Policies.h"

namespace herd {

/// What happens to the fleet. Times count from the start of the outage.
struct Scenario {
  std::uint32_t devices = 1000000;
  int outageSeconds = 600;
  int capacity = 2000;      ///< requests per second that the service answers; the others get 503
  int arrivalSeconds = 60;  ///< the first requests come evenly spread over this time
  int pollSeconds = 14400;  ///< a host whose call failed calls again this long after its last call
  int pollSpreadSeconds = 0;  ///< and up to this much later, at random
  std::uint64_t seed = 1;
};

struct Outcome {
  std::vector<std::uint32_t> requests;  ///< by second
  std::vector<std::uint32_t> served;    ///< by second
  std::int64_t total = 0;               ///< requests, all together
  std::int64_t peak = 0;                ///< most in one second; the very first requests not counted
  std::int64_t peakUp = 0;              ///< the same after the outage
  std::int64_t servedByRetries = 0;     ///< devices served before their first call gave up
  std::int64_t allServed = 0;           ///< ms from the start of the outage to the last answer
  std::int64_t medianWait = 0;          ///< ms from a device's first request to its answer
  std::int64_t p99Wait = 0;
};

/// Plays a scenario to its end, when every device is served. The same scenario gives the same
/// outcome, and the same first requests for every policy.
Outcome Simulate(const Scenario& scenario, const Policy& policy);

}  // namespace herd
