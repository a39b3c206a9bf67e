#pragma once

#include <cstdint>
#include <vector>

#include "tools/tolmarhost/Schedule.h"

namespace polls {

/// A fleet that polls for some days, and what happens to it.
struct Scenario {
  int hosts = 10000;
  int days = 3;
  service::Pace pace{14400, 1800};
  int bootSpreadSeconds = 60;  ///< all hosts start within so many seconds of the first one
  int rebootHour = 30;         ///< when all are started anew, hours after the first start; 0: never
  std::uint64_t seed = 1;
};

/// How the services plan.
enum class Policy {
  AskAtStart,   ///< at each start, then exactly each interval
  JitterOnly,   ///< at each start, then each interval with the spread
  SpreadStart,  ///< each start within the spread; the plan is not kept
  Ours,         ///< the service's own: the plan outlives a start
};

/// @return how many polls fell on each second.
std::vector<std::uint32_t> Simulate(const Scenario& scenario, Policy policy);

}  // namespace polls
