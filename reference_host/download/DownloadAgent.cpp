#include "host/common/DownloadAgent.h"

#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "reference_host/base/ModulePin.h"
#include "reference_host/base/RunningWork.h"
#include "reference_host/download/BitsDownload.h"
#include "reference_host/download/DownloadAgentOrder.h"
#include "reference_host/download/LeaseWait.h"
#include "reference_host/files/FolderOwner.h"
#include "reference_host/log/Event.h"

using namespace refhost;

namespace {

/// A component's callbacks. Its DLL stays loaded as long as they may be called.
struct Component {
  Component(DownloadAgent::CompleteCallback onComplete, DownloadAgent::ProgressCallback onProgress,
            DownloadAgent::ErrorCallback onError)
      : module(AddressInModuleOf(onProgress)),
        callbacks(std::move(onComplete), std::move(onProgress), std::move(onError)) {}

  const ModuleHold module;
  const unsigned int unloads = UnloadsOf(module.Module());  ///< so far
  const DownloadCallbacks callbacks;
};

}  // namespace

struct DownloadAgent::State {
  class Turn;

  explicit State(std::wstring jobName) : name(std::move(jobName)) {}

  const std::wstring name;
  const HANDLE stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::mutex mutex;
  std::shared_ptr<BitsDownload> running;
  std::shared_ptr<const Component> component;  ///< null once it is stopped
  HMODULE stopped = nullptr;                   ///< the component's DLL, when it was stopped
  unsigned int unloads = 0;                    ///< how often that was unloaded before

  std::shared_ptr<BitsDownload> Running() {
    const std::lock_guard lock(mutex);
    return running;
  }

  std::shared_ptr<const Component> Current() {
    const std::lock_guard lock(mutex);
    return component;
  }

  /// A component that was stopped stays so, though it may ask for the service again; once its DLL
  /// was unloaded, who asks is another.
  void Take(std::shared_ptr<const Component> newest) {
    const std::lock_guard lock(mutex);
    if (stopped != nullptr && UnloadsOf(stopped) == unloads) return;
    if (stopped != nullptr) ResetEvent(stopEvent);
    stopped = nullptr;
    component.swap(newest);  // the older one's DLL is let go behind the lock
  }

  void Stop() {
    std::shared_ptr<const Component> last;
    const std::lock_guard lock(mutex);
    SetEvent(stopEvent);
    if (component == nullptr) return;
    stopped = component->module.Module();
    unloads = component->unloads;
    last.swap(component);
  }
};

/// The one download of a service, as long as the object lives.
class DownloadAgent::State::Turn {
 public:
  Turn(State& state, const std::shared_ptr<BitsDownload>& download) : _state(state) {
    const std::lock_guard lock(_state.mutex);
    _taken = !_state.running;
    if (_taken) _state.running = download;
  }
  ~Turn() {
    const std::lock_guard lock(_state.mutex);
    if (_taken) _state.running.reset();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// @return false when a download runs already: two jobs of one name would cancel each other.
  bool IsTaken() const { return _taken; }

 private:
  State& _state;
  bool _taken;
};

namespace {

BG_JOB_PRIORITY Priority(long priority) {
  const bool known = priority >= BG_JOB_PRIORITY_FOREGROUND && priority <= BG_JOB_PRIORITY_LOW;
  return known ? static_cast<BG_JOB_PRIORITY>(priority) : BG_JOB_PRIORITY_NORMAL;
}

bool IsSignalled(HANDLE event) {
  return event != nullptr && WaitForSingleObject(event, 0) != WAIT_TIMEOUT;
}

void LogError(const std::wstring& text) { ZLT::g_log.e(L"DownloadAgent: %s", text.c_str()); }

void LogException(const std::exception& exception) {
  LogError(L"the download failed: " + ZLT::String::UTF8ToUTF16(exception.what()));
}

void TellRefusal(const std::wstring& refusal) {
  const bool isFolder = !RefusalOfFolder(ZLT::utility::GetZltKivDownloadPath()).empty();
  Event("download.refused")
      .With("reason", refusal)
      .With("cause", isFolder ? "device.folder" : "download.address")
      .Write();
}

/// Runs the download on a thread of the service; blocks until it has ended.
bool RunOnOwnThread(BitsDownload& download) {
  bool success = false;
  std::thread thread([&, title = EventTitle::Current()] {
    const EventTitle named(title);
    try {
      success = download.Run();
    } catch (const std::exception& exception) {
      LogException(exception);
    }
  });
  thread.join();
  return success;
}

}  // namespace

DownloadAgent::DownloadAgent() : m_pState(nullptr) {}

DownloadAgent::~DownloadAgent() = default;

DownloadAgent* DownloadAgent::GetInstance(std::wstring jobName, CompleteCallback onComplete,
                                          ProgressCallback onProgress, ErrorCallback onError) {
  static std::mutex mutex;
  static std::map<std::wstring, DownloadAgent*> agents;
  DownloadAgent* agent = nullptr;
  {
    const std::lock_guard lock(mutex);
    DownloadAgent*& known = agents[jobName];
    if (known == nullptr) {
      PinModule();
      known = new DownloadAgent;
      known->m_pState = new State(jobName);
    }
    agent = known;
  }
  agent->m_pState->Take(std::make_shared<const Component>(
      std::move(onComplete), std::move(onProgress), std::move(onError)));
  return agent;
}

bool DownloadAgent::DownloadFiles(std::wstring jobName, bool uploads, FileMap files,
                                  std::wstring headers, GUID& jobId, HANDLE cancelHandle,
                                  long priority) try {
  // Making a job takes a while where the platform's service has to be started first.
  if (IsSignalled(m_pState->stopEvent) || IsSignalled(cancelHandle)) return false;
  std::wstring refusal = RefusalOfFiles(files, ZLT::utility::GetZltKivDownloadPath());
  if (uploads) refusal = L"uploads are not offered";
  if (jobName != m_pState->name) refusal = L"no job of this service: " + jobName;
  if (!refusal.empty()) {
    LogError(refusal);
    TellRefusal(refusal);
    return false;
  }
  if (files.empty()) return true;
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  if (!WaitForLease(folder, m_pState->stopEvent, cancelHandle)) return false;
  // Who had it before us has deleted its folder.
  if (!FileSystem::createDirectory(folder, true)) return false;
  const std::shared_ptr<const Component> component = m_pState->Current();
  if (component == nullptr) return false;
  const auto download = std::make_shared<BitsDownload>(
      DownloadOrder{jobName, std::move(files), std::move(headers), Priority(priority), cancelHandle,
                    m_pState->stopEvent},
      component->callbacks);
  const State::Turn turn(*m_pState, download);
  if (!turn.IsTaken()) {
    LogError(L"a download of the job " + jobName + L" is running already");
    return false;
  }
  const bool success = RunOnOwnThread(*download);
  if (download->Id()) jobId = *download->Id();
  return success;
} catch (const std::exception& exception) {
  LogException(exception);
  return false;
}

bool DownloadAgent::ResumeDownload(std::wstring jobName, FileMap files) try {
  const std::shared_ptr<BitsDownload> download = m_pState->Running();
  return jobName == m_pState->name && download && download->Renew(files);
} catch (const std::exception& exception) {
  LogException(exception);
  return false;
}

void DownloadAgent::CleanUp() {
  m_pState->Stop();
  // Nobody else may tell the suite of its host's end.
  RunningWork::StopAll();
}
