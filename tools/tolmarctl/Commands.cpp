#include "tools/tolmarctl/Commands.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>

#include "agent/TolmarAgent.h"
#include "host/common/Text.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "tools/tolmarctl/ProgressDisplay.h"

namespace {

constexpr unsigned int DeviceTopic = 4;
constexpr unsigned int DeviceConfigured = 15;
constexpr unsigned int DefaultConfigureSeconds = 600;
constexpr DWORD SettlePollMs = 1000;

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

Outcome Install(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  Outcome outcome = List(agent, options, cancel);
  if (outcome.code != 0) return outcome;
  std::optional<ProgressDisplay> display;
  if (!options.json) display.emplace(agent, outcome.result);
  outcome.code = agent.InstallEntitledSoftware(outcome.result, cancel, options.preinstallOnly);
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
/// scripts tell what is installed by then.
Outcome Configure(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  const ULONGLONG seconds =
      options.timeoutSeconds ? options.timeoutSeconds : DefaultConfigureSeconds;
  const ULONGLONG deadline = GetTickCount64() + seconds * 1000;
  ZLTPublisherSubscriber::GetInstance()->Publish(
      ZLTNotificationData(false, DeviceTopic, DeviceConfigured),
      static_cast<unsigned int>(seconds * 1000));
  Options preinstall = options;
  preinstall.preinstallOnly = true;
  for (;;) {
    Json::Value none(Json::objectValue);
    agent.InstallEntitledSoftware(none, cancel, true);
    Outcome outcome = Status(agent, preinstall, cancel);
    if (outcome.code != 0 || IsPreinstallDone(outcome.result) || GetTickCount64() >= deadline ||
        WaitForSingleObject(cancel, SettlePollMs) != WAIT_TIMEOUT) {
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
      {"files", Files},       {"configure", Configure}, {"run", Run}};
  return commands.at(options.command)(agent, options, cancel);
}
