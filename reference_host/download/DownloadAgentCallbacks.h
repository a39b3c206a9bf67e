#pragma once

#include "host/common/DownloadAgent.h"

namespace refhost {

/// The callbacks of a job's owner. What they throw is logged here and goes no further.
class DownloadCallbacks {
 public:
  DownloadCallbacks(DownloadAgent::CompleteCallback onComplete,
                    DownloadAgent::ProgressCallback onProgress,
                    DownloadAgent::ErrorCallback onError);

  void Complete(const std::wstring& jobName, const GUID& id, bool success,
                DownloadAgent::FileMap files) const;

  /// @return false when the owner wants the job cancelled.
  bool Progress(const std::wstring& jobName, DownloadProgressDetail total,
                std::vector<DownloadProgressDetail> each) const;

  /// @return true when the owner says that it has resumed the job.
  bool Error(DownloadAgent::FileMap files, ErrorDetails details) const;

 private:
  DownloadAgent::CompleteCallback _onComplete;
  DownloadAgent::ProgressCallback _onProgress;
  DownloadAgent::ErrorCallback _onError;
};

}  // namespace refhost
