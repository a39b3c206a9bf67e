#pragma once

#include <mutex>
#include <string>

#include "reference_host/base/AwakeClock.h"
#include "reference_host/download/DownloadAgentCallbacks.h"
#include "reference_host/download/DownloadAgentFiles.h"

namespace refhost {

/// What one download tells its owner and asks of it. Calls the callbacks on the calling thread.
class DownloadOwner {
 public:
  DownloadOwner(std::wstring jobName, const DownloadCallbacks& callbacks, DownloadFileSet& files);

  /// Reports how far the files are. @return false when the owner wants the job cancelled.
  bool Report();

  /// The same, unless the last report, or the beginning, is too short a time ago.
  bool ReportWhenDue();

  /// Tells of a failure. @return true when the owner has given new addresses meanwhile.
  bool Ask(const DownloadFile& file, const BitsFailure& failure);

  /// Takes new addresses while `Ask` waits for its answer. Any thread.
  /// @return true when the download goes on with them.
  bool Renew(const DownloadAgent::FileMap& addresses);

  void TellEnd(const GUID& id, bool success) const;

 private:
  const std::wstring _jobName;
  const DownloadCallbacks& _callbacks;
  DownloadFileSet& _files;
  AwakeClock::Time _lastReport = AwakeClock::Now();
  std::mutex _renewalMutex;
  bool _renewalOpen = false;
  bool _renewed = false;
};

}  // namespace refhost
