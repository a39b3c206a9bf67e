#include "bench/stop/Trial.h"

#include <json/value.h>

#include <thread>
#include <utility>

#include "agent/TolmarAgent.h"
#include "bench/common/Document.h"
#include "bench/common/Time.h"
#include "host/common/FileSystem.h"

namespace {

/// The one title of the trial's catalogue, as an entitlement query gives it.
Json::Value Titles() {
  Json::Value document;
  AddTitle(document, "T-STOP", {"M-STOP"});
  return document;
}

/// Runs `work` on a thread of its own, for it may not come back. @return an event of its end.
template <typename Work>
HANDLE StartAside(Work work) {
  HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::thread([work, done] {
    work();
    SetEvent(done);
  }).detach();
  return done;
}

}  // namespace

Trial::Trial(const Phase& phase, Way way, std::wstring folder, DWORD limitMs)
    : _phase(phase), _way(way), _folder(std::move(folder)), _limitMs(limitMs) {}

bool Trial::Run(StopTimes& times) {
  if (_phase.downloadFolderInUse) LockDownloadFolder();
  TolmarAgent::GetInstance();  // on a registered device this starts the pre-install worker
  if (_way != Way::Worker) StartOperation();
  if (!IsReached(_phase, _folder)) return false;
  times = Stop();
  return true;
}

/// The file stays open until the process ends.
void Trial::LockDownloadFolder() const {
  FileSystem::createDirectory(_folder + L"\\download", true);
  CreateFileW((_folder + L"\\download\\in-use").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
              FILE_ATTRIBUTE_NORMAL, nullptr);
}

void Trial::StartOperation() {
  const auto operation = [this] {
    TolmarAgent& agent = *TolmarAgent::GetInstance();
    Json::Value titles = Titles();
    if (_phase.inStatusQuery) {
      agent.GetEntitledSoftwareStatus(titles, _cancel, false);
    } else {
      agent.InstallEntitledSoftware(titles, _cancel, false);
    }
  };
  _operationDone = StartAside(operation);
}

StopTimes Trial::Stop() {
  const Stopwatch watch;
  const auto since = [&](HANDLE done) -> unsigned long {
    if (WaitForSingleObject(done, _limitMs) != WAIT_OBJECT_0) return _limitMs;
    return static_cast<unsigned long>(watch.Milliseconds());
  };
  StopTimes times;
  if (_way == Way::Cancel) {
    SetEvent(_cancel);
  } else {
    times.cleanUp = since(StartAside([] { TolmarAgent::GetInstance()->CleanUp(); }));
  }
  if (_way != Way::Worker) times.operation = since(_operationDone);
  return times;
}
