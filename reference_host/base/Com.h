#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <objbase.h>
#include <wrl/client.h>

#include <string>

namespace refhost {

template <typename Interface>
using ComPtr = Microsoft::WRL::ComPtr<Interface>;

/// COM for the current thread, and its multithreaded apartment, as long as the object lives: also
/// for a thread whose own initialisation has failed or is undone by others.
class ComApartment {
 public:
  ComApartment() {
    CoIncrementMTAUsage(&_usage);
    _initialised = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
  }
  ~ComApartment() {
    if (_initialised) CoUninitialize();
    if (_usage != nullptr) CoDecrementMTAUsage(_usage);
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  CO_MTA_USAGE_COOKIE _usage = nullptr;
  bool _initialised = false;
};

/// Gives a service leave to act in its caller's name, as BITS needs it: for one interface, since
/// the process as a whole belongs to the host program.
template <typename Interface>
void AllowImpersonation(const ComPtr<Interface>& object) {
  CoSetProxyBlanket(object.Get(), RPC_C_AUTHN_DEFAULT, RPC_C_AUTHZ_DEFAULT, COLE_DEFAULT_PRINCIPAL,
                    RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

/// A text that COM has allocated.
class ComText {
 public:
  ComText() = default;
  ~ComText() { CoTaskMemFree(_text); }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;

  LPWSTR* Out() { return &_text; }
  std::wstring Text() const { return _text == nullptr ? L"" : _text; }

 private:
  LPWSTR _text = nullptr;
};

}  // namespace refhost
