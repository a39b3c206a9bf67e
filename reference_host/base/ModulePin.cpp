#include "reference_host/base/ModulePin.h"

#include <windows.h>

namespace refhost {

void PinModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(&PinModule), &module);
}

}  // namespace refhost
