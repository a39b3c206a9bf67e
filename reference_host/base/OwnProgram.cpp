#include "reference_host/base/OwnProgram.h"

#include <windows.h>

namespace refhost {

std::wstring OwnProgram() {
  std::wstring path(32768, L'\0');  // longer than any
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace refhost
