#include "tools/tolmarhost/PolicyWatch.h"

namespace {

/// The suite's own key need not be there yet.
constexpr const wchar_t* Policies = L"SOFTWARE\\Policies";

}  // namespace

PolicyWatch::~PolicyWatch() {
  if (_key != nullptr) RegCloseKey(_key);
}

void PolicyWatch::Ask() {
  if (_key == nullptr) {
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, Policies, 0, KEY_NOTIFY | KEY_WOW64_64KEY, &_key);
  }
  const bool hasCome = WaitForSingleObject(_changed.Get(), 0) == WAIT_OBJECT_0;
  if (_key == nullptr || (_isAsked && !hasCome)) return;
  ResetEvent(_changed.Get());
  constexpr DWORD What = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
  _isAsked = RegNotifyChangeKeyValue(_key, TRUE, What, _changed.Get(), TRUE) == ERROR_SUCCESS;
}
