#include <windows.h>

#include <exception>

#include "agent/AgentLog.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "host/common/PackageExtractor.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "install/ScriptCommand.h"

namespace {

/// @return the folder that the package was unpacked into, empty when it was refused.
std::wstring Unpack(const std::wstring& cabPath) {
  std::string error;
  try {
    return ZLT::PackageExtractor::ExtractCab(cabPath);
  } catch (const std::exception& exception) {
    error = exception.what();
  } catch (...) {
    error = "unknown error";
  }
  logger.e(L"InstallModule : Exception while extracting the package with error - %s",
           ZLT::String::UTF8ToUTF16(error).c_str());
  return {};
}

void WaitForInstaller(HANDLE process, HANDLE cancelHandle) {
  const HANDLE handles[] = {process, cancelHandle};
  if (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0) {
    logger.d(L"InstallModule: Installer process has finished");
  } else {
    logger.d(L"InstallModule: Installation cancelled by CancelEvent");
  }
}

}  // namespace

ZLT::ErrorCode TolmarAgent::InstallModule(std::wstring cabPath, std::wstring checkScriptPath,
                                          HANDLE cancelHandle) {
  logger.d(L"InstallModule: Entry");
  SetCurrentInstallingSoftwareStatus(StatusWord::Installing);
  _currentProgress = 50;
  ZLT::ErrorCode result = ZLT::InstallFailed;
  const std::wstring folder = Unpack(cabPath);
  if (folder.empty()) {
    AbandonInstallation();
    logger.d(
        L"InstallModule: Package destination is empty. This happens when package have failed "
        L"Certificate Validation.");
  } else if (RunInstaller(folder, cancelHandle)) {
    result = CheckInstallation(checkScriptPath, cancelHandle);
  } else {
    AbandonInstallation();
  }
  logger.d(L"InstallModule: Exit %d", static_cast<int>(result));
  return result;
}

bool TolmarAgent::RunInstaller(const std::wstring& folder, HANDLE cancelHandle) {
  const std::wstring commandLine = ScriptCommand::Install(folder + L"\\install.ps1");
  logger.d(L"InstallModule: Reporting install progress");
  ReportInstall(Installing, 0);
  logger.d(L"InstallModule: Launching installer process now");
  HANDLE process = nullptr;
  if (ZLT::ProcessWrap::CreateProcessInUserSession(commandLine, folder, process, true) == 0) {
    return false;
  }
  // Meant: the installer's process handle stays open.
  WaitForInstaller(process, cancelHandle);
  _currentProgress = 95;
  return true;
}

ZLT::ErrorCode TolmarAgent::CheckInstallation(const std::wstring& checkScriptPath,
                                              HANDLE cancelHandle) {
  logger.d(L"InstallModule: Checking installation state now");
  const bool installed = ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(
                             ScriptCommand::CheckAfterInstall(checkScriptPath),
                             ZLT::utility::GetZltKivDownloadPath(), true, cancelHandle) != 0;
  logger.d(installed ? L"InstallModule: Status is Installed"
                     : L"InstallModule: status is Not installed");
  SetCurrentInstallingSoftwareStatus(StatusWord::ForInstalled(installed));
  ReportInstall(installed ? Installed : NotInstalled, installed ? 100 : 0);
  _currentProgress = 100;
  return installed ? ZLT::Success : ZLT::InstallNotConfirmed;
}

void TolmarAgent::AbandonInstallation() {
  _currentProgress = 100;
  SetCurrentInstallingSoftwareStatus(StatusWord::NotInstalled);
  ReportInstall(InstallFailed, 0);
}

void TolmarAgent::ReportInstall(InstallStatus status, int progress) {
  SoftwareModule module = GetCurrentInstallingModule();
  ReportInstallProgressInternal(module, status, progress, L"");
}
