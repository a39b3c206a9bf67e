#include "reference_host/files/ProgramData.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <knownfolders.h>
#include <shlobj.h>

namespace refhost {

/// Asks the system, not the environment, which the one who starts the host may set.
std::wstring ProgramDataFolder() {
  wchar_t* found = nullptr;
  std::wstring base = L"C:\\ProgramData";
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &found))) base = found;
  CoTaskMemFree(found);
  return base + L"\\Tolmar";
}

}  // namespace refhost
