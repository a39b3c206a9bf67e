#include "reference_host/download/BitsDownload.h"

#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "reference_host/base/FileInUse.h"
#include "reference_host/base/KeepAwake.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/download/BitsLeftovers.h"
#include "reference_host/download/DownloadEvents.h"
#include "reference_host/download/JobWatch.h"
#include "reference_host/files/FolderCreation.h"

namespace refhost {

namespace {

/// How soon the end of a short question is seen.
constexpr DWORD QuestionPollMs = 10;
/// An answer of another length than the file's may be the page that tells of an expired address,
/// which waiting does not mend.
constexpr int MaxOtherAnswers = 2;

/// Removes what belongs to no job any more.
void RemoveArrivals() { FileSystem::deleteDirectoryOrFile(FilePlace::ArrivalFolder(), true); }

unsigned long MillisecondsSince(AwakeClock::Time begin) {
  return static_cast<unsigned long>((AwakeClock::Now() - begin).count());
}

void LogFailure(const DownloadFile& file, const BitsFailure& failure) {
  ZLT::g_log.e(L"DownloadAgent: %s from %s, attempt %d: %s (context %d, code 0x%08X)",
               file.path.c_str(), WithoutQuery(file.url).c_str(), 1 + file.retries + file.renewals,
               failure.description.c_str(), static_cast<int>(failure.context),
               static_cast<unsigned int>(failure.code));
}

}  // namespace

BitsDownload::BitsDownload(DownloadOrder order, const DownloadCallbacks& callbacks)
    : _order(std::move(order)),
      _files(_order.files),
      _owner(_order.name, callbacks, _files),
      _patience(std::chrono::seconds(Settings().downloadPatienceSeconds),
                Settings().retryWaitScale) {}

bool BitsDownload::Run() {
  const ComApartment apartment;
  // Whichever way this ends: a job that is not cancelled while COM is up stays, with its token.
  struct Leaving {
    BitsDownload& download;
    ~Leaving() { download.LetGo(); }
  } leaving{*this};
  const std::optional<BitsFailure> failure = Prepare();
  return failure ? GiveUp(*failure) : RunJobs();
}

void BitsDownload::LetGo() {
  _job.reset();
  _manager.Reset();
}

/// Gets the first job: one that an earlier download has left, or a new one.
std::optional<BitsFailure> BitsDownload::Prepare() {
  if (std::optional<BitsFailure> failure = _files.FindBeyondBits()) return failure;
  HRESULT result = BitsJob::Connect(_manager);
  if (SUCCEEDED(result)) _job = TakeUpLeftovers(_manager, JobOrder(), result);
  _takenUp = _job != nullptr;
  if (_takenUp) {
    std::vector<BitsProgress> progress;
    result = _job->Progress(progress);
    _files.Update(progress);
    ZLT::g_log.d(L"DownloadAgent: job %s of an earlier download is taken up", _order.name.c_str());
  } else {
    RemoveArrivals();
  }
  const std::wstring refusal = CreateFolder(FilePlace::ArrivalFolder(), true);
  if (!refusal.empty()) {
    return BitsFailure{BG_ERROR_CONTEXT_LOCAL_FILE,
                       E_ACCESSDENIED,
                       FilePlace::ArrivalFolder() + L" cannot be used: " + refusal,
                       {}};
  }
  if (SUCCEEDED(result) && !_job) result = MakeJob();
  if (FAILED(result)) return FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, result);
  _id = _job->Id();
  return std::nullopt;
}

/// There is no job to begin with: the owner is told all the same.
bool BitsDownload::GiveUp(BitsFailure failure) {
  failure = Classed(std::move(failure));
  const DownloadFile& file = _files.FailingFile(failure);
  LogFailure(file, failure);
  TellFailure(file, failure, std::nullopt);
  _owner.Ask(file, failure);
  _owner.TellEnd(GUID{}, false);
  return false;
}

