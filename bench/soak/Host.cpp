#include "bench/soak/Host.h"

#include <json/value.h>
#include <windows.h>

#include <algorithm>

#include "agent/TolmarAgent.h"

namespace {

bool IsInstalled(const Json::Value& title) { return title["status"].asString() == "installed"; }

/// A document with the titles that are to be installed.
Json::Value Wanted(const Json::Value& titles, bool again) {
  Json::Value wanted;
  wanted["swList"] = Json::arrayValue;
  for (const Json::Value& title : titles["swList"]) {
    if (again || !IsInstalled(title)) wanted["swList"].append(title);
  }
  return wanted;
}

}  // namespace

Visit VisitService(bool again) {
  // The agent keeps the newest handle that it was given.
  static const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  Visit visit;
  Json::Value titles;
  if (agent.GetEntitledSoftware(titles) != 0 ||
      agent.GetEntitledSoftwareStatus(titles, cancel, false) != 0) {
    return visit;
  }
  Json::Value wanted = Wanted(titles, again);
  visit.asked = wanted["swList"].size();
  if (visit.asked > 0 && agent.InstallEntitledSoftware(wanted, cancel, false) != 0) return visit;
  if (agent.GetEntitledSoftwareStatus(titles, cancel, false) != 0) return visit;
  const Json::Value& list = titles["swList"];
  visit.done = !list.empty() && std::all_of(list.begin(), list.end(), IsInstalled);
  return visit;
}
