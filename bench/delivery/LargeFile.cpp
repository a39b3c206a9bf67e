#include <json/value.h>
#include <windows.h>

#include <stdexcept>

#include "agent/TolmarAgent.h"
#include "bench/common/OwnProcess.h"
#include "bench/common/Time.h"
#include "bench/delivery/Parts.h"
#include "bench/delivery/StraightLine.h"
#include "bench/delivery/Titles.h"
#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Utility.h"
#include "progress/DownloadJob.h"
#include "reference_host/download/BitsJob.h"

namespace {

constexpr DWORD PollMs = 50;
constexpr long HighPriority = 1;

struct Place {
  std::wstring url;
  std::wstring path;
};

Place NewPlace() {
  const StraightLine::File file =
      StraightLine::FilesOf(Catalogue::Title('L', 1), Catalogue::Module(1)).front();
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  FileSystem::createDirectory(folder, true);
  return {file.url, folder + L"\\" + file.name};
}

void Require(bool done) {
  if (!done) throw std::runtime_error("the large file does not arrive");
}

/// Fetches the file by `fetch`. @return the milliseconds; prints the CPU seconds of this process.
double Fetch(const char* cpuName, const std::function<void(const Place&)>& fetch) {
  const Place place = NewPlace();
  const double before = OwnProcess::CpuSeconds();
  const double time = MillisecondsOf([&] { fetch(place); });
  PrintSample(cpuName, OwnProcess::CpuSeconds() - before);
  Require(FileSystem::fileExists(place.path));
  FileSystem::deleteDirectoryOrFile(place.path, false);
  return time;
}

void FetchByEngine(const Place& place) {
  using namespace refhost;
  BitsJob::Manager manager;
  HRESULT result = BitsJob::Connect(manager);
  Require(SUCCEEDED(result));
  const auto job = BitsJob::Make(
      manager,
      {L"Engine", StraightLine::Headers(), BG_JOB_PRIORITY_HIGH, {{place.url, place.path}}},
      result);
  Require(job && job->Resume());
  for (BG_JOB_STATE state{}; state != BG_JOB_STATE_TRANSFERRED;) {
    Sleep(PollMs);
    Require(SUCCEEDED(job->State(state)) && state != BG_JOB_STATE_ERROR &&
            state != BG_JOB_STATE_CANCELLED);
  }
  Require(SUCCEEDED(job->Complete()));
}

/// The service keeps the callbacks that it got first: those of the agent, once that has installed
/// something. So a file can be fetched without what follows in an installation.
DownloadAgent& ServiceWithAgentsCallbacks(HANDLE cancel) {
  Json::Value document = Catalogue::Titles('T', 1, 1, 1);
  TolmarAgent::GetInstance()->InstallEntitledSoftware(document, cancel, false);
  RequireInstalled(document);
  return *DownloadAgent::GetInstance(DownloadJobName, nullptr, nullptr, nullptr);
}

}  // namespace

void MeasureLargeFile(const Order& order) {
  const refhost::ComApartment apartment;
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  DownloadAgent& service = ServiceWithAgentsCallbacks(cancel);
  const auto throughSuite = [&](const Place& place) {
    GUID id{};
    Require(service.DownloadFiles(DownloadJobName, false, {{place.url, place.path}},
                                  StraightLine::Headers(), id, cancel, HighPriority));
  };
  Compare(
      order.rounds, [&] { return Fetch("cpu-agent", throughSuite); },
      [&] { return Fetch("cpu-floor", FetchByEngine); });
}
