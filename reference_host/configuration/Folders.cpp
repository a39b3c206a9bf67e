#include "reference_host/configuration/Folders.h"

#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/ProgramData.h"

namespace refhost {

std::wstring DefaultDownloadFolder() { return SuiteFolder() + L"\\Downloads"; }

std::wstring DefaultLogFolder() { return SuiteFolder() + L"\\Logs"; }

std::wstring DownloadFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->downloadFolder : DefaultDownloadFolder();
}

std::wstring LogFolder() {
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? configuration->logFolder : DefaultLogFolder();
}

std::wstring WaitingFolder() { return DownloadFolder() + L".waiting"; }

}  // namespace refhost
