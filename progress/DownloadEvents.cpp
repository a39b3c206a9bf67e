#include <json/value.h>
#include <windows.h>

#include "agent/AgentLog.h"
#include "agent/ResultCodes.h"
#include "agent/StateGuard.h"
#include "agent/StatusWords.h"
#include "agent/TolmarAgent.h"
#include "host/common/DownloadAgent.h"
#include "progress/DownloadJob.h"
#include "progress/Percentage.h"

void TolmarAgent::OnDownloadComplete(std::wstring jobName, GUID /*jobId*/, bool success) {
  if (jobName != DownloadJobName || _ignoreDownloadEvents) return;
  logger.d(L"TolmarAgent: OnDownloadComplete: (%s) ", success ? L"Success" : L"Failed");
  if (success) {
    SetCurrentInstallingSoftwareStatus(StatusWord::Downloaded);
    _currentProgress = 100;
  }
  SoftwareModule module = GetCurrentInstallingModule();
  ReportDownloadProgressInternal(module, success ? DownloadCompleted : DownloadFailed,
                                 _currentProgress, L"");
}

bool TolmarAgent::OnFileDownloadProgress(std::wstring jobName, DownloadProgressDetail& total,
                                         std::vector<DownloadProgressDetail>& /*perFile*/) {
  if (jobName != DownloadJobName || _ignoreDownloadEvents) return true;
  logger.d(L"TolmarAgent: OnFileDownloadProgress: total(B)=%d Xfered(B)=%d Files(T)=%d FilesX=%d",
           static_cast<int>(total.bytesTotal), static_cast<int>(total.bytesTransferred),
           static_cast<int>(total.filesTotal), static_cast<int>(total.filesTransferred));
  const int percentage = PercentageOf(total.bytesTransferred, total.bytesTotal);
  _currentProgress = percentage;
  SoftwareModule module = GetCurrentInstallingModule();
  ReportDownloadProgressInternal(module, Downloading, percentage, L"");
  if (!IsStopRequested()) return true;
  // Meant: the report above has used up the minute, so the pacing swallows this one.
  module = GetCurrentInstallingModule();
  ReportDownloadProgressInternal(module, DownloadStopped, percentage, L"");
  logger.d(
      L"TolmarAgent: OnFileDownloadProgress: Stop event or cancel event is sent by ZLT service. "
      L"Return false");
  return false;
}

bool TolmarAgent::IsStopRequested() {
  // A null caller handle makes the wait fail, which counts as a request to stop.
  const HANDLE handles[] = {_hStopEvent, _callerHandle.load()};
  return WaitForMultipleObjects(2, handles, FALSE, 0) != WAIT_TIMEOUT;
}
