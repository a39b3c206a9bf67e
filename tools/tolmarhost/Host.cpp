#include "tools/tolmarhost/Host.h"

#include <algorithm>

#include "host/common/Text.h"
#include "messages.h"
#include "reference_host/Startup.h"
#include "reference_host/configuration/ConfigurationFile.h"

namespace {

/// So often files are looked at, which nobody tells of, and the clock, which may be set.
constexpr service::Time LongestSleepSeconds = 60;

std::string Endpoint(const refhost::Configuration& settings) {
  return settings.baseUrl + " " + settings.realm;
}

}  // namespace

Host::Host(HANDLE stop, HANDLE run, const EventLog& log)
    : _stop(stop), _run(run), _log(log), _device(stop, log) {}

void Host::Run() {
  while (!_device.IsStopping()) {
    _policy.Ask();  // First, so that no change behind the reading is missed.
    service::Time next = _device.Now() + LongestSleepSeconds;
    if (TakeConfiguration()) next = _keeper->Work(refhost::Settings());
    Sleep(next);
  }
}

bool Host::TakeConfiguration() {
  std::wstring error;
  const bool isAnother = refhost::ReloadConfiguration(error);
  // The one before holds where the newest is not usable.
  if (!error.empty()) Refuse(error);
  if (!refhost::ConfigurationError().empty()) return false;
  if (!_keeper) return Begin();
  if (error.empty()) _refused.clear();
  if (isAnother) TellChange();
  return true;
}

void Host::Refuse(const std::wstring& why) {
  if (why == _refused) return;
  _refused = why;
  _log.Write(MSG_CONFIGURATION_REFUSED, {why});
}

bool Host::Begin() {
  std::wstring error;
  if (!refhost::Start(error)) {
    Refuse(error);
    return false;
  }
  _endpoint = Endpoint(refhost::Settings());
  _keeper.emplace(_device, KeptState());
  _keeper->Begin(refhost::Settings());
  _log.Write(MSG_STARTED, {refhost::ConfigurationOrigin()});
  return true;
}

void Host::TellChange() {
  const refhost::Configuration& settings = refhost::Settings();
  _log.Write(MSG_CONFIGURATION_CHANGED, {refhost::ConfigurationOrigin()});
  _keeper->LookAgain();
  if (_endpoint == Endpoint(settings)) return;
  _endpoint = Endpoint(settings);
  _log.Write(MSG_ENDPOINT_CHANGED, {ZLT::String::UTF8ToUTF16(settings.baseUrl),
                                    ZLT::String::UTF8ToUTF16(settings.realm)});
  const bool installs = settings.serviceInstalls != refhost::ServiceInstalls::None;
  _device.ChangeEndpoint(installs && _keeper->MayInstall(settings));
  _keeper->RunSoon(settings);
}

void Host::Sleep(service::Time until) {
  const service::Time left =
      std::clamp<service::Time>(until - _device.Now(), 0, LongestSleepSeconds);
  const HANDLE any[] = {_stop, _run, _policy.Changed()};
  const DWORD which = WaitForMultipleObjects(3, any, FALSE, static_cast<DWORD>(1000 * left));
  if (which == WAIT_OBJECT_0 + 1 && _keeper) _keeper->RunNow();
}
