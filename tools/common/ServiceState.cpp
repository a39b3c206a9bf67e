#include "tools/common/ServiceState.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>

#include "tools/common/Titles.h"

namespace service {

namespace {

std::int64_t NumberIn(const Json::Value& object, const char* name) {
  const bool isNumber = object.isObject() && object[name].isInt64() && object[name].asInt64() >= 0;
  return isNumber ? object[name].asInt64() : 0;
}

Json::Value Object(const TitleState& title) {
  Json::Value object;
  object["name"] = title.name;
  object["status"] = title.status;
  object["version"] = title.version;
  object["failures"] = title.failures;
  object["tried"] = Json::Int64{title.tried};
  object["again"] = Json::Int64{title.again};
  object["code"] = title.code;
  object["cause"] = title.cause;
  object["why"] = title.why;
  return object;
}

TitleState TitleIn(const Json::Value& object) {
  TitleState title;
  title.name = TextIn(object, "name");
  title.status = TextIn(object, "status");
  title.version = TextIn(object, "version");
  title.failures = static_cast<unsigned int>(NumberIn(object, "failures"));
  title.tried = NumberIn(object, "tried");
  title.again = NumberIn(object, "again");
  title.code = static_cast<std::uint32_t>(NumberIn(object, "code"));
  title.cause = TextIn(object, "cause");
  title.why = TextIn(object, "why");
  return title;
}

}  // namespace

Time NextWork(const State& state) {
  return state.resume == 0 ? state.nextRun : std::min(state.nextRun, state.resume);
}

std::string TextOf(const State& state) {
  Json::Value root;
  root["nextRun"] = Json::Int64{state.nextRun};
  root["resume"] = Json::Int64{state.resume};
  root["lastRun"]["began"] = Json::Int64{state.lastRun.began};
  root["lastRun"]["ended"] = Json::Int64{state.lastRun.ended};
  root["lastRun"]["code"] = state.lastRun.code;
  root["waitsFor"] = state.waitsFor;
  root["titles"] = Json::objectValue;
  for (const auto& [partNumber, title] : state.titles) root["titles"][partNumber] = Object(title);
  return Json::writeString(Json::StreamWriterBuilder(), root) + "\n";
}

State StateIn(const std::string& text) try {
  State state;
  Json::Value root;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  if (!reader->parse(text.data(), text.data() + text.size(), &root, nullptr)) return state;
  state.nextRun = NumberIn(root, "nextRun");
  state.resume = NumberIn(root, "resume");
  state.waitsFor = TextIn(root, "waitsFor");
  const Json::Value& run = root.isObject() ? root["lastRun"] : root;
  state.lastRun = {NumberIn(run, "began"), NumberIn(run, "ended"),
                   static_cast<std::uint32_t>(NumberIn(run, "code"))};
  if (!root.isObject() || !root["titles"].isObject()) return state;
  for (const std::string& partNumber : root["titles"].getMemberNames()) {
    state.titles[partNumber] = TitleIn(root["titles"][partNumber]);
  }
  return state;
} catch (const Json::Exception&) {
  return {};
}

}  // namespace service
