#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "host/common/DownloadAgent.h"

/// A host suite that costs next to nothing, for timing what the agent adds: it answers at once,
/// keeps no record and writes no log. Its device is not registered, so that the start-up asks
/// nothing. To be set before the agent is used.
struct QuietHost {
  std::string reply;           ///< body of the answer to every request
  unsigned long status = 200;  ///< status of these answers
  /// Called where files are to be downloaded; the download fails behind it.
  std::function<void()> onDownload;
  DownloadAgent::ProgressCallback onProgress;  ///< what the agent handed in
  std::atomic<int> waits = 0;                  ///< waits before a retry that have been asked for
};

QuietHost& Quiet();
