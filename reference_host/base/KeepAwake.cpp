#include "reference_host/base/KeepAwake.h"

namespace refhost {

KeepAwake::KeepAwake(const wchar_t* reason) {
  REASON_CONTEXT context{};
  context.Version = POWER_REQUEST_CONTEXT_VERSION;
  context.Flags = POWER_REQUEST_CONTEXT_SIMPLE_STRING;
  context.Reason.SimpleReasonString = const_cast<wchar_t*>(reason);
  _request = Handle(PowerCreateRequest(&context));
  if (!_request || !PowerSetRequest(_request.Get(), PowerRequestSystemRequired)) {
    _error = GetLastError();
  }
}

KeepAwake::~KeepAwake() {
  if (_error == ERROR_SUCCESS) PowerClearRequest(_request.Get(), PowerRequestSystemRequired);
}

}  // namespace refhost
