#include "tools/tolmarctl/Output.h"

#include <json/writer.h>

#include <cstdio>
#include <string>

namespace {

void PrintJson(const Options& options, const Outcome& outcome) {
  Json::Value root;
  root["command"] = options.command;
  root["code"] = static_cast<Json::UInt>(outcome.code);
  if (options.command == "entitled") {
    root["hasEntitlement"] = outcome.hasEntitlement;
  } else {
    root["result"] = outcome.result.isNull() ? Json::Value(Json::objectValue) : outcome.result;
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  std::puts(Json::writeString(builder, root).c_str());
}

void PrintTitle(const Json::Value& title) {
  std::printf("  %-16s %-24s %s%s\n", title["l1FruPn"].asCString(),
              title.get("name", "").asString().c_str(), title.get("status", "").asString().c_str(),
              title["preinstallSw"].asBool() ? "  (pre-install)" : "");
}

void PrintFile(const Json::Value& file) {
  std::printf("  %-32s %10d bytes  crc %s\n", file["name"].asCString(), file["size"].asInt(),
              file["crc"].asString().c_str());
}

void PrintText(const Options& options, const Outcome& outcome) {
  if (options.command == "entitled" && outcome.code == 0) {
    std::puts(outcome.hasEntitlement ? "entitled" : "not entitled");
  }
  if (outcome.result.isObject()) {
    for (const Json::Value& title : outcome.result["swList"]) PrintTitle(title);
    for (const Json::Value& file : outcome.result["fileList"]) PrintFile(file);
  }
  std::printf("%s: code %lu\n", options.command.c_str(), outcome.code);
}

}  // namespace

void PrintOutcome(const Options& options, const Outcome& outcome) try {
  options.json ? PrintJson(options, outcome) : PrintText(options, outcome);
} catch (const Json::Exception& error) {
  std::fprintf(stderr, "tolmarctl: unexpected reply: %s\n", error.what());
}
