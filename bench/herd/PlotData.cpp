#include "bench/herd/PlotData.h"

#include <algorithm>
#include <fstream>

namespace herd {
namespace {

/// @return the end of the time axis: nobody retries later, and the recovery is in the picture.
int Minutes(const Scenario& scenario) {
  const auto retries = static_cast<int>(LongestRetries() / 1000);
  const int end = std::max(scenario.arrivalSeconds + retries, scenario.outageSeconds + 600);
  return (end / 300 + 1) * 5;
}

void WriteScenario(std::ostream& file, const Scenario& scenario) {
  file << Grouped(scenario.devices) << " devices meet an outage of "
       << Grouped(scenario.outageSeconds) << " s; the service answers "
       << Grouped(scenario.capacity) << " requests per second\n"
       << scenario.outageSeconds / 60.0 << '\t' << scenario.capacity << '\t' << Minutes(scenario)
       << '\n';
}

void WriteResult(std::ostream& file, const Scenario& scenario, const Result& result) {
  const Outcome& outcome = result.outcome;
  file << "\n\n"
       << result.policy->name << "\trepeated requests: peak " << Grouped(outcome.peak)
       << "/s; served within the retries: " << Percent(scenario, outcome.servedByRetries) << " %\n";
  const auto last = static_cast<std::size_t>(Minutes(scenario)) * 60;
  for (std::size_t second = 0; second < std::min(last, outcome.requests.size()); ++second) {
    file << outcome.requests[second] << '\t' << outcome.served[second] << '\n';
  }
}

}  // namespace

std::string Grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string Percent(const Scenario& scenario, std::int64_t devices) {
  const std::int64_t tenths = devices * 1000 / scenario.devices;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

bool WritePlotData(const std::string& path, const Scenario& scenario,
                   const std::vector<Result>& results) {
  std::ofstream file(path, std::ios::binary);
  WriteScenario(file, scenario);
  for (const Result& result : results) WriteResult(file, scenario, result);
  file.close();
  return file.good();
}

}  // namespace herd
