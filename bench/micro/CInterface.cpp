// A call that works on a document, through the C interface and without it: what lies between is the
// JSON text both ways.

#include <json/reader.h>

#include <memory>

#include "agent/TolmarAgent.h"
#include "bench/micro/EntitlementReply.h"
#include "bench/micro/QuietHost.h"
#include "c_interface/tolmar/agent.h"

namespace {

constexpr int Few = 64, Many = 1024;

/// @return so many titles, as a host gets them.
std::string Titles(const benchmark::State& state) {
  static const bool isStarted = tolmar_start(nullptr, nullptr) == TOLMAR_OK;
  Quiet().reply = EntitlementReply(static_cast<int>(state.range(0)));
  char* titles = nullptr;
  if (!isStarted || tolmar_get_entitled_software(&titles) != TOLMAR_OK) return {};
  std::string copy = titles;
  tolmar_free(titles);
  return copy;
}

bool Parse(const std::string& text, Json::Value& document) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), &document, nullptr);
}

void CallThroughC(benchmark::State& state) {
  const std::string titles = Titles(state);
  while (state.KeepRunning()) {
    char* result = nullptr;
    tolmar_get_install_status(titles.c_str(), &result);  // whichever title is the newest here
    if (result == nullptr) state.SkipWithError("the call fails");
    tolmar_free(result);
  }
  PerKibibyteOf(state, titles);
}
BENCHMARK(CallThroughC)->Arg(Few)->Arg(Many);

void CallOfCpp(benchmark::State& state) {
  const std::string titles = Titles(state);
  Json::Value document;
  if (!Parse(titles, document)) state.SkipWithError("no JSON");
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(
        TolmarAgent::GetInstance()->GetInstallEntitledSoftwareStatus(document));
  }
  PerKibibyteOf(state, titles);
}
BENCHMARK(CallOfCpp)->Arg(Few)->Arg(Many);

void ParseOfTitles(benchmark::State& state) {
  const std::string titles = Titles(state);
  while (state.KeepRunning()) {
    Json::Value document;
    if (!Parse(titles, document)) state.SkipWithError("no JSON");
  }
  PerKibibyteOf(state, titles);
}
BENCHMARK(ParseOfTitles)->Arg(Few)->Arg(Many);

}  // namespace
