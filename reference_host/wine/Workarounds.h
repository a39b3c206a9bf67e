#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <bits.h>

#include <functional>
#include <optional>

#include "reference_host/base/Com.h"
#include "reference_host/base/FileLock.h"
#include "reference_host/wine/UnderWine.h"

/// What Wine does otherwise than Windows documents, and what the suite does about it there. Each
/// caller has the documented way beside it, which is the only one that is gone on Windows.
namespace refhost::wine {

/// Wine's BITS refuses a call that comes while its service is still starting.
/// @param connect in, called again when it fails. @return its last result.
HRESULT ConnectAgain(const std::function<HRESULT()>& connect);

/// Wine's BITS lets `Cancel` wait for the job's server, which may have fallen silent. Cancels on
/// another thread and waits for that a moment only.
void CancelAside(ComPtr<IBackgroundCopyJob> job);

/// Wine's BITS can neither let a job rest nor tell whose it is (E_NOTIMPL): the job goes on until
/// it is taken over or cancelled, and all jobs are this user's.
/// @return whether a call has failed for that.
bool CannotRest(HRESULT suspended);
bool KnowsNoOwner(HRESULT asked);

/// Wine's WinHTTP hands on the numbers of the sockets below it.
/// @return the error as one of WinHTTP's own.
unsigned long AsWinHttpError(unsigned long error);

/// Wine opens what a link leads to, also when the link itself is asked for: its name tells.
/// @return the attributes of what stands at `path`, in addition to those of what was opened.
DWORD AttributesByName(const wchar_t* path, DWORD opened);

/// Wine appends by asking for a file's size and writing there, so that the records of two processes
/// may fall into one place. Windows appends each as a whole.
class AppendLock {
 public:
  explicit AppendLock(HANDLE file);

 private:
  std::optional<FileLock> _lock;
};

}  // namespace refhost::wine
