#include "reference_host/Startup.h"

#include "host/common/Log.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/FolderCreation.h"

namespace refhost {

namespace {

/// Takes up the configuration that has been read.
bool TakeUp(std::wstring& error) {
  const Configuration* configuration = GetConfiguration();
  if (configuration == nullptr) {
    error = ConfigurationError();
    return false;
  }
  const std::wstring origin = ConfigurationOrigin();
  // Where no log can be kept, the host is the only one who can still say why.
  const std::wstring refusal = CreateFolder(configuration->logFolder, true);
  if (!refusal.empty()) {
    error = origin + L": the log folder " + configuration->logFolder + L" is refused: " + refusal;
    return false;
  }
  ZLT::g_log.d(L"Host suite started, configured by %s", origin.c_str());
  return true;
}

}  // namespace

bool Start(std::wstring& error) { return TakeUp(error); }

bool StartFromFile(const std::wstring& file, std::wstring& error) {
  return UseConfigurationFile(file, error) && TakeUp(error);
}

bool StartFromText(const std::string& json, std::wstring& error) {
  return UseConfigurationText(json, error) && TakeUp(error);
}

}  // namespace refhost
