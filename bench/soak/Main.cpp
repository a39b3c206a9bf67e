#include <CLI/CLI.hpp>

#include "agent/TolmarAgent.h"
#include "bench/common/HostProgram.h"
#include "bench/soak/Device.h"
#include "bench/soak/Host.h"
#include "bench/soak/KillLoop.h"
#include "bench/soak/Steady.h"
#include "bench/soak/VisitExit.h"
#include "host/common/Text.h"

namespace {

constexpr int ExitWrong = 1;

struct Options {
  std::string folder;
  bool again = false;
  unsigned int kills = 100;
  unsigned int seed = 1;
  unsigned int installations = 500;
};

CLI::App* AddCommand(CLI::App& app, Options& options, const char* name, const char* help) {
  CLI::App* command = app.add_subcommand(name, help);
  command->add_option("FOLDER", options.folder, "the device's, as TOLMAR_HOST_CONFIG has it")
      ->required();
  return command;
}

void Describe(CLI::App& app, Options& options) {
  app.require_subcommand(1);
  CLI::App* visit = AddCommand(app, options, "visit", "install what is not installed, once");
  visit->add_flag("--again", options.again, "install what is installed, too");
  CLI::App* kill = AddCommand(app, options, "kill", "kill visits, see what comes of it");
  kill->add_option("--kills", options.kills, "how many (100)");
  kill->add_option("--seed", options.seed, "of the first case (1)");
  CLI::App* steady = AddCommand(app, options, "steady", "install again and again in one process");
  steady->add_option("--installs", options.installations, "how often (500)")
      ->check(CLI::Range(20u, 100000u));
}

unsigned long VisitOnce(bool again) {
  const Visit visit = VisitService(again);
  TolmarAgent::GetInstance()->CleanUp();
  if (!visit.done) return VisitExit::Failed;
  return visit.asked == 0 ? VisitExit::NothingToInstall : VisitExit::Installed;
}

int RunSteadyCommand(const std::wstring& folder, unsigned int installations) {
  const bool right = RunSteadily(folder, installations);
  TolmarAgent::GetInstance()->CleanUp();
  return right ? 0 : ExitWrong;
}

int RunCommand(const CLI::App& app, const Options& options) {
  const std::wstring folder = ZLT::String::UTF8ToUTF16(options.folder);
  if (app.got_subcommand("kill")) {
    return KillLoop(folder, options.seed).Run(options.kills) ? 0 : ExitWrong;
  }
  if (app.got_subcommand("steady")) Device(folder).Reset();  // before there is a log
  HostProgram::Start();
  if (app.got_subcommand("steady")) return RunSteadyCommand(folder, options.installations);
  return static_cast<int>(VisitOnce(options.again));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Looks what crashes and long runs do to the agent's work.", "soak");
  Options options;
  Describe(app, options);
  CLI11_PARSE(app, argc, argv);
  return HostProgram::Run("soak", [&] { return RunCommand(app, options); });
}
