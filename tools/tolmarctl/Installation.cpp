#include "tools/tolmarctl/Installation.h"

#include <algorithm>

#include "agent/TolmarAgent.h"
#include "reference_host/log/Event.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/ReportCommand.h"

namespace {

using refhost::Event;

bool IsModule(const Json::Value& module) { return module.isObject(); }

/// What has another shape ends an installation in the middle, which only the agent can do.
bool IsTitle(const Json::Value& title) {
  const Json::Value& modules = title.isObject() ? title["moduleList"] : title;
  return title.isObject() && title["l1FruPn"].isString() &&
         title["preinstallSw"].isConvertibleTo(Json::booleanValue) &&
         (modules.isNull() || modules.isArray()) &&
         std::all_of(modules.begin(), modules.end(), IsModule);
}

bool AreTitles(const Json::Value& titles) {
  return titles.isArray() && !titles.empty() && std::all_of(titles.begin(), titles.end(), IsTitle);
}

/// @return what the events tell of the title that has just been installed.
timeline::Title EndedTitle(const std::string& partNumber, unsigned long code) {
  timeline::Title ended;
  for (const timeline::Run& run : ReadRuns(Event::Run())) {
    for (const timeline::Title& title : run.titles) {
      if (title.partNumber == partNumber) ended = title;
    }
  }
  ended.code = static_cast<std::uint32_t>(code);
  return ended;
}

void Explain(const timeline::Title& ended, Json::Value& title) {
  const std::string cause = timeline::CauseOf(ended);
  if (cause.empty()) return;
  title["cause"] = cause;
  if (!ended.why.empty()) title["why"] = ended.why;
  if (!ended.output.empty()) title["installerOutput"] = ended.output;
}

unsigned long InstallTitle(TolmarAgent& agent, Json::Value& title, const Options& options,
                           HANDLE cancel) {
  const std::string partNumber = title["l1FruPn"].asString();
  const refhost::EventTitle named(partNumber);
  Event("title.began").With("name", TextIn(title, "name")).Write();
  Json::Value document;
  document["swList"].append(title);
  const unsigned long code =
      agent.InstallEntitledSoftware(document, cancel, options.preinstallOnly);
  title = document["swList"][0];
  title["code"] = Json::UInt{static_cast<Json::UInt>(code)};
  Explain(EndedTitle(partNumber, code), title);
  Event("title.ended")
      .With("status", TextIn(title, "status"))
      .With("code", code)
      .With("cause", TextIn(title, "cause"))
      .Write();
  return code;
}

}  // namespace

unsigned long InstallTitles(TolmarAgent& agent, Json::Value& document, const Options& options,
                            HANDLE cancel) {
  const Json::Value* titles = document.isObject() ? &document["swList"] : nullptr;
  if (titles == nullptr || !AreTitles(*titles)) {
    return agent.InstallEntitledSoftware(document, cancel, options.preinstallOnly);
  }
  Event("installation.began").With("titles", titles->size()).Write();
  unsigned long code = 0;
  for (Json::Value& title : document["swList"]) {
    if (options.preinstallOnly && !title["preinstallSw"].asBool()) continue;
    code = InstallTitle(agent, title, options, cancel);
  }
  Event("installation.ended").With("code", code).Write();
  return code;
}
