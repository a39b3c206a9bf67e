#include <CLI/CLI.hpp>

#include "bench/common/Contents.h"
#include "bench/common/HostProgram.h"
#include "bench/load/LogLines.h"
#include "bench/load/Stop.h"

namespace {

/// @return how often the agent's log tells that a wait before a retry begins.
int WaitsInLog(const std::string& path) {
  constexpr std::string_view Line = "retryMinSeconds";
  const std::string log = Contents(path);
  int waits = 0;
  for (std::size_t at = 0; (at = log.find(Line, at)) != std::string::npos; ++waits) ++at;
  return waits;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Measures the agent under many threads; prints samples.", "load_bench");
  int threads = 0, lines = 10000;
  std::string log;
  CLI::App* stop = app.add_subcommand("stop", "stop while threads wait to send requests again");
  stop->add_option("THREADS", threads)->required();
  stop->add_option("LOG", log, "path of the agent's log")->required();
  CLI::App* write = app.add_subcommand("log", "log lines from many threads");
  write->add_option("THREADS", threads)->required();
  write->add_option("--lines", lines, "of each thread")->capture_default_str();
  app.require_subcommand(1);
  CLI11_PARSE(app, argc, argv);
  HostProgram::End(HostProgram::Run("load_bench", [&] {
    HostProgram::Start();
    if (*stop) {
      StopWaitingThreads(threads, [&log] { return WaitsInLog(log); });
    } else {
      WriteLogLines(threads, lines);
    }
    return 0;
  }));
}
