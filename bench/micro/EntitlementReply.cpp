#include "bench/micro/EntitlementReply.h"

#include <json/value.h>
#include <json/writer.h>

std::string EntitlementReply(int titles) {
  Json::Value reply;
  reply["result"]["code"] = 0;
  for (int i = 0; i < titles; ++i) {
    Json::Value& title = reply["result"]["swList"].append(Json::objectValue);
    title["l1FruPn"] = "20QN" + std::to_string(10000 + i) + "US";
    title["name"] = "Title " + std::to_string(i) + " f\u00fcr B\u00fcro & Schule";
    title["description"] = std::string(600, 'x');
    for (int j = 0; j < 4; ++j) {
      Json::Value& module = title["moduleList"].append(Json::objectValue);
      module["moduleFruPn"] = "5M10V" + std::to_string(10000 + j);
      module["version"] = "1.2.3";
      module["size"] = 1048576;
    }
  }
  Json::StreamWriterBuilder compact;
  compact["indentation"] = "";
  compact["emitUTF8"] = true;
  return Json::writeString(compact, reply);
}

void PerKibibyteOf(benchmark::State& state, const std::string& text) {
  state.counters["perKiB"] = benchmark::Counter(
      static_cast<double>(text.size()) / 1024,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
