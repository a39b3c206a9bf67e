#include "tools/tolmarhost/WindowsDevice.h"

#include <algorithm>
#include <ctime>
#include <random>
#include <thread>

#include "agent/TolmarAgent.h"
#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/files/SuiteFile.h"
#include "tools/common/AgentControl.h"
#include "tools/common/Installation.h"
#include "tools/common/Titles.h"
#include "tools/tolmarhost/Notices.h"
#include "tools/tolmarhost/Passing.h"
#include "tools/tolmarhost/RunningPrograms.h"
#include "tools/tolmarhost/Waiting.h"

using service::Time;
using ZLT::String;

namespace {

/// So often it is looked how far a title is that must not be begun any more, and what time it is:
/// the machine may sleep, and its clock be set.
constexpr Time LookMs = 500;
constexpr Time LongestWaitMs = 60'000;

bool IsSignalled(HANDLE event, DWORD milliseconds = 0) {
  return WaitForSingleObject(event, milliseconds) != WAIT_TIMEOUT;
}

std::wstring ModuleIn(const Json::Value& module) {
  return String::UTF8ToUTF16(TextIn(module, "moduleFruPn"));
}

bool IsMissing(const Json::Value& title) { return TextIn(title, "status") == "not installed"; }

bool IsDownloading(TolmarAgent& agent, const Json::Value& title) {
  Json::Value document;
  document["swList"].append(title);
  return agent.GetInstallEntitledSoftwareStatus(document) == 0 &&
         TextIn(document["swList"][0], "status") == "downloading";
}

}  // namespace

WindowsDevice::WindowsDevice(HANDLE stop, const EventLog& log) : _stop(stop), _log(log) {}

TolmarAgent* WindowsDevice::Agent() {
  if (_agent == nullptr && !IsStopping()) {
    // Titles for the device's set-up are installed when installers may run, not at each start.
    TellEndpoint();
    _isStarting = true;
    TolmarAgent* const agent = StartAgent(_stop);
    const std::scoped_lock lock(_mutex);
    if (agent == nullptr || _isCleanedUp) return nullptr;
    _isStarting = false;
    _agent = agent;
  }
  return _agent;
}

void WindowsDevice::CleanUp() {
  SetEvent(_cancel.Get());
  {
    const std::scoped_lock lock(_mutex);
    _isCleanedUp = true;
  }
  if (TolmarAgent* agent = _agent) agent->CleanUp();
}

void WindowsDevice::ChangeEndpoint(bool installs) {
  if (_agent == nullptr) return;  // It takes the newest one when it starts.
  installs ? AnnounceConfiguration(_stop) : TellEndpoint();
}

Time WindowsDevice::Now() { return std::time(nullptr); }

service::WallTime WindowsDevice::Wall(Time time) {
  constexpr Time TicksPerSecond = 10'000'000;
  constexpr Time SecondsFrom1601To1970 = 11'644'473'600;
  ULARGE_INTEGER ticks{};
  ticks.QuadPart = static_cast<ULONGLONG>((time + SecondsFrom1601To1970) * TicksPerSecond);
  const FILETIME file{ticks.LowPart, ticks.HighPart};
  SYSTEMTIME utc{}, local{};
  FileTimeToSystemTime(&file, &utc);
  if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) local = utc;
  return {(local.wDayOfWeek + 6) % 7, local.wHour * 60 + local.wMinute};
}

double WindowsDevice::Random() {
  static std::mt19937_64 engine{std::random_device{}()};
  return std::uniform_real_distribution<double>(0, 1)(engine);
}

bool WindowsDevice::IsStopping() { return IsSignalled(_stop); }

