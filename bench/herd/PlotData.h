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

/// Writes what herd.gp draws: fields between tabs, two blank lines between blocks. First the
/// scenario: a title; minutes of outage, capacity, minutes to draw. Then a block for each result:
/// its policy and what came of it; the requests of each second, and those of them that were served.
/// @return false when the file cannot be written.
bool WritePlotData(const std::string& path, const Scenario& scenario,
                   const std::vector<Result>& results);

}  // namespace herd
