#include "tools/common/Installation.h"

#include "agent/TolmarAgent.h"
#include "reference_host/log/Event.h"
#include "tools/common/Timeline.h"
#include "tools/common/Titles.h"

namespace {

using refhost::Event;

/// @return what these events tell of the title that has just been installed.
timeline::Title EndedTitle(const std::string& events, const std::string& partNumber,
                           unsigned long code) {
  timeline::Title ended;
  for (const timeline::Run& run : timeline::Read(events)) {
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

}  // namespace

unsigned long InstallTitle(TolmarAgent& agent, Json::Value& title, HANDLE cancel) {
  const std::string partNumber = title["l1FruPn"].asString();
  const refhost::EventTitle named(partNumber);
  const refhost::EventRecording recording;
  Event("title.began").With("name", TextIn(title, "name")).Write();
  Json::Value document;
  document["swList"].append(title);
  const unsigned long code = agent.InstallEntitledSoftware(document, cancel, false);
  title = document["swList"][0];
  title["code"] = Json::UInt{static_cast<Json::UInt>(code)};
  Explain(EndedTitle(recording.Lines(), partNumber, code), title);
  Event("title.ended")
      .With("status", TextIn(title, "status"))
      .With("code", code)
      .With("cause", TextIn(title, "cause"))
      .Write();
  return code;
}

unsigned long InstallTitles(TolmarAgent& agent, Json::Value& document, bool preinstallOnly,
                            HANDLE cancel) {
  if (!HasTitles(document)) {
    return agent.InstallEntitledSoftware(document, cancel, preinstallOnly);
  }
  Json::Value& titles = document["swList"];
  Event("installation.began").With("titles", titles.size()).Write();
  unsigned long code = 0;
  for (Json::Value& title : titles) {
    if (preinstallOnly && !title["preinstallSw"].asBool()) continue;
    code = InstallTitle(agent, title, cancel);
  }
  Event("installation.ended").With("code", code).Write();
  return code;
}
