#include <windows.h>

#include <functional>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "catalogue/FileKind.h"
#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "install/DownloadFolder.h"
#include "progress/DownloadJob.h"

namespace {

constexpr DWORD PauseBeforeReinstallMs = 5000;
constexpr long HighPriority = 1;

/// What a module's files come to: what is to be fetched, and which files are installed.
struct ModulePlan {
  std::map<std::wstring, std::wstring> missing;  ///< download URL to local path
  std::wstring cabPath;
  std::wstring scriptPath;
};

ModulePlan PlanModule(const SoftwareModule& module) {
  ModulePlan plan;
  for (const ModuleFile& file : module.files) {
    const std::wstring path = DownloadFolder::LocalPath(file.name);
    if (!FileSystem::fileExists(path)) plan.missing[file.downloadUrl] = path;
    if (IsCabinet(file.name)) plan.cabPath = path;
    if (IsScript(file.name)) plan.scriptPath = path;
  }
  return plan;
}

}  // namespace

unsigned long TolmarAgent::DownloadNInstallSoftwarePackage(SoftwarePackage& package,
                                                           HANDLE cancelHandle) {
  logger.d(L"DownloadNInstallSoftwarePackage: Entry");
  package.status = StatusWord::Downloading;
  SetCurrentInstallingSoftwareStatus(StatusWord::Downloading);
  EnsureDownloadAgent();
  DownloadFolder::Create();
  // Meant: a package without modules ends as installed, with the code that says that nothing was
  // done; and when a later module's download fails, the code stays that of the module before it.
  unsigned long result = ResultCode::Nothing;
  bool success = true;
  for (SoftwareModule& module : package.modules) {
    success = DownloadNInstallModule(module, cancelHandle, result);
    if (!success) break;
  }
  package.status = StatusWord::ForInstalled(success);
  SetCurrentInstallingSoftwareStatus(package.status.c_str());
  DownloadFolder::Delete();
  logger.d(L"DownloadNInstallSoftwarePackage: Exit. %d", static_cast<int>(result));
  return result;
}

bool TolmarAgent::DownloadNInstallModule(SoftwareModule& module, HANDLE cancelHandle,
                                         unsigned long& result) {
  SetCurrentInstallingModule(module);
  const ModulePlan plan = PlanModule(module);
  if (!DownloadMissingFiles(module, plan.missing, cancelHandle)) return false;
  SetCurrentInstallingSoftwareStatus(StatusWord::Downloaded);
  _currentProgress = 100;
  if (plan.missing.empty()) WaitForSingleObject(cancelHandle, PauseBeforeReinstallMs);
  logger.d(L"DownloadNInstallSoftwarePackage: After download. Calling InstallModule now");
  result = InstallModule(plan.cabPath, plan.scriptPath, cancelHandle);
  return result == ResultCode::Success;
}

bool TolmarAgent::DownloadMissingFiles(SoftwareModule& module, const FileMap& missing,
                                       HANDLE cancelHandle) {
  logger.d(L"DownloadNInstallSoftwarePackage: Report Download progress");
  ReportDownloadProgressInternal(module, Downloading, 0, L"");
  logger.d(L"DownloadNInstallSoftwarePackage: After reporting download progress");
  const std::wstring headers = HeaderBlock(GetJwtFromServer());
  _lastReportTime = 0;  // The first progress report of this download goes out at once.
  if (missing.empty()) return true;
  GUID jobId{};
  if (m_pDownloadAgent.load()->DownloadFiles(DownloadJobName, false, missing, headers, jobId,
                                             cancelHandle, HighPriority)) {
    return true;
  }
  ReportDownloadProgressInternal(module, DownloadFailed, 0, L"");
  return false;
}

void TolmarAgent::EnsureDownloadAgent() {
  using namespace std::placeholders;
  if (m_pDownloadAgent != nullptr) return;
  // The service passes the job's files to the completion callback too; the binding drops them.
  m_pDownloadAgent = DownloadAgent::GetInstance(
      DownloadJobName, std::bind(&TolmarAgent::OnDownloadComplete, this, _1, _2, _3),
      std::bind(&TolmarAgent::OnFileDownloadProgress, this, _1, _2, _3),
      std::bind(&TolmarAgent::OnFileDownloadError, this, _1, _2, _3));
}
