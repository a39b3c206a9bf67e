#include "reference_host/download/BitsDownload.h"

#include "host/common/Log.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/download/Transfer.h"

namespace refhost {

namespace {

using Clock = std::chrono::steady_clock;

/// How soon the end of a short question is seen.
constexpr DWORD QuestionPollMs = 10;
/// How often BITS is asked how far it is. It is another process and has to stop for its answers, so
/// that a long transfer is asked after less often, but for its last part.
constexpr DWORD PollMs = 50;
constexpr DWORD LongPollMs = 250;
constexpr auto LongTransfer = std::chrono::seconds(1);
constexpr auto LastPart = 20;  ///< a twentieth
constexpr auto ReportInterval = std::chrono::milliseconds(250);
/// How often one file's transfer is tried again without asking anybody, and how long before that.
constexpr int MaxRetries = 2;
constexpr DWORD RetryPauseMs = 1000;

DWORD RetryPause() { return static_cast<DWORD>(RetryPauseMs * Settings().retryWaitScale); }

unsigned long MillisecondsSince(Clock::time_point begin) {
  using namespace std::chrono;
  return static_cast<unsigned long>(duration_cast<milliseconds>(Clock::now() - begin).count());
}

void LogFailure(const DownloadFile& file, const BitsFailure& failure) {
  ZLT::g_log.e(L"DownloadAgent: %s from %s, attempt %d: %s (context %d, code 0x%08X)",
               file.path.c_str(), WithoutQuery(file.url).c_str(), 1 + file.retries + file.renewals,
               failure.description.c_str(), static_cast<int>(failure.context),
               static_cast<unsigned int>(failure.code));
}

}  // namespace

BitsDownload::BitsDownload(DownloadOrder order, const DownloadCallbacks& callbacks)
    : _order(std::move(order)), _callbacks(callbacks), _files(_order.files) {}

bool BitsDownload::Run() {
  const ComApartment apartment;
  const bool success = MakeFirstJob() && RunJobs();
  _manager.Reset();
  return success;
}

bool BitsDownload::MakeFirstJob() {
  HRESULT result = BitsJob::Connect(_manager);
  if (SUCCEEDED(result)) {
    BitsJob::CancelAll(_manager, _order.name);
    result = MakeJob();
  }
  if (FAILED(result)) {
    const BitsFailure failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, result);
    LogFailure(_files.FailingFile(failure), failure);
    return false;
  }
  _id = _job->Id();
  return true;
}

bool BitsDownload::RunJobs() {
  const auto begin = Clock::now();
  ZLT::g_log.d(L"DownloadAgent: job %s begins, files: %lu", _order.name.c_str(),
               static_cast<unsigned long>(_order.files.size()));
  const bool success = Transfer();
  SetCurrentTransfer({});
  _job.reset();
  _files.RemoveParts();
  ZLT::g_log.d(L"DownloadAgent: job %s %s after %lu ms, bytes: %s", _order.name.c_str(),
               success ? L"is done" : L"has failed or was stopped", MillisecondsSince(begin),
               std::to_wstring(_files.Total().bytesTransferred).c_str());
  _callbacks.Complete(_order.name, *_id, success, _files.Map());
  return success;
}

HRESULT BitsDownload::MakeJob() {
  HRESULT result = S_OK;
  _job = BitsJob::Make(_manager,
                       {_order.name, _order.headers, _order.priority, _files.Unfinished()}, result);
  return result;
}

bool BitsDownload::Transfer() {
  _lastReport = Clock::now();
  for (;;) {
    BitsFailure failure;
    const End end = Attempt(failure);
    if (end == End::Done) return true;
    if (end == End::Stopped || !Recover(failure)) return false;
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
    if (!Wait(QuestionPollMs)) return End::Stopped;
  }
  std::optional<BitsFailure> refusal = _files.Learn(*_probe);
  if (!refusal) refusal = _files.FindOversized();
  if (!refusal) refusal = _files.FindNoRoom();
  if (!refusal) refusal = _files.ClearPlaces();
  if (!refusal) return End::Done;
  failure = *refusal;
  return End::Failed;
}

/// The job goes on where the platform can do that, so that it keeps the bytes that it has; else a
/// new job fetches what is missing.
BitsDownload::End BitsDownload::SetGoing(BitsFailure& failure) {
  const std::vector<BitsFile> renewed = _files.TakeRenewed();
  if (_job && (renewed.empty() || _job->Redirect(renewed)) && _job->Resume()) return End::Done;
  if (_job && TakeOver(failure) != End::Done) return End::Failed;
  const HRESULT result = MakeJob();
  if (SUCCEEDED(result) && _job->Resume()) return End::Done;
  failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, FAILED(result) ? result : E_FAIL);
  return End::Failed;
}

