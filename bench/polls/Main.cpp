#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "bench/polls/Fleet.h"
#include "tools/common/CommandLine.h"

namespace {

using polls::Policy;
using Seconds = std::vector<std::uint32_t>;

constexpr struct {
  Policy policy;
  const char* name;
} Policies[] = {{Policy::AskAtStart, "at each start, then exactly"},
                {Policy::JitterOnly, "at each start, then spread"},
                {Policy::SpreadStart, "spread, plan not kept"},
                {Policy::Ours, "ours: spread, plan kept"}};

void AddOptions(CLI::App& app, polls::Scenario& scenario, std::string& data) {
  const auto add = [&app](const char* name, auto& value, int least, int most, const char* text) {
    app.add_option(name, value, text)->check(CLI::Range(least, most))->capture_default_str();
  };
  add("--hosts", scenario.hosts, 1, 10000000, "size of the fleet");
  add("--days", scenario.days, 1, 60, "days to simulate");
  add("--interval", scenario.pace.interval, 1, 604800, "pollSeconds");
  add("--spread", scenario.pace.spread, 0, 604800, "pollSpreadSeconds");
  add("--boot", scenario.bootSpreadSeconds, 1, 86400, "all hosts start within so many seconds");
  add("--reboot", scenario.rebootHour, 0, 1440, "hour of a second start of all; 0: none");
  app.add_option("--seed", scenario.seed, "of the random numbers")->capture_default_str();
  app.add_option("--data", data,
                 "file for what is to be drawn: most polls in a second of each ten minutes");
}

std::uint32_t Peak(const Seconds& seconds, std::size_t from, std::size_t to) {
  to = std::min(to, seconds.size());
  return from >= to ? 0
                    : *std::max_element(seconds.begin() + static_cast<std::ptrdiff_t>(from),
                                        seconds.begin() + static_cast<std::ptrdiff_t>(to));
}

void PrintRow(const polls::Scenario& scenario, const char* name, const Seconds& seconds) {
  const auto reboot = static_cast<std::size_t>(scenario.rebootHour) * 3600;
  const auto total = std::accumulate(seconds.begin(), seconds.end(), std::uint64_t{0});
  std::printf("| %-28s | %10u | %10u | %10u | %9llu |\n", name, Peak(seconds, 0, 7200),
              Peak(seconds, reboot, reboot + 7200),
              Peak(seconds, seconds.size() / 2, seconds.size()),
              static_cast<unsigned long long>(total));
}

/// As fine as a picture of some days can show.
constexpr std::size_t Bin = 600;

void WritePeaks(std::ofstream& file, const char* name, const Seconds& seconds) {
  file << "\"" << name << "\"\n";
  for (std::size_t at = 0; at < seconds.size(); at += Bin) {
    file << Peak(seconds, at, at + Bin) << "\n";
  }
  file << "\n\n";
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("A fleet of services that polls: how well is it spread?", "polls");
  polls::Scenario scenario;
  std::string data;
  AddOptions(app, scenario, data);
  if (const auto status = EndOfParsing(app, argc, argv)) return *status;
  std::printf(
      "%d hosts start within %d s, and all again at hour %d; each polls every %lld s and up "
      "to %lld s more.\nMost polls in one second:\n\n",
      scenario.hosts, scenario.bootSpreadSeconds, scenario.rebootHour,
      static_cast<long long>(scenario.pace.interval), static_cast<long long>(scenario.pace.spread));
  std::printf(
      "| policy                       | first start | second start | later half | polls |\n"
      "|---|---:|---:|---:|---:|\n");
  std::ofstream file;
  if (!data.empty()) file.open(data, std::ios::binary);
  for (const auto& row : Policies) {
    const Seconds seconds = Simulate(scenario, row.policy);
    PrintRow(scenario, row.name, seconds);
    if (file.is_open()) WritePeaks(file, row.name, seconds);
  }
  return data.empty() || file.good() ? 0 : 1;
}