std::uint32_t WindowsDevice::Ask(refhost::ServiceInstalls wanted, Json::Value& document) {
  TolmarAgent* const agent = Agent();
  if (agent == nullptr) return 0;
  if (wanted == refhost::ServiceInstalls::None) {
    unsigned char entitled = 0;
    return static_cast<std::uint32_t>(agent->HasEntitledSoftware(entitled));
  }
  unsigned long code = agent->GetEntitledSoftware(document);
  const bool preinstallOnly = wanted == refhost::ServiceInstalls::Preinstall;
  if (code == 0 && HasTitles(document)) {
    code = agent->GetEntitledSoftwareStatus(document, _stop, preinstallOnly);
  }
  const Json::Value& titles = document.isObject() ? document["swList"] : document;
  if (code == 0 && std::none_of(titles.begin(), titles.end(), IsMissing)) waiting::Clear();
  return static_cast<std::uint32_t>(code);
}

std::vector<Json::Value> WindowsDevice::ListsOf(const Json::Value& title) {
  std::vector<Json::Value> lists;
  TolmarAgent* const agent = Agent();
  for (const Json::Value& module : title["moduleList"]) {
    Json::Value list;
    const bool isHad = agent != nullptr && !IsStopping() &&
                       agent->GetDownloadFiles(list, String::UTF8ToUTF16(TextIn(title, "l1FruPn")),
                                               ModuleIn(module)) == 0;
    if (!isHad) return {};
    lists.push_back(std::move(list));
  }
  return lists;
}

std::string WindowsDevice::VersionOf(const Json::Value& title) {
  const std::vector<Json::Value> lists = ListsOf(title);
  return lists.empty() ? "" : service::VersionOfLists(lists);
}

void WindowsDevice::Install(Json::Value& title, std::optional<Time> until) {
  TolmarAgent* const agent = Agent();
  if (agent == nullptr) return;
  if (waiting::Has(title)) waiting::Return(title, VersionOf(title));
  ResetEvent(_cancel.Get());
  if (IsStopping()) return;
  const refhost::Handle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::thread watch;
  if (until) {
    watch =
        std::thread([&, copy = title, handle = done.Get()] { WatchWindow(copy, *until, handle); });
  }
  InstallTitle(*agent, title, _cancel.Get());
  SetEvent(done.Get());
  if (watch.joinable()) watch.join();
}

/// A title that is still being fetched when the window closes is stopped; what has come is kept.
/// One whose installer may have started is brought to its end.
void WindowsDevice::WatchWindow(const Json::Value& title, Time until, HANDLE done) {
  for (;;) {
    const Time left = (until - Now()) * 1000;
    const Time wait = left > 0 ? std::min(left, LongestWaitMs) : LookMs;
    if (IsSignalled(done, static_cast<DWORD>(wait))) return;
    if (Now() < until || !IsDownloading(*_agent.load(), title)) continue;
    ZLT::g_log.d(L"TolmarHost: the maintenance window has closed, the download of %s is stopped",
                 String::UTF8ToUTF16(TextIn(title, "l1FruPn")).c_str());
    SetEvent(_cancel.Get());
    return;
  }
}

void WindowsDevice::Fetch(const Json::Value& title) {
  const std::vector<Json::Value> lists = ListsOf(title);
  if (!lists.empty()) waiting::Fetch(title, lists, _stop);
}

std::string WindowsDevice::Running(const std::vector<std::string>& programs) {
  return FirstRunning(programs);
}

void WindowsDevice::Tell(const service::Notice& notice) { Write(_log, notice); }

void WindowsDevice::Keep(const service::State& state) {
  const std::wstring failure = refhost::WriteSuiteFile(service::StateFileName, TextOf(state));
  if (!failure.empty()) ZLT::g_log.e(L"TolmarHost: the state is not kept: %s", failure.c_str());
}

service::State KeptState() {
  std::string text;
  const std::wstring failure =
      refhost::ReadSuiteFile(service::StateFileName, service::MaxStateBytes, text);
  if (!failure.empty()) ZLT::g_log.e(L"TolmarHost: begun anew, %s", failure.c_str());
  return service::StateIn(text);
}
