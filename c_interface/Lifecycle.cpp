#include <windows.h>

#include <atomic>

#include "agent/DeviceConfigure.h"
#include "agent/TolmarAgent.h"
#include "c_interface/Call.h"
#include "c_interface/Document.h"
#include "c_interface/Events.h"
#include "host/common/Text.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "reference_host/Startup.h"

namespace c_interface {

namespace {

enum class State { NotStarted, Starting, Started, Stopped };
std::atomic<State> state{State::NotStarted};

/// Goes from one state to the next, for good once it is told to keep it.
class Step {
 public:
  /// @throws Refusal when the state is another one than `from`.
  Step(State from, State to) : _from(from) {
    State found = from;
    if (state.compare_exchange_strong(found, to)) return;
    if (found == State::Stopped) throw Refusal{TOLMAR_STOPPED};
    throw Refusal{from == State::NotStarted ? TOLMAR_ALREADY_STARTED : TOLMAR_NOT_STARTED};
  }
  ~Step() {
    if (!_isKept) state = _from;
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  void Keep(State reached) {
    state = reached;
    _isKept = true;
  }

 private:
  const State _from;
  bool _isKept = false;
};

bool StartSuite(const tolmar_configuration& given, std::wstring& error) {
  if (given.path != nullptr && given.json != nullptr) {
    error = L"the configuration is given twice, by path and as text";
    return false;
  }
  if (given.path != nullptr) return refhost::StartFromFile(Wide(given.path), error);
  if (given.json != nullptr) return refhost::StartFromText(Utf8(given.json), error);
  return refhost::Start(error);
}

}  // namespace

TolmarAgent& StartedAgent() {
  const State now = state;
  if (now == State::Stopped) throw Refusal{TOLMAR_STOPPED};
  if (now != State::Started) throw Refusal{TOLMAR_NOT_STARTED};
  return *TolmarAgent::GetInstance();
}

}  // namespace c_interface

using namespace c_interface;

uint32_t tolmar_start(const tolmar_configuration* configuration, char** complaint) {
  if (complaint != nullptr) *complaint = nullptr;
  return Guarded([&] {
    Step step(State::NotStarted, State::Starting);
    std::wstring error;
    if (!StartSuite(Known(configuration), error)) {
      if (complaint != nullptr) Hand(ZLT::String::UTF16ToUTF8(error), complaint);
      return TOLMAR_BAD_CONFIGURATION;
    }
    StopEvent();
    TolmarAgent::GetInstance();
    step.Keep(State::Started);
    return TOLMAR_OK;
  });
}

uint32_t tolmar_stop() {
  return Guarded([] {
    Step step(State::Started, State::Stopped);
    step.Keep(State::Stopped);
    SetEvent(StopEvent());
    TolmarAgent::GetInstance()->CleanUp();
    return TOLMAR_OK;
  });
}

uint32_t tolmar_set_base_uri(const char* base) {
  return Guarded([&] { return TolmarAgent::SetBaseUri(Wide(base)), TOLMAR_OK; });
}

uint32_t tolmar_set_realm(const char* realm) {
  return Guarded([&] { return TolmarAgent::SetRealm(Wide(realm)), TOLMAR_OK; });
}

uint32_t tolmar_device_configure(uint32_t timeout_ms) {
  return WithAgent([&](TolmarAgent&) {
    const ZLTNotificationData configured(false, DeviceTopic, DeviceConfigured);
    const bool isDone = ZLTPublisherSubscriber::GetInstance()->Publish(configured, timeout_ms);
    return isDone ? TOLMAR_OK : TOLMAR_TIMED_OUT;
  });
}
