#include <benchmark/benchmark.h>
#include <json/reader.h>

#include <memory>

#include "agent/TolmarAgent.h"
#include "bench/micro/EntitlementReply.h"
#include "bench/micro/QuietHost.h"
#include "catalogue/JsonText.h"
#include "reference_host/log/LogRecord.h"
#include "reference_host/log/Redaction.h"
#include "service/RequestBody.h"

namespace {

void BodyOfDownloadReport(benchmark::State& state) {
  const std::wstring title = L"20QN11000US", module = L"5M10V10000", file = L"package.cab",
                     time = L"2026-01-01 12:00:00", message;
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(RequestBody(L"downloadProgress")
                                 .Text(L"l1FruPn", title)
                                 .Text(L"moduleFruPn", module)
                                 .Number(L"action", 0)
                                 .Text(L"message", message)
                                 .Text(L"fileName", file)
                                 .Number(L"progress", 40)
                                 .Text(L"custDeviceDate", time)
                                 .Close());
  }
}
BENCHMARK(BodyOfDownloadReport);

const std::string& Reply() {
  static const std::string reply = EntitlementReply(64);
  return reply;
}

/// Reports the time per KiB of the reply.
void PerKibibyte(benchmark::State& state) { PerKibibyteOf(state, Reply()); }

void ReplyParse(benchmark::State& state) {
  const std::wstring text = ZLT::String::UTF8ToUTF16(Reply());
  while (state.KeepRunning()) {
    Json::Value root;
    if (!ParseJson(text, root)) state.SkipWithError("no JSON");
  }
  PerKibibyte(state);
}
BENCHMARK(ReplyParse);

/// jsoncpp alone. @param getText in, what yields the text for each run.
template <class GetText>
void ParseBare(benchmark::State& state, const GetText& getText) {
  while (state.KeepRunning()) {
    const auto& text = getText();
    Json::Value root;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
      state.SkipWithError("no JSON");
    }
  }
  PerKibibyte(state);
}

void BareParse(benchmark::State& state) {
  ParseBare(state, []() -> const std::string& { return Reply(); });
}
BENCHMARK(BareParse);

/// With a text that is new each time, as replies are: its memory has to come from somewhere.
void BareParseOfNewText(benchmark::State& state) {
  ParseBare(state, [] { return std::string(Reply().begin(), Reply().end()); });
}
BENCHMARK(BareParseOfNewText);

/// All that the agent does with a reply, from its bytes to the caller's document.
void EntitlementQuery(benchmark::State& state) {
  Quiet().reply = Reply();
  Json::Value titles;
  while (state.KeepRunning()) {
    if (TolmarAgent::GetInstance()->GetEntitledSoftware(titles) != 0) {
      state.SkipWithError("the query fails");
    }
  }
  PerKibibyte(state);
}
BENCHMARK(EntitlementQuery);

/// What a log line costs before it reaches its file.
void LogRecordText(benchmark::State& state) {
  const std::wstring message =
      L"TolmarAgent: OnFileDownloadProgress: total(B)=2000000 Xfered(B)=400000 Files(T)=3 FilesX=1";
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(refhost::ComposeLogRecord({1767268800123, 4711, 815, 'D'},
                                                       refhost::WithoutSecrets(message)));
  }
}
BENCHMARK(LogRecordText);

}  // namespace

BENCHMARK_MAIN();
