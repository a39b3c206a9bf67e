#include "reference_host/download/JobWatch.h"

#include "reference_host/configuration/ConfigurationFile.h"

namespace refhost {

namespace {

/// How often BITS is asked how far it is. It is another process and has to stop for its answers, so
/// that a long transfer is asked after less often, but for its last part.
constexpr DWORD PauseMs = 50;
constexpr DWORD LongPauseMs = 250;
constexpr auto LongTransfer = std::chrono::seconds(1);
constexpr auto LastPart = 20;  ///< a twentieth

/// A job that connects waits for nothing but its server; one in the queue waits for others.
bool Runs(BG_JOB_STATE state) {
  return state == BG_JOB_STATE_CONNECTING || state == BG_JOB_STATE_TRANSFERRING;
}

}  // namespace

JobWatch::JobWatch(const BitsJob& job, DownloadFileSet& files)
    : _job(job),
      _files(files),
      _stall(std::chrono::seconds(Settings().downloadStallSeconds),
             std::chrono::seconds(Settings().downloadPatienceSeconds)) {}

JobWatch::Sight JobWatch::Look(AwakeClock::Time waited, BitsFailure& failure) {
  BG_JOB_STATE state;
  HRESULT result = _job.State(state);
  std::vector<BitsProgress> progress;
  if (SUCCEEDED(result)) result = _job.Progress(progress);
  if (FAILED(result) || state == BG_JOB_STATE_CANCELLED || state == BG_JOB_STATE_ACKNOWLEDGED) {
    failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER,
                          FAILED(result) ? result : EndedByOthers);
    return Sight::Wrong;
  }
  _files.Update(progress);
  if (state == BG_JOB_STATE_ERROR || state == BG_JOB_STATE_TRANSIENT_ERROR) {
    failure = _job.Failure();
    return Sight::Failed;
  }
  return FindWrong(waited, state, failure);
}

/// What has arrived in the end has not stalled, however long it took.
JobWatch::Sight JobWatch::FindWrong(AwakeClock::Time waited, BG_JOB_STATE state,
                                    BitsFailure& failure) {
  if (const std::optional<BitsFailure> oversized = _files.FindOversized()) {
    failure = *oversized;
    return Sight::Wrong;
  }
  if (state == BG_JOB_STATE_TRANSFERRED) return Sight::Arrived;
  switch (_stall.Look(waited, Runs(state), _files.Total().bytesTransferred)) {
    case StallWatch::Verdict::GoesOn:
      return Sight::Goes;
    case StallWatch::Verdict::Silent:
      failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_TRANSPORT, NoBytesInTime);
      break;
    case StallWatch::Verdict::HeldBack:
      failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, NotRunInTime);
      break;
  }
  return Sight::Wrong;
}

DWORD JobWatch::Pause() const {
  const DownloadProgressDetail total = _files.Total();
  const bool isEnding = total.bytesTotal - total.bytesTransferred <= total.bytesTotal / LastPart;
  return isEnding || AwakeClock::Now() - _begin < LongTransfer ? PauseMs : LongPauseMs;
}

}  // namespace refhost