BitsDownload::End BitsDownload::WatchJob(BitsFailure& failure) {
  const auto begin = _lastBytes = Clock::now();
  while (Wait(PollTime(begin))) {
    const BG_JOB_STATE state = _job->State();
    _files.Update(_job->Progress());
    if (FindJobsFailure(state, failure)) return End::Failed;
    if (FindOwnFailure(failure)) {
      _job.reset();
      return End::Failed;
    }
    if (state != BG_JOB_STATE_TRANSFERRED) continue;
    _files.SettleLengths();
    return ReportProgress() ? End::Done : End::Stopped;
  }
  return End::Stopped;
}

DWORD BitsDownload::PollTime(Clock::time_point begin) const {
  const DownloadProgressDetail total = _files.Total();
  const bool isEnding = total.bytesTotal - total.bytesTransferred <= total.bytesTotal / LastPart;
  return isEnding || Clock::now() - begin < LongTransfer ? PollMs : LongPollMs;
}

bool BitsDownload::FindJobsFailure(BG_JOB_STATE state, BitsFailure& failure) const {
  if (state == BG_JOB_STATE_CANCELLED || state == BG_JOB_STATE_ACKNOWLEDGED) {
    failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, EndedByOthers);
    return true;
  }
  if (state != BG_JOB_STATE_ERROR && state != BG_JOB_STATE_TRANSIENT_ERROR) return false;
  failure = _job->Failure();
  if (failure.context == BG_ERROR_CONTEXT_UNKNOWN) {
    failure = _files.TransportFailure(*_probe).value_or(failure);
  }
  return true;
}

bool BitsDownload::FindOwnFailure(BitsFailure& failure) {
  const std::uint64_t bytes = _files.Total().bytesTransferred;
  if (bytes != _bytesSeen) _lastBytes = Clock::now();
  _bytesSeen = bytes;
  if (const std::optional<BitsFailure> oversized = _files.FindOversized()) {
    failure = *oversized;
    return true;
  }
  const auto limit = std::chrono::seconds(Settings().downloadStallSeconds);
  if (Clock::now() - _lastBytes < limit) return false;
  failure = FailureWith(BG_ERROR_CONTEXT_GENERAL_TRANSPORT, NoBytesInTime);
  return true;
}

/// Ends the job and puts what it has brought into place.
BitsDownload::End BitsDownload::TakeOver(BitsFailure& failure) {
  _job->Complete();
  _job.reset();
  const std::optional<BitsFailure> misplaced = _files.Place();
  if (!misplaced) return End::Done;
  failure = *misplaced;
  return End::Failed;
}

bool BitsDownload::Recover(const BitsFailure& failure) {
  DownloadFile& file = _files.FailingFile(failure);
  LogFailure(file, failure);
  if (IsTransient(failure) && file.retries < MaxRetries) {
    ++file.retries;
    return !IsStopRequested(RetryPause());
  }
  return AskOwner(file, failure);
}

bool BitsDownload::AskOwner(const DownloadFile& file, const BitsFailure& failure) {
  const DownloadAgent::FileMap failing{{file.url, file.path}};
  {
    const std::lock_guard lock(_renewalMutex);
    _renewalOpen = true;
    _renewed = false;
  }
  const bool resumed =
      _callbacks.Error(failing, {failure.context, failure.code, failure.description});
  const std::lock_guard lock(_renewalMutex);
  _renewalOpen = false;
  return resumed && _renewed;
}

bool BitsDownload::Renew(const DownloadAgent::FileMap& addresses) {
  const std::lock_guard lock(_renewalMutex);
  if (!_renewalOpen || !_files.Renew(addresses)) return false;
  _renewed = true;
  return true;
}

/// Waits a little. @return false when the download is to stop.
bool BitsDownload::Wait(DWORD milliseconds) {
  if (IsStopRequested(milliseconds)) return false;
  return Clock::now() - _lastReport < ReportInterval || ReportProgress();
}

bool BitsDownload::IsStopRequested(DWORD waitMs) const {
  const HANDLE handles[] = {_order.stopEvent, _order.cancelHandle};
  const DWORD count = _order.cancelHandle == nullptr ? 1 : 2;
  // A wait that fails counts as well: a download that nobody could stop would be worse.
  return WaitForMultipleObjects(count, handles, FALSE, waitMs) != WAIT_TIMEOUT;
}

bool BitsDownload::ReportProgress() {
  _lastReport = Clock::now();
  const DownloadProgressDetail total = _files.Total();
  const bool isKnown = total.bytesTotal != BG_SIZE_UNKNOWN;
  SetCurrentTransfer({total.bytesTransferred, isKnown ? total.bytesTotal : 0});
  // Of nothing, no share can be told.
  return total.bytesTotal == 0 || _callbacks.Progress(_order.name, total, _files.Each());
}

}  // namespace refhost
