#include "tools/tolmarhost/Service.h"

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>

#include "host/common/Log.h"
#include "reference_host/base/Handle.h"
#include "tools/common/ServiceState.h"
#include "tools/tolmarhost/EventLog.h"
#include "tools/tolmarhost/Registration.h"
#include "tools/tolmarhost/Serve.h"

namespace {

/// What the stop may take until it has said for the first time how long it needs.
constexpr DWORD FirstHintMs = 10 * 1000;

/// The state that the service manager knows. Any thread.
class Status {
 public:
  void Open(SERVICE_STATUS_HANDLE handle) { _handle = handle; }

  void Running() { Report(SERVICE_RUNNING, 0); }
  void Stopped() { Report(SERVICE_STOPPED, 0); }

  /// @param leftMs in, what it takes yet at the most.
  void Stopping(DWORD leftMs) { Report(SERVICE_STOP_PENDING, leftMs); }

 private:
  void Report(DWORD state, DWORD leftMs) {
    const std::scoped_lock lock(_mutex);
    if (_state == SERVICE_STOPPED || (_state == SERVICE_STOP_PENDING && state == SERVICE_RUNNING))
      return;
    _state = state;
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted =
        state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_PRESHUTDOWN : 0;
    status.dwCheckPoint = state == SERVICE_STOP_PENDING ? ++_checkpoint : 0;
    status.dwWaitHint = leftMs;
    SetServiceStatus(_handle, &status);
  }

  std::mutex _mutex;
  SERVICE_STATUS_HANDLE _handle = nullptr;
  DWORD _state = SERVICE_START_PENDING;
  DWORD _checkpoint = 0;
};

/// Lives as long as the process: the service manager may call at any time.
struct TheService {
  Status status;
  const refhost::Handle stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  const refhost::Handle run{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

TheService& Instance() {
  static auto* const service = new TheService;
  return *service;
}

DWORD WINAPI OnControl(DWORD control, DWORD, void*, void*) {
  switch (control) {
    case SERVICE_CONTROL_STOP:
    case SERVICE_CONTROL_PRESHUTDOWN:
      Instance().status.Stopping(FirstHintMs);
      SetEvent(Instance().stop.Get());
      return NO_ERROR;
    case service::RunControl:
      SetEvent(Instance().run.Get());
      return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
      return NO_ERROR;
    default:
      return ERROR_CALL_NOT_IMPLEMENTED;
  }
}

/// Beside the start, which it must not hold up.
void ApplySettings() {
  std::thread([] {
    const std::wstring refused = registration::ApplySettings();
    if (refused.empty()) return;
    ZLT::g_log.e(L"TolmarHost: the service manager does not take: %s", refused.c_str());
  }).detach();
}

void WINAPI ServiceMain(DWORD, wchar_t**) {
  TheService& service = Instance();
  const SERVICE_STATUS_HANDLE handle =
      RegisterServiceCtrlHandlerExW(service::ServiceName, OnControl, nullptr);
  if (handle == nullptr) return;
  service.status.Open(handle);
  service.status.Running();
  ApplySettings();
  const EventLog log(false);
  const bool isClean = Serve(service.stop.Get(), service.run.Get(), log,
                             [&service](DWORD leftMs) { service.status.Stopping(leftMs); });
  service.status.Stopped();
  if (!isClean) EndHard();
}

}  // namespace

bool RunAsService() {
  std::wstring name = service::ServiceName;
  const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
  return StartServiceCtrlDispatcherW(table) != 0;
}
