#include "reference_host/configuration/Folders.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <knownfolders.h>
#include <shlobj.h>

#include "reference_host/configuration/ConfigurationFile.h"

namespace refhost {

namespace {

/// Asks the system, not the environment, which the one who starts the host may set.
std::wstring BelowProgramData(const wchar_t* name) {
  wchar_t* found = nullptr;
  std::wstring base = L"C:\\ProgramData";
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &found))) base = found;
  CoTaskMemFree(found);
  return base + L"\\Tolmar\\" + name;
}

}  // namespace

std::wstring DefaultDownloadFolder() { return BelowProgramData(L"Downloads"); }

std::wstring DefaultLogFolder() { return BelowProgramData(L"Logs"); }

std::wstring DownloadFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->downloadFolder : DefaultDownloadFolder();
}

std::wstring LogFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->logFolder : DefaultLogFolder();
}

}  // namespace refhost
