#pragma once

#include <windows.h>

#include <memory>
#include <optional>

#include "reference_host/download/BitsJob.h"
#include "reference_host/download/BitsProbe.h"
#include "reference_host/download/DownloadAgentFiles.h"
#include "reference_host/download/DownloadOrder.h"
#include "reference_host/download/DownloadOwner.h"
#include "reference_host/download/RetryPatience.h"

namespace refhost {

/// One download from its order to its end: the jobs that it takes, and how it gets over failures.
class BitsDownload {
 public:
  BitsDownload(DownloadOrder order, const DownloadCallbacks& callbacks);

  /// Downloads; blocks, and calls the callbacks on the calling thread.
  /// @return true when every file is in its place, whole.
  bool Run();

  /// Takes new addresses, file name to URL, while the error callback runs. Any thread.
  /// @return true when the download goes on with them.
  bool Renew(const DownloadAgent::FileMap& addresses) { return _owner.Renew(addresses); }

  /// @return the first job's identifier, nothing when no job could be made. After `Run`.
  const std::optional<GUID>& Id() const { return _id; }

 private:
  enum class End { Done, Failed, Stopped };

  void LetGo();
  std::optional<BitsFailure> Prepare();
  bool GiveUp(BitsFailure failure);
  bool RunJobs();
  BitsOrder JobOrder() const;
  HRESULT MakeJob();
  End Transfer();
  End Attempt(BitsFailure& failure);
  End AskServer(BitsFailure& failure);
  End SetGoing(BitsFailure& failure);
  bool GoOn();
  End WatchJob(BitsFailure& failure);
  End TakeOver(BitsFailure& failure);
  HRESULT CompleteJob(const FilePlace::Wait& wait);
  End Recover(const BitsFailure& failure);
  FilePlace::Wait StoppableWait() const;

  const DownloadOrder _order;
  DownloadFileSet _files;
  DownloadOwner _owner;
  RetryPatience _patience;
  std::optional<GUID> _id;
  BitsJob::Manager _manager;
  std::unique_ptr<BitsJob> _job;
  bool _takenUp = false;      ///< the job is an earlier download's, with its headers
  bool _goesAsItWas = false;  ///< and has to go on with its addresses
  std::unique_ptr<BitsProbe> _probe;
};

}  // namespace refhost