bool BitsDownload::RunJobs() {
  const auto begin = AwakeClock::Now();
  ZLT::g_log.d(L"DownloadAgent: job %s begins, files: %lu", _order.name.c_str(),
               static_cast<unsigned long>(_order.files.size()));
  Event("download.began").With("files", _order.files.size()).Write();
  const KeepAwake awake(L"Software is being downloaded");
  if (awake.Error() != ERROR_SUCCESS) {
    ZLT::g_log.d(L"DownloadAgent: the machine may fall asleep meanwhile, error %lu", awake.Error());
  }
  const End end = Transfer();
  const std::uint64_t bytes = _files.Total().bytesTransferred;
  const bool kept = end == End::Stopped && _job && bytes != 0 && _job->Keep();
  _job.reset();
  if (!kept) RemoveArrivals();
  const wchar_t* result = end == End::Done ? L"is done" : L"has failed or was stopped";
  ZLT::g_log.d(L"DownloadAgent: job %s %s after %lu ms, bytes: %s%s", _order.name.c_str(), result,
               MillisecondsSince(begin), std::to_wstring(bytes).c_str(),
               kept ? L", kept for the next download" : L"");
  Event("download.ended")
      .With("done", end == End::Done)
      .With("bytes", bytes)
      .With("ms", MillisecondsSince(begin))
      .With("cause", end == End::Stopped ? "download.stopped" : "")
      .Write();
  _owner.TellEnd(*_id, end == End::Done);
  return end == End::Done;
}

BitsOrder BitsDownload::JobOrder() const {
  return {_order.name, _order.headers, _order.priority, _files.Unfinished(), Settings().proxy};
}

HRESULT BitsDownload::MakeJob() {
  HRESULT result = S_OK;
  _files.BeginAnew();
  _job = BitsJob::Make(_manager, JobOrder(), result);
  return result;
}

BitsDownload::End BitsDownload::Transfer() {
  for (;;) {
    const bool takenUp = _takenUp;
    BitsFailure failure;
    End end = Attempt(failure);
    if (end == End::Done && _files.IsFinished()) return end;
    // A job that was taken up may have been for some of the files only, or for others too.
    if (end == End::Done && takenUp) continue;
    if (end == End::Done) {
      failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, MissingFile);
    }
    if (end != End::Stopped) end = Recover(Classed(failure));
    if (end == End::Failed && _order.IsStopRequested(0)) return End::Stopped;
    if (end != End::Done) return end;
  }
}

/// One try at all that is missing.
BitsDownload::End BitsDownload::Attempt(BitsFailure& failure) {
  End end = AskServer(failure);
  if (end == End::Done) end = SetGoing(failure);
  if (end == End::Done) end = WatchJob(failure);
  if (end == End::Done) end = TakeOver(failure);
  return end;
}

/// Learns what the server has for the missing files; what it refuses is not even begun.
BitsDownload::End BitsDownload::AskServer(BitsFailure& failure) {
  std::vector<std::wstring> urls;
  for (const BitsFile& file : _files.Unfinished()) urls.push_back(file.url);
  _probe = std::make_unique<BitsProbe>(std::move(urls), _order.headers);
  while (!_probe->IsDone()) {
    if (_order.IsStopRequested(QuestionPollMs) || !_owner.ReportWhenDue()) return End::Stopped;
  }
  std::optional<BitsFailure> refusal = _files.Learn(*_probe);
  if (!refusal) refusal = _files.FindOversized();
  if (!refusal) refusal = _files.FindNoRoom();
  // An earlier download's job may have put files there already.
  if (!refusal && !_takenUp) refusal = _files.ClearPlaces(StoppableWait());
  if (!refusal) return End::Done;
  failure = *refusal;
  return End::Failed;
}

/// The job goes on where the platform can do that, so that it keeps the bytes that it has; else a
/// new job fetches what is missing.
BitsDownload::End BitsDownload::SetGoing(BitsFailure& failure) {
  if (_job && GoOn()) return End::Done;
  if (_job && TakeOver(failure) != End::Done) return End::Failed;
  if (_files.IsFinished()) return End::Done;
  const HRESULT result = MakeJob();
  if (SUCCEEDED(result) && _job->Resume()) return End::Done;
  failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, FAILED(result) ? result : E_FAIL);
  return End::Failed;
}

