#include "reference_host/files/PathBelow.h"

#include <windows.h>

namespace refhost {

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  const auto length = static_cast<int>(folder.size());
  return length != 0 && path.size() > folder.size() && path[folder.size()] == L'\\' &&
         CompareStringOrdinal(path.c_str(), length, folder.c_str(), length, TRUE) == CSTR_EQUAL;
}

}  // namespace refhost
