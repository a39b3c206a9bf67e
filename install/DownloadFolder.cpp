#include "install/DownloadFolder.h"

#include <windows.h>

#include "agent/AgentLog.h"
#include "host/common/FileSystem.h"
#include "host/common/Utility.h"

void DownloadFolder::Create() {
  FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath(), true);
}

std::wstring DownloadFolder::LocalPath(const std::wstring& name) {
  return ZLT::utility::GetZltKivDownloadPath() + L"\\" + name;
}

void DownloadFolder::Delete() {
  logger.d(L"DownloadNInstallSoftwarePackage: Trying to delete KIV folder now");
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  if (FileSystem::deleteDirectoryOrFile(folder, true)) return;
  logger.e(L"Failed to delete KIV folder. Retry");
  Sleep(1000);  // A scanner or the installer's last process lets go of its files.
  if (FileSystem::deleteDirectoryOrFile(folder, true)) return;
  logger.e(L"Failed to delete KIV folder in second attempt");
}
