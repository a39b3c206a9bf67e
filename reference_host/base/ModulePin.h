#pragma once

#include <windows.h>

namespace refhost {

/// Keeps this DLL loaded until the process ends. To be called before a thread is started that
/// nobody waits for: it runs the DLL's code, and waiting for it while the DLL is unloaded would
/// never end, since the loader's lock is held then.
void PinModule();

/// Keeps the DLL loaded that handed a callback over, as long as the object lives: the callback's
/// code and what it holds lie there. Takes the loader's lock, so no lock is to be held around it.
class ModuleHold {
 public:
  /// @param address in, anything in that DLL.
  explicit ModuleHold(const void* address);
  ~ModuleHold();
  ModuleHold(const ModuleHold&) = delete;
  ModuleHold& operator=(const ModuleHold&) = delete;

  HMODULE Module() const { return _module; }

 private:
  HMODULE _module = nullptr;
};

/// @param callback in, a std::function. @return an address in the DLL that made it: that of the
/// description of the type that only this DLL knows.
template <typename Function>
const void* AddressInModuleOf(const Function& callback) {
  return &callback.target_type();
}

/// @return how often a DLL at `module` was unloaded since this was first asked for it. A DLL that
/// is loaded anew may come to lie at the same place. Any thread.
unsigned int UnloadsOf(HMODULE module);

}  // namespace refhost
