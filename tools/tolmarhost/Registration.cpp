#include "tools/tolmarhost/Registration.h"

#include <filesystem>

#include "reference_host/base/OwnProgram.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "tools/common/ServiceHandle.h"
#include "tools/common/ServiceState.h"
#include "tools/tolmarhost/EventLog.h"
#include "tools/tolmarhost/StopBound.h"

namespace registration {

namespace {

constexpr const wchar_t* DisplayName = L"Tolmar software delivery";
constexpr DWORD MinuteMs = 60 * 1000;
constexpr DWORD DaySeconds = 24 * 60 * 60;
/// Behind the bound of a stop, for the service to tell that it was cut.
constexpr DWORD RoomMs = 10 * 1000;
constexpr DWORD LookMs = 100;

std::wstring Failure(const wchar_t* what, DWORD error) {
  return what + std::wstring(L", error ") + std::to_wstring(error);
}

/// @return ERROR_SUCCESS or the system's error.
DWORD CreateOrChange(SC_HANDLE manager, ServiceHandle& service) {
  // In quotation marks: a path with a blank would name another program as well.
  const std::wstring line = L"\"" + refhost::OwnProgram() + L"\"";
  service = ServiceHandle(CreateServiceW(manager, service::ServiceName, DisplayName,
                                         SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                         SERVICE_AUTO_START, SERVICE_ERROR_NORMAL, line.c_str(),
                                         nullptr, nullptr, nullptr, nullptr, nullptr));
  if (service) return ERROR_SUCCESS;
  if (GetLastError() != ERROR_SERVICE_EXISTS) return GetLastError();
  service = ServiceHandle(OpenServiceW(manager, service::ServiceName, SERVICE_ALL_ACCESS));
  const bool isChanged =
      service && ChangeServiceConfigW(service.Get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
                                      SERVICE_ERROR_NORMAL, line.c_str(), nullptr, nullptr, nullptr,
                                      nullptr, nullptr, DisplayName);
  return isChanged ? ERROR_SUCCESS : GetLastError();
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

/// Blocks as long as a stop takes, also one that somebody else has asked for: the service's last
/// entry in the event log wants its source.
void Stop(SC_HANDLE service) {
  const DWORD patience = service::StopBoundMs(refhost::Settings()) + RoomMs;
  SERVICE_STATUS status{};
  ControlService(service, SERVICE_CONTROL_STOP, &status);
  for (DWORD waited = 0; waited < patience; waited += LookMs) {
    if (!QueryServiceStatus(service, &status)) return;
    if (status.dwCurrentState != SERVICE_STOP_PENDING) return;
    ::Sleep(LookMs);
  }
}

}  // namespace

std::wstring Install(const std::wstring& configuration) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (!manager) return Failure(L"the service manager refuses it", GetLastError());
  ServiceHandle service;
  if (const DWORD error = CreateOrChange(manager.Get(), service); error != ERROR_SUCCESS) {
    return Failure(L"the service is not made", error);
  }
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
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (!manager) return Failure(L"the service manager refuses it", GetLastError());
  const ServiceHandle service(
      OpenServiceW(manager.Get(), service::ServiceName, SERVICE_ALL_ACCESS));
  if (!service) return Failure(L"there is no such service", GetLastError());
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
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  const ServiceHandle service(manager ? OpenServiceW(manager.Get(), service::ServiceName,
                                                     SERVICE_CHANGE_CONFIG | SERVICE_START)
                                      : nullptr);
  if (!service) return Failure(L"the service is not found", GetLastError());
  return ApplyTo(service.Get());
}

}  // namespace registration
