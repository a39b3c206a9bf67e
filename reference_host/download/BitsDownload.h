#pragma once

#include <windows.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "reference_host/download/BitsJob.h"
#include "reference_host/download/BitsProbe.h"
#include "reference_host/download/DownloadAgentCallbacks.h"
#include "reference_host/download/DownloadAgentFiles.h"

namespace refhost {

struct DownloadOrder {
  std::wstring name;
  DownloadAgent::FileMap files;
  std::wstring headers;
  BG_JOB_PRIORITY priority;
  HANDLE cancelHandle;  ///< may be null
  HANDLE stopEvent;     ///< the service's own end
};

/// One download from its order to its end: the jobs that it takes, the watch over them, and what is
/// told to the job's owner.
class BitsDownload {
 public:
  BitsDownload(DownloadOrder order, const DownloadCallbacks& callbacks);

  /// Downloads; blocks, and calls the callbacks on the calling thread.
  /// @return true when every file is in its place, whole.
  bool Run();

  /// Takes new addresses, file name to URL, while the error callback runs. Any thread.
  /// @return true when the download goes on with them.
  bool Renew(const DownloadAgent::FileMap& addresses);

  /// @return the first job's identifier, nothing when no job could be made. After `Run`.
  const std::optional<GUID>& Id() const { return _id; }

 private:
  enum class End { Done, Failed, Stopped };

  bool MakeFirstJob();
  bool RunJobs();
  HRESULT MakeJob();
  bool Transfer();
  End Attempt(BitsFailure& failure);
  End AskServer(BitsFailure& failure);
  End SetGoing(BitsFailure& failure);
  End WatchJob(BitsFailure& failure);
  End TakeOver(BitsFailure& failure);
  DWORD PollTime(std::chrono::steady_clock::time_point begin) const;
  bool FindJobsFailure(BG_JOB_STATE state, BitsFailure& failure) const;
  bool FindOwnFailure(BitsFailure& failure);
  bool Recover(const BitsFailure& failure);
  bool AskOwner(const DownloadFile& file, const BitsFailure& failure);
  bool Wait(DWORD milliseconds);
  bool IsStopRequested(DWORD waitMs) const;
  bool ReportProgress();

  const DownloadOrder _order;
  const DownloadCallbacks& _callbacks;
  DownloadFileSet _files;
  std::optional<GUID> _id;
  BitsJob::Manager _manager;
  std::unique_ptr<BitsJob> _job;
  std::unique_ptr<BitsProbe> _probe;
  std::uint64_t _bytesSeen = 0;
  std::chrono::steady_clock::time_point _lastBytes;
  std::chrono::steady_clock::time_point _lastReport;
  std::mutex _renewalMutex;
  bool _renewalOpen = false;
  bool _renewed = false;
};

}  // namespace refhost
