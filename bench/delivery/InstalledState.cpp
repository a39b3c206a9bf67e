#include <json/value.h>
#include <windows.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "agent/TolmarAgent.h"
#include "bench/common/Time.h"
#include "bench/delivery/Parts.h"
#include "bench/delivery/QueryWatch.h"
#include "bench/delivery/Titles.h"
#include "host/common/FileSystem.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "install/ScriptCommand.h"

namespace {

void RunCheck(const std::wstring& folder, int number) {
  const std::wstring script =
      folder + L"\\" + ZLT::String::UTF8ToUTF16(Catalogue::Title('S', number)) + L".ps1";
  ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(ScriptCommand::Check(script), folder, true,
                                                      nullptr);
}

double RunChecksAtOnce(int count) {
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  return MillisecondsOf([&] {
    std::vector<std::thread> threads;
    for (int number = 1; number <= count; ++number) {
      threads.emplace_back([&folder, number] { RunCheck(folder, number); });
    }
    for (std::thread& thread : threads) thread.join();
  });
}

double AskAgent(const Order& order, HANDLE cancel) {
  Json::Value document = Catalogue::Titles('S', 1, order.titles, 1);
  if (order.fresh) {
    FileSystem::deleteDirectoryOrFile(ZLT::utility::GetZltKivDownloadPath(), true);
  }
  const double time = MillisecondsOf(
      [&] { TolmarAgent::GetInstance()->GetEntitledSoftwareStatus(document, cancel, false); });
  RequireInstalled(document);
  return time;
}

}  // namespace

void MeasureInstalledState(const Order& order) {
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  TolmarAgent::GetInstance();
  AskAgent(order, cancel);  // leaves the scripts in their place
  QueryWatch watch;
  Compare(
      order.rounds, [&] { return AskAgent(order, cancel); },
      [&] { return RunChecksAtOnce(order.titles); });
  const QueryWatch::Most most = watch.End();
  PrintSample("threads", most.threads);
  PrintSample("scripts", most.scripts);
  PrintSample("script-memory", most.scriptMemory);
}
