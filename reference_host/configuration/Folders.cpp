#include "reference_host/configuration/Folders.h"

#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/ProgramData.h"

namespace refhost {

std::wstring DefaultDownloadFolder() { return ProgramDataFolder() + L"\\Tolmar\\Downloads"; }

std::wstring DefaultLogFolder() { return ProgramDataFolder() + L"\\Tolmar\\Logs"; }

std::wstring DownloadFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->downloadFolder : DefaultDownloadFolder();
}

std::wstring LogFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->logFolder : DefaultLogFolder();
}

}  // namespace refhost
