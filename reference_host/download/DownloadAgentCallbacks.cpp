#include "reference_host/download/DownloadAgentCallbacks.h"

#include <exception>

#include "host/common/Log.h"
#include "host/common/Text.h"

namespace refhost {

namespace {

/// @param kind in, the callback's name for the log line. @return true when nothing was thrown.
template <typename Call>
bool Guarded(const wchar_t* kind, const Call& call) {
  std::string error;
  try {
    call();
    return true;
  } catch (const std::exception& exception) {
    error = exception.what();
  } catch (...) {
    error = "unknown exception";
  }
  ZLT::g_log.e(L"DownloadAgent: the %s callback threw: %s", kind,
               ZLT::String::UTF8ToUTF16(error).c_str());
  return false;
}

}  // namespace

DownloadCallbacks::DownloadCallbacks(DownloadAgent::CompleteCallback onComplete,
                                     DownloadAgent::ProgressCallback onProgress,
                                     DownloadAgent::ErrorCallback onError)
    : _onComplete(std::move(onComplete)),
      _onProgress(std::move(onProgress)),
      _onError(std::move(onError)) {}

void DownloadCallbacks::Complete(const std::wstring& jobName, const GUID& id, bool success,
                                 DownloadAgent::FileMap files) const {
  if (!_onComplete) return;
  Guarded(L"completion", [&] { _onComplete(jobName, id, success, files); });
}

bool DownloadCallbacks::Progress(const std::wstring& jobName, DownloadProgressDetail total,
                                 std::vector<DownloadProgressDetail> each) const {
  if (!_onProgress) return true;
  bool goOn = true;
  const bool called = Guarded(L"progress", [&] { goOn = _onProgress(jobName, total, each); });
  return goOn || !called;
}

bool DownloadCallbacks::Error(DownloadAgent::FileMap files, ErrorDetails details) const {
  if (!_onError) return false;
  bool resumed = false;
  return Guarded(L"error", [&] { _onError(files, details, resumed); }) && resumed;
}

}  // namespace refhost
