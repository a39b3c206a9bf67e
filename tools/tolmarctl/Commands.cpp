#include "tools/tolmarctl/Commands.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

#include "agent/TolmarAgent.h"
#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "tools/common/AgentControl.h"
#include "tools/common/Installation.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/HolderText.h"
#include "tools/tolmarctl/Plan.h"
#include "tools/tolmarctl/ProgressDisplay.h"

namespace {

constexpr DWORD FirstPauseMs = 1000;
constexpr DWORD LongestPauseMs = 30000;

Outcome Entitled(TolmarAgent& agent, const Options&, HANDLE) {
  unsigned char entitled = 0;
  Outcome outcome;
  outcome.code = agent.HasEntitledSoftware(entitled);
  outcome.hasEntitlement = entitled != 0;
  return outcome;
}

Outcome List(TolmarAgent& agent, const Options&, HANDLE) {
  Outcome outcome;
  outcome.code = agent.GetEntitledSoftware(outcome.result);
  return outcome;
}

Outcome Status(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  Outcome outcome = List(agent, options, cancel);
  if (outcome.code == 0) {
    outcome.code = agent.GetEntitledSoftwareStatus(outcome.result, cancel, options.preinstallOnly);
  }
  return outcome;
}

/// Another process may install, the service for one; an installation waits for it.
void TellOfHolder() {
  const std::string holder = HolderText(GetCurrentProcessId());
  if (holder.empty()) return;
  std::fprintf(stderr, "tolmarctl: %s installs; waiting for it, %u s at the most\n",
               Printable(holder).c_str(), refhost::Settings().leaseWaitSeconds);
  std::fflush(stderr);
}

Outcome Install(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  Outcome outcome = List(agent, options, cancel);
  if (outcome.code != 0) return outcome;
  TellOfHolder();
  std::optional<ProgressDisplay> display;
  if (!options.json || options.progressLines) {
    display.emplace(agent, outcome.result, options.progressLines);
  }
  outcome.code = InstallTitles(agent, outcome.result, options.preinstallOnly, cancel);
  return outcome;
}

Outcome Files(TolmarAgent& agent, const Options& options, HANDLE) {
  Outcome outcome;
  outcome.code = agent.GetDownloadFiles(outcome.result, ZLT::String::UTF8ToUTF16(options.l1FruPn),
                                        ZLT::String::UTF8ToUTF16(options.moduleFruPn));
  return outcome;
}

bool IsPreinstallDone(const Json::Value& document) {
  const Json::Value& titles = document["swList"];
  return std::all_of(titles.begin(), titles.end(), [](const Json::Value& title) {
    return !title["preinstallSw"].asBool() || title["status"].asString() == "installed";
  });
}

/// Waits for the pre-install worker. The agent tells nobody when its worker has ended, but
/// installations wait for each other: an empty one returns when none is running, and the check
/// scripts tell what is installed by then. Each round asks the service, so they get rarer.
Outcome Configure(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  AnnounceConfiguration(cancel);
  Options preinstall = options;
  preinstall.preinstallOnly = true;
  for (DWORD pauseMs = FirstPauseMs;; pauseMs = std::min(2 * pauseMs, LongestPauseMs)) {
    Json::Value none(Json::objectValue);
    agent.InstallEntitledSoftware(none, cancel, true);
    Outcome outcome = Status(agent, preinstall, cancel);
    outcome.isDone = outcome.code == 0 && IsPreinstallDone(outcome.result);
    if (outcome.code != 0 || outcome.isDone ||
        WaitForSingleObject(cancel, pauseMs) != WAIT_TIMEOUT) {
      return outcome;
    }
  }
}

Outcome Run(TolmarAgent&, const Options&, HANDLE cancel) {
  WaitForSingleObject(cancel, INFINITE);
  return {};
}

}  // namespace

Outcome RunCommand(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  using Command = Outcome (*)(TolmarAgent&, const Options&, HANDLE);
  static const std::map<std::string, Command> commands{
      {"entitled", Entitled}, {"list", List},           {"status", Status}, {"install", Install},
      {"files", Files},       {"configure", Configure}, {"run", Run},       {"plan", Plan}};
  return commands.at(options.command)(agent, options, cancel);
}
