#include "reference_host/base/ModulePin.h"

#include <cstddef>
#include <map>
#include <mutex>

namespace refhost {

namespace {

constexpr ULONG Unloaded = 2;

/// What the loader tells of a DLL, each as wide as a pointer: flags, two names, where it lies,
/// size.
using LoaderNews = void* const*;
constexpr std::size_t Place = 3;
using LoaderObserver = void(CALLBACK*)(ULONG reason, LoaderNews news, void* context);
using RegisterObserver = LONG(NTAPI*)(ULONG flags, LoaderObserver, void* context, void** cookie);

/// The loader calls under its own lock: this one is held for a look only.
class UnloadCounts {
 public:
  /// Never destroyed, nor is its observer taken back: this DLL stays.
  static UnloadCounts& Instance() {
    static auto* const instance = new UnloadCounts;
    return *instance;
  }

  unsigned int Of(void* module) {
    const std::scoped_lock lock(_mutex);
    return _counts[module];
  }

 private:
  UnloadCounts() {
    PinModule();
    const auto address =
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification");
    const auto observe = reinterpret_cast<RegisterObserver>(reinterpret_cast<void*>(address));
    void* cookie = nullptr;
    if (observe != nullptr) observe(0, &Note, this, &cookie);
  }

  static void CALLBACK Note(ULONG reason, LoaderNews news, void* context) {
    if (reason != Unloaded) return;
    auto& self = *static_cast<UnloadCounts*>(context);
    const std::scoped_lock lock(self._mutex);
    const auto found = self._counts.find(news[Place]);
    if (found != self._counts.end()) ++found->second;
  }

  std::mutex _mutex;
  std::map<void*, unsigned int> _counts;
};

}  // namespace

void PinModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(&PinModule), &module);
}

ModuleHold::ModuleHold(const void* address) {
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const wchar_t*>(address),
                     &_module);
}

ModuleHold::~ModuleHold() {
  if (_module != nullptr) FreeLibrary(_module);
}

unsigned int UnloadsOf(HMODULE module) { return UnloadCounts::Instance().Of(module); }

}  // namespace refhost
