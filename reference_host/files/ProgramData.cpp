#include "reference_host/files/ProgramData.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <knownfolders.h>
#include <shlobj.h>

namespace refhost {

const std::wstring& ProgramDataFolder() {
  static const std::wstring folder = [] {
    wchar_t* found = nullptr;
    std::wstring path = L"C:\\ProgramData";
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &found))) path = found;
    CoTaskMemFree(found);
    return path;
  }();
  return folder;
}

std::wstring SuiteFolder() { return ProgramDataFolder() + L"\\Tolmar"; }

}  // namespace refhost
