#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/herd/PlotData.h"
#include "tools/common/CommandLine.h"

namespace {

using herd::Grouped;

void AddOptions(CLI::App& app, herd::Scenario& scenario, std::string& data) {
  const auto add = [&app](const char* name, auto& value, int least, int most, const char* text) {
    app.add_option(name, value, text)->check(CLI::Range(least, most))->capture_default_str();
  };
  add("--devices", scenario.devices, 1, 10000000, "size of the fleet");
  add("--outage", scenario.outageSeconds, 0, 86400, "length of the outage, seconds");
  add("--capacity", scenario.capacity, 100, 1000000, "requests that are served per second");
  add("--arrival", scenario.arrivalSeconds, 1, 86400, "spread of the first requests, seconds");
  add("--poll", scenario.pollSeconds, 60, 604800, "seconds between a host's calls");
  add("--poll-spread", scenario.pollSpreadSeconds, 0, 604800, "up to so many more, at random");
  app.add_option("--seed", scenario.seed, "of the random numbers")->capture_default_str();
  app.add_option("--data", data, "file for what is to be drawn");
}

std::string Clock(std::int64_t milliseconds) {
  const auto seconds = static_cast<int>((milliseconds + 500) / 1000);
  char text[32];
  std::snprintf(text, sizeof text, "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

void PrintCells(const char* format, const std::vector<std::string>& cells) {
  std::printf("| %-30s |", cells[0].c_str());
  for (std::size_t i = 1; i < cells.size(); ++i) std::printf(format, cells[i].c_str());
  std::puts("");
}

void PrintHead(const herd::Scenario& scenario) {
  std::printf(
      "%s devices call within %d s of the start of an outage of %d s; then %s requests/s are\n"
      "served. A call is up to %d requests; a host whose call failed calls again after %d s.\n\n",
      Grouped(scenario.devices).c_str(), scenario.arrivalSeconds, scenario.outageSeconds,
      Grouped(scenario.capacity).c_str(), 1 + herd::MaxRetries, scenario.pollSeconds);
  PrintCells(" %10s |", {"policy", "peak/s", "peak up/s", "requests", "served %", "all served",
                         "median", "p99"});
  PrintCells("%s|", {"---", "-----------:", "-----------:", "-----------:", "-----------:",
                     "-----------:", "-----------:", "-----------:"});
}

void PrintRow(const herd::Scenario& scenario, const herd::Result& result) {
  const herd::Outcome& outcome = result.outcome;
  PrintCells(" %10s |",
             {result.policy->name, Grouped(outcome.peak), Grouped(outcome.peakUp),
              Grouped(outcome.total), Percent(scenario, outcome.servedByRetries),
              Clock(outcome.allServed), Clock(outcome.medianWait), Clock(outcome.p99Wait)});
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("A fleet that meets an outage: how well retry waits spread it.", "herd");
  herd::Scenario scenario;
  std::string data;
  AddOptions(app, scenario, data);
  if (const auto status = EndOfParsing(app, argc, argv)) return *status;

  PrintHead(scenario);
  std::vector<herd::Result> results;
  for (const herd::Policy& policy : herd::Policies()) {
    results.push_back({&policy, Simulate(scenario, policy)});
    PrintRow(scenario, results.back());
  }
  std::puts(
      "\npeak/s: most requests in a second, the very first ones not counted (they are the same for"
      "\nall); peak up/s: the same once the service is up again; served %: within the retries of "
      "the"
      "\nfirst call; all served: time until then; median, p99: a device's wait (h:mm:ss).");
  if (data.empty() || herd::WritePlotData(data, scenario, results)) return 0;
  std::fprintf(stderr, "error: cannot write %s\n", data.c_str());
  return 1;
}
