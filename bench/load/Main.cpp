#include <windows.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bench/load/LogLines.h"
#include "bench/load/Stop.h"
#include "host/common/Text.h"
#include "reference_host/Startup.h"

namespace {

/// @return how often the agent's log tells that a wait before a retry begins.
int WaitsInLog(const std::string& path) {
  constexpr std::string_view Line = "retryMinSeconds";
  std::ifstream file{std::filesystem::path(path), std::ios::binary};
  const std::string log((std::istreambuf_iterator<char>(file)), {});
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
  try {
    std::wstring error;
    if (!refhost::Start(error)) throw std::runtime_error(ZLT::String::UTF16ToUTF8(error));
    if (*stop) {
      StopWaitingThreads(threads, [&log] { return WaitsInLog(log); });
    } else {
      WriteLogLines(threads, lines);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "load_bench: %s\n", error.what());
    std::fflush(stdout);
    // Threads that do not end may still be at work: nothing is taken down under them.
    TerminateProcess(GetCurrentProcess(), 1);
  }
  return 0;
}
