#include <json/value.h>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "catalogue/FileKind.h"
#include "catalogue/JsonText.h"
#include "host/common/DateTime.h"

namespace {

constexpr double ReportIntervalSeconds = 60.0;

bool IsSameModule(const SoftwareModule& a, const SoftwareModule& b) {
  return a.l1FruPn == b.l1FruPn && a.moduleFruPn == b.moduleFruPn;
}

/// @return 0, `refused`, the request's own code, or 39. @throws Json::Exception for JSON of the
/// wrong shape.
DWORD ReadReportReply(const VRXResponse& response, unsigned long refused) {
  if (response.GetReturnCode() != ResultCode::Success) {
    return static_cast<DWORD>(response.GetReturnCode());
  }
  Json::Value root;
  if (!ParseJson(response.GetResponse(), root)) return ResultCode::BadDocument;
  const bool accepted = HasSuccessCode(Member(root, "result"));
  return static_cast<DWORD>(accepted ? ResultCode::Success : refused);
}

/// Runs a report whose failure must not stop an installation.
template <class Report>
void SendIgnoringFailure(const Report& report) {
  try {
    report();
  } catch (...) {
    // The report's own operation tells its caller; a pipeline under way carries on.
  }
}

}  // namespace

DWORD TolmarAgent::ReportDownloadProgress(std::wstring swFru, std::wstring moduleFru, int action,
                                          std::wstring message, std::wstring filename,
                                          std::wstring fileUrl, int progress,
                                          std::wstring custDeviceDate) {
  logger.d(L"ReportDownloadProgress: swFru=%s, moduleFru=%s, action=%d, filename=%s, progress=%d",
           swFru.c_str(), moduleFru.c_str(), action, filename.c_str(), progress);
  return ReadReportReply(RequestDownloadProgress(swFru, moduleFru, action, message, filename,
                                                 fileUrl, progress, custDeviceDate),
                         ResultCode::DownloadProgressRefused);
}

DWORD TolmarAgent::ReportInstallProgress(std::wstring swFru, std::wstring moduleFru, int action,
                                         std::wstring message, std::wstring custDeviceDate) {
  logger.d(L"ReportInstallProgress: swFru=%s, moduleFru=%s, action=%d", swFru.c_str(),
           moduleFru.c_str(), action);
  return ReadReportReply(RequestInstallProgress(swFru, moduleFru, action, message, custDeviceDate),
                         ResultCode::InstallProgressRefused);
}

bool TolmarAgent::DoesItNeedToReportProgressNow() {
  // Read and written without a lock: two racing callers may both report, which does no harm.
  const std::int64_t last = _lastReportTime.load(std::memory_order_relaxed);
  const std::int64_t now = DateTimeUtility::GetCurrentDatetime();
  if (last > 0 && DateTimeUtility::CompareDateTime(now, last) < ReportIntervalSeconds) {
    return false;
  }
  _lastReportTime.store(now, std::memory_order_relaxed);
  return true;
}

void TolmarAgent::ReportDownloadProgressInternal(SoftwareModule& module, DownloadStatus status,
                                                 int progress, std::wstring message) {
  const SoftwarePackage package = GetCurrentInstallingSoftware();
  if (package.modules.empty() || !DoesItNeedToReportProgressNow()) return;
  for (const SoftwareModule& candidate : package.modules) {
    if (!IsSameModule(candidate, module)) continue;
    for (const ModuleFile& file : candidate.files) {
      if (IsScript(file.name)) continue;
      SendIgnoringFailure([&] {
        ReportDownloadProgress(candidate.l1FruPn, candidate.moduleFruPn, status, message, file.name,
                               file.downloadUrl, progress, ZLT::System::GetTime());
      });
    }
  }
}

void TolmarAgent::ReportInstallProgressInternal(SoftwareModule& module, InstallStatus status,
                                                int /*progress*/, std::wstring message) {
  const SoftwarePackage package = GetCurrentInstallingSoftware();
  for (const SoftwareModule& candidate : package.modules) {
    if (!IsSameModule(candidate, module)) continue;
    SendIgnoringFailure([&] {
      ReportInstallProgress(candidate.l1FruPn, candidate.moduleFruPn, status, message,
                            ZLT::System::GetTime());
    });
  }
}
