#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <stdexcept>

#include "bench/common/HostProgram.h"
#include "bench/stop/Trial.h"
#include "host/common/Text.h"

namespace {

struct Options {
  std::string phase;
  Way way = Way::Cancel;
  std::string folder;
  unsigned int limitSeconds = 15;
};

const std::map<std::string, Way> Ways{
    {"cancel", Way::Cancel}, {"cleanup", Way::CleanUp}, {"worker", Way::Worker}};

void Describe(CLI::App& app, Options& options) {
  app.add_option("PHASE", options.phase)->required();
  app.add_option("WAY", options.way)->required()->transform(CLI::CheckedTransformer(Ways));
  app.add_option("FOLDER", options.folder, "the trial's own, with logs and downloads in it")
      ->required();
  app.add_option("--limit", options.limitSeconds, "how long a stop is waited for, in seconds (15)");
}

std::string Shown(const std::optional<unsigned long>& milliseconds) {
  return milliseconds ? std::to_string(*milliseconds) : "-";
}

int RunTrial(const Options& options) {
  const Phase* phase = FindPhase(options.phase);
  if (phase == nullptr) throw std::runtime_error("no such phase: " + options.phase);
  const std::wstring folder = ZLT::String::UTF8ToUTF16(options.folder);
  HostProgram::Start();
  StopTimes times;
  Trial trial(*phase, options.way, folder, options.limitSeconds * 1000);
  if (!trial.Run(times)) throw std::runtime_error("the phase was not reached");
  std::printf("%s %s\n", Shown(times.operation).c_str(), Shown(times.cleanUp).c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(
      "Measures one stop: prints the milliseconds until the operation and CleanUp are back.",
      "stop_bench");
  Options options;
  Describe(app, options);
  CLI11_PARSE(app, argc, argv);
  HostProgram::End(HostProgram::Run("stop_bench", [&] { return RunTrial(options); }));
}
