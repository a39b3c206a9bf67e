#include "tools/tolmarctl/Output.h"

#include <json/writer.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "tools/tolmarctl/Explain.h"
#include "tools/tolmarctl/Plan.h"
#include "tools/tolmarctl/Utf8Console.h"

namespace {

/// Beyond ASCII everything is escaped: a reader need not know what a console or a pipe makes of it.
std::string OnOneLine(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["commentStyle"] = "None";
  return Json::writeString(builder, value);
}

/// @return true when the service's list has the shape that is agreed upon.
bool IsTitle(const Json::Value& title) {
  return title.isObject() && title["l1FruPn"].isString() && !title["name"].isObject() &&
         !title["name"].isArray() && title["preinstallSw"].isConvertibleTo(Json::booleanValue) &&
         title["status"].isConvertibleTo(Json::stringValue);
}
bool IsFile(const Json::Value& file) {
  return file.isObject() && file["name"].isString() && file["size"].isInt() &&
         file["crc"].isConvertibleTo(Json::stringValue);
}

/// @return the list of that name, null when there is none.
const Json::Value& ListOf(const Json::Value& result, const char* name) {
  static const Json::Value none;
  return result.isObject() ? result[name] : none;
}

bool AreAll(const Json::Value& list, bool (*isSo)(const Json::Value&)) {
  return (list.isNull() || list.isArray()) && std::all_of(list.begin(), list.end(), isSo);
}

void PrintJson(const Options& options, const Outcome& outcome) {
  Json::Value root;
  root["command"] = options.command;
  root["code"] = static_cast<Json::UInt>(outcome.code);
  if (options.command == "entitled") {
    root["hasEntitlement"] = outcome.hasEntitlement;
  } else {
    root["result"] = outcome.result.isNull() ? Json::Value(Json::objectValue) : outcome.result;
  }
  if (outcome.code != 0) root["cause"] = CauseIdOf(outcome.code);
  PrintJsonLine(root);
}

void PrintTitle(const Json::Value& title) {
  if (!IsTitle(title)) {
    std::printf("  (no title: %s)\n", OnOneLine(title).c_str());
    return;
  }
  std::printf("  %-16s %-24s %s%s\n", title["l1FruPn"].asCString(),
              title.get("name", "").asString().c_str(), title.get("status", "").asString().c_str(),
              title["preinstallSw"].asBool() ? "  (pre-install)" : "");
}

void PrintFile(const Json::Value& file) {
  if (!IsFile(file)) {
    std::printf("  (no file: %s)\n", OnOneLine(file).c_str());
    return;
  }
  std::printf("  %-32s %10d bytes  crc %s\n", file["name"].asCString(), file["size"].asInt(),
              file["crc"].asString().c_str());
}

void PrintText(const Options& options, const Outcome& outcome) {
  const Utf8Console console;
  if (options.command == "entitled" && outcome.code == 0) {
    std::puts(outcome.hasEntitlement ? "entitled" : "not entitled");
  }
  for (const Json::Value& title : ListOf(outcome.result, "swList")) PrintTitle(title);
  for (const Json::Value& file : ListOf(outcome.result, "fileList")) PrintFile(file);
  if (options.command == "plan") PrintPlan(outcome.result);
  if (!outcome.isDone) std::printf("%s: gave up before all was done\n", options.command.c_str());
  std::printf("%s: code %lu\n", options.command.c_str(), outcome.code);
  if (outcome.code != 0) std::fputs(ExplanationOf(outcome.code).c_str(), stdout);
}

}  // namespace

void PrintJsonLine(const Json::Value& document) { std::puts(OnOneLine(document).c_str()); }

bool PrintOutcome(const Options& options, const Outcome& outcome) {
  options.json ? PrintJson(options, outcome) : PrintText(options, outcome);
  const bool isAsAgreed = AreAll(ListOf(outcome.result, "swList"), IsTitle) &&
                          AreAll(ListOf(outcome.result, "fileList"), IsFile);
  if (!isAsAgreed) std::fputs("tolmarctl: the service's reply is not as agreed\n", stderr);
  return isAsAgreed;
}