/// @return false when the job cannot go on with what is known by now.
bool BitsDownload::GoOn() {
  const bool takenUp = std::exchange(_takenUp, false);
  BG_JOB_STATE state;
  if (FAILED(_job->State(state))) return false;
  if (state == BG_JOB_STATE_TRANSFERRED) return true;
  // BITS gives a job the address that a server has redirected it to: it must not go on there.
  const std::vector<BitsFile> readdressed = _files.Readdressed(_job->Files());
  if ((!takenUp && readdressed.empty()) || _job->Redirect(JobOrder(), readdressed)) {
    return _job->Resume();
  }
  // Its addresses have been good enough so far; should one of them not be, a new job follows.
  _goesAsItWas = takenUp && SUCCEEDED(_job->State(state)) &&
                 (state == BG_JOB_STATE_QUEUED || state == BG_JOB_STATE_CONNECTING ||
                  state == BG_JOB_STATE_TRANSFERRING);
  return _goesAsItWas;
}

/// What callbacks take is no time in which bytes are waited for.
BitsDownload::End BitsDownload::WatchJob(BitsFailure& failure) {
  if (!_job) return End::Done;
  JobWatch watch(*_job, _files);
  _files.BeginTransfer();
  for (;;) {
    const auto begin = AwakeClock::Now();
    if (_order.IsStopRequested(watch.Pause())) return End::Stopped;
    switch (watch.Look(AwakeClock::Now() - begin, failure)) {
      case JobWatch::Sight::Goes:
        if (!_owner.ReportWhenDue()) return End::Stopped;
        break;
      case JobWatch::Sight::Arrived:
        _files.SettleLengths();
        return _owner.Report() ? End::Done : End::Stopped;
      case JobWatch::Sight::Failed:
        // Only a job that was taken up has such a file; what it has of the others is taken over.
        if (_files.IsNeedless(failure.localPath)) return End::Done;
        if (failure.context == BG_ERROR_CONTEXT_UNKNOWN) {
          failure = _files.TransportFailure(*_probe).value_or(failure);
        }
        return End::Failed;
      case JobWatch::Sight::Wrong:
        _job.reset();
        return End::Failed;
    }
  }
}

/// Ends the job and puts what it has brought into place.
BitsDownload::End BitsDownload::TakeOver(BitsFailure& failure) {
  if (!_job) return End::Done;
  const FilePlace::Wait wait = StoppableWait();
  const HRESULT result = CompleteJob(wait);
  // A stop does not lose the bytes that a job still has.
  if (FAILED(result) && _order.IsStopRequested(0)) return End::Stopped;
  _job.reset();
  std::optional<BitsFailure> misplaced;
  if (FAILED(result)) misplaced = FailureWith(BG_ERROR_CONTEXT_LOCAL_FILE, result);
  if (!misplaced) misplaced = _files.Place(wait);
  if (!misplaced) return End::Done;
  failure = *misplaced;
  return End::Failed;
}

/// A job that cannot give its files their names stays as it is.
HRESULT BitsDownload::CompleteJob(const FilePlace::Wait& wait) {
  return Patiently(wait, [this] { return _job->Complete(); });
}

/// @return Done when the download is to be tried again.
BitsDownload::End BitsDownload::Recover(const BitsFailure& failure) {
  DownloadFile& file = _files.FailingFile(failure);
  LogFailure(file, failure);
  if (std::exchange(_goesAsItWas, false)) {
    TellFailure(file, failure, RetryPatience::Time(0));
    return End::Done;
  }
  std::optional<RetryPatience::Time> wait;
  if (IsTransient(failure) && (failure.code != OtherAnswer || file.retries < MaxOtherAnswers)) {
    wait = _patience.Next(AwakeClock::Now(), _files.Total().bytesTransferred);
  }
  TellFailure(file, failure, wait);
  if (wait) {
    ++file.retries;
    return _order.IsStopRequested(static_cast<DWORD>(wait->count())) ? End::Stopped : End::Done;
  }
  _patience.Restart();
  if (!_owner.Ask(file, failure)) return End::Failed;
  Event("file.renewed").With("file", FileSystem::getFileName(file.path)).Write();
  return End::Done;
}

FilePlace::Wait BitsDownload::StoppableWait() const {
  return [this](DWORD milliseconds) { return !_order.IsStopRequested(milliseconds); };
}

}  // namespace refhost
