#pragma once

#include <cstdint>

#include "reference_host/base/AwakeClock.h"
#include "reference_host/download/BitsJob.h"
#include "reference_host/download/DownloadAgentFiles.h"
#include "reference_host/download/StallWatch.h"

namespace refhost {

/// Looks at a job that goes, from its start to its end.
class JobWatch {
 public:
  /// Wrong: the job goes on, but is to be ended.
  enum class Sight { Goes, Arrived, Failed, Wrong };

  JobWatch(const BitsJob& job, DownloadFileSet& files);

  /// Looks at the job and takes over how far its files are.
  /// @param waited in, the time that nothing but the job was waited for since the last look.
  /// @param failure out, when it has failed or goes wrong.
  Sight Look(AwakeClock::Time waited, BitsFailure& failure);

  /// @return milliseconds until the next look is worth its while.
  DWORD Pause() const;

 private:
  Sight FindWrong(AwakeClock::Time waited, BG_JOB_STATE state, BitsFailure& failure);

  const BitsJob& _job;
  DownloadFileSet& _files;
  const AwakeClock::Time _begin = AwakeClock::Now();
  StallWatch _stall;
};

}  // namespace refhost
