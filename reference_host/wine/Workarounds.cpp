#include "reference_host/wine/Workarounds.h"

// Behind windows.h, whose types it needs.
#include <winhttp.h>

#include <chrono>
#include <future>
#include <system_error>
#include <thread>

namespace refhost::wine {

namespace {

/// How long a caller waits for a job to be cancelled.
constexpr auto CancelWait = std::chrono::milliseconds(50);

}  // namespace

HRESULT ConnectAgain(const std::function<HRESULT()>& connect) {
  const HRESULT result = connect();
  return FAILED(result) ? connect() : result;
}

void CancelAside(ComPtr<IBackgroundCopyJob> job) {
  std::packaged_task<void()> task([job]() mutable {
    const ComApartment apartment;
    job->Cancel();
    job.Reset();
  });
  const std::future<void> done = task.get_future();
  try {
    std::thread(std::move(task)).detach();
    done.wait_for(CancelWait);
  } catch (const std::system_error&) {
    job->Cancel();
  }
}

bool CannotRest(HRESULT suspended) { return suspended == E_NOTIMPL && IsInForce(); }

bool KnowsNoOwner(HRESULT asked) { return asked == E_NOTIMPL && IsInForce(); }

unsigned long AsWinHttpError(unsigned long error) {
  if (error == WSAETIMEDOUT) return ERROR_WINHTTP_TIMEOUT;
  const bool fromSockets = error >= WSABASEERR && error < WINHTTP_ERROR_BASE;
  return fromSockets ? ERROR_WINHTTP_CONNECTION_ERROR : error;
}

DWORD AttributesByName(const wchar_t* path, DWORD opened) {
  return opened | GetFileAttributesW(path);
}

AppendLock::AppendLock(HANDLE file) {
  if (IsInForce()) _lock.emplace(file);
}

}  // namespace refhost::wine
