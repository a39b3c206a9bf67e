#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/herd/Simulation.h"

namespace herd {

struct Result {
  const Policy* policy;
  Outcome outcome;
};

/// @return the number with commas between groups of three digits; it must not be negative.
std::string Grouped(std::int64_t number);

/// @return a share of the fleet in percent, rounded down: 100.0 means every device.
std::string Percent(const Scenario& scenario, std::int64_t devices);

/// Draws requests per second over time, one panel for each result, as an SVG picture.
/// @return false when the file cannot be written.
bool WritePlot(const std::string& path, const Scenario& scenario,
               const std::vector<Result>& results);

}  // namespace herd
