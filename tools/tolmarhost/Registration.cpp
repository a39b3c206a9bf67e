#include "tools/tolmarhost/Registration.h"

#include <filesystem>

#include "reference_host/configuration/ConfigurationFile.h"
#include "tools/tolmarhost/EventLog.h"
#include "tools/tolmarhost/StopBound.h"

namespace registration {

namespace {

constexpr const wchar_t* DisplayName = L"Tolmar software delivery";
constexpr DWORD MinuteMs = 60 * 1000;
constexpr DWORD DaySeconds = 24 * 60 * 60;
constexpr DWORD StopPatienceMs = 30 * 1000;
constexpr DWORD LookMs = 100;

/// Closes what the service manager has opened.
class Opened {
 public:
  explicit Opened(SC_HANDLE handle) : _handle(handle) {}
  ~Opened() {
    if (_handle != nullptr) CloseServiceHandle(_handle);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  SC_HANDLE Get() const { return _handle; }

 private:
  SC_HANDLE _handle;
};

std::wstring Failure(const wchar_t* what, DWORD error) {
  return what + std::wstring(L", error ") + std::to_wstring(error);
}

/// In quotation marks: a path with a blank would name another program as well.
std::wstring CommandLine() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return L"\"" + path + L"\"";
}

SC_HANDLE CreateOrChange(SC_HANDLE manager) {
  const std::wstring line = CommandLine();
  SC_HANDLE created =
      CreateServiceW(manager, ServiceName, DisplayName, SERVICE_ALL_ACCESS,
                     SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                     line.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr);
  if (created != nullptr || GetLastError() != ERROR_SERVICE_EXISTS) return created;
  created = OpenServiceW(manager, ServiceName, SERVICE_ALL_ACCESS);
  if (created != nullptr) {
    ChangeServiceConfigW(created, SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
                         SERVICE_ERROR_NORMAL, line.c_str(), nullptr, nullptr, nullptr, nullptr,
                         nullptr, DisplayName);
  }
  return created;
}

/// In full: the service has another working folder.
LSTATUS NameConfiguration(const std::wstring& name) {
  if (name.empty()) return ERROR_SUCCESS;
  const std::wstring file = std::filesystem::absolute(name).wstring();
  return RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Tolmar", L"ConfigurationFile", REG_SZ,
                         file.c_str(), static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t)));
}

std::wstring ApplyTo(SC_HANDLE service) {
  wchar_t text[] =
      L"Asks the cloud service which software this device is entitled to, and installs it.";
  SERVICE_DESCRIPTIONW description{text};
  SERVICE_DELAYED_AUTO_START_INFO delayed{TRUE};
  SC_ACTION actions[] = {{SC_ACTION_RESTART, MinuteMs},
                         {SC_ACTION_RESTART, 5 * MinuteMs},
                         {SC_ACTION_RESTART, 60 * MinuteMs}};
  SERVICE_FAILURE_ACTIONSW failure{DaySeconds, nullptr, nullptr, 3, actions};
  SERVICE_PRESHUTDOWN_INFO shutdown{service::StopBoundMs(refhost::Settings())};
  const struct {
    DWORD level;
    void* info;
    const wchar_t* name;
  } settings[] = {{SERVICE_CONFIG_DESCRIPTION, &description, L"description"},
                  {SERVICE_CONFIG_DELAYED_AUTO_START_INFO, &delayed, L"delayed start"},
                  {SERVICE_CONFIG_FAILURE_ACTIONS, &failure, L"restarts"},
                  {SERVICE_CONFIG_PRESHUTDOWN_INFO, &shutdown, L"time before a shut-down"}};
  std::wstring refused;
  for (const auto& setting : settings) {
    if (ChangeServiceConfig2W(service, setting.level, setting.info)) continue;
    refused += (refused.empty() ? L"" : L"; ") + Failure(setting.name, GetLastError());
  }
  return refused;
}

void Stop(SC_HANDLE service) {
  SERVICE_STATUS status{};
  if (!ControlService(service, SERVICE_CONTROL_STOP, &status)) return;
  for (DWORD waited = 0; status.dwCurrentState != SERVICE_STOPPED && waited < StopPatienceMs;
       waited += LookMs) {
    ::Sleep(LookMs);
    if (!QueryServiceStatus(service, &status)) return;
  }
}

}  // namespace

std::wstring Install(const std::wstring& configuration) {
  const Opened manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (manager.Get() == nullptr) return Failure(L"the service manager refuses it", GetLastError());
  const Opened service(CreateOrChange(manager.Get()));
  if (service.Get() == nullptr) return Failure(L"the service is not made", GetLastError());
  // The service tries again itself, at each start.
  ApplyTo(service.Get());
  if (const LSTATUS status = EventLog::Register(); status != ERROR_SUCCESS) {
    return Failure(L"the event log's source is not registered", static_cast<DWORD>(status));
  }
  const LSTATUS status = NameConfiguration(configuration);
  return status == ERROR_SUCCESS
             ? L""
             : Failure(L"the configuration is not named", static_cast<DWORD>(status));
}

std::wstring Uninstall() {
  const Opened manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (manager.Get() == nullptr) return Failure(L"the service manager refuses it", GetLastError());
  const Opened service(OpenServiceW(manager.Get(), ServiceName, SERVICE_ALL_ACCESS));
  if (service.Get() == nullptr) return Failure(L"there is no such service", GetLastError());
  Stop(service.Get());
  if (!DeleteService(service.Get())) {
    return Failure(L"the service is not deleted", GetLastError());
  }
  const LSTATUS status = EventLog::Unregister();
  return status == ERROR_SUCCESS
             ? L""
             : Failure(L"the event log's source stays", static_cast<DWORD>(status));
}

std::wstring ApplySettings() {
  const Opened manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  const Opened service(
      manager.Get() == nullptr
          ? nullptr
          : OpenServiceW(manager.Get(), ServiceName, SERVICE_CHANGE_CONFIG | SERVICE_START));
  if (service.Get() == nullptr) return Failure(L"the service is not found", GetLastError());
  return ApplyTo(service.Get());
}

}  // namespace registration
