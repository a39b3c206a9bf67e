#include "reference_host/download/DownloadOwner.h"

#include "reference_host/download/Transfer.h"

namespace refhost {

namespace {

constexpr auto ReportInterval = std::chrono::milliseconds(250);

}  // namespace

DownloadOwner::DownloadOwner(std::wstring jobName, const DownloadCallbacks& callbacks,
                             DownloadFileSet& files)
    : _jobName(std::move(jobName)), _callbacks(callbacks), _files(files) {}

bool DownloadOwner::Report() {
  _lastReport = AwakeClock::Now();
  const DownloadProgressDetail total = _files.Total();
  const bool isKnown = total.bytesTotal != BG_SIZE_UNKNOWN;
  SetCurrentTransfer({total.bytesTransferred, isKnown ? total.bytesTotal : 0});
  // Of nothing, no share can be told.
  return total.bytesTotal == 0 || _callbacks.Progress(_jobName, total, _files.Each());
}

bool DownloadOwner::ReportWhenDue() {
  return AwakeClock::Now() - _lastReport < ReportInterval || Report();
}

bool DownloadOwner::Ask(const DownloadFile& file, const BitsFailure& failure) {
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

bool DownloadOwner::Renew(const DownloadAgent::FileMap& addresses) {
  const std::lock_guard lock(_renewalMutex);
  if (!_renewalOpen || !_files.Renew(addresses)) return false;
  _renewed = true;
  return true;
}

void DownloadOwner::TellEnd(const GUID& id, bool success) const {
  SetCurrentTransfer({});
  _callbacks.Complete(_jobName, id, success, _files.Map());
}

}  // namespace refhost
