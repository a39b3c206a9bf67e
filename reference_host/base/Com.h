#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <objbase.h>
#include <wrl/client.h>

namespace refhost {

template <typename Interface>
using ComPtr = Microsoft::WRL::ComPtr<Interface>;

/// COM for the current thread as long as the object lives.
class ComApartment {
 public:
  ComApartment() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
  ~ComApartment() { CoUninitialize(); }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
};

}  // namespace refhost
