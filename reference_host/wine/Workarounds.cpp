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

/// As many idle connections as one request is tried on, should the server have closed them.
constexpr int MaxStaleConnections = 4;

/// @return true when the connection ended before the head of a reply.
bool IsBroken(unsigned long error) {
  return error == ERROR_WINHTTP_CONNECTION_ERROR || error == ERROR_WINHTTP_INVALID_SERVER_RESPONSE;
}

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

unsigned long SendOverIdleConnections(
    unsigned long error, const std::function<std::optional<unsigned long>()>& sendAgain) {
  for (int i = 0; i < MaxStaleConnections && IsBroken(error); ++i) {
    const std::optional<unsigned long> next = sendAgain();
    if (!next) break;
    error = *next;
  }
  return error;
}

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
