#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <bits.h>

#include <string>

#include "host/common/DownloadAgent.h"

namespace refhost {

struct DownloadOrder {
  std::wstring name;
  DownloadAgent::FileMap files;
  std::wstring headers;
  BG_JOB_PRIORITY priority;
  HANDLE cancelHandle;  ///< may be null
  HANDLE stopEvent;     ///< the service's own end

  /// Waits for a stop. @return false when none came in the time.
  bool IsStopRequested(DWORD waitMs) const {
    const HANDLE handles[] = {stopEvent, cancelHandle};
    const DWORD count = cancelHandle == nullptr ? 1 : 2;
    // A wait that fails counts as well: a download that nobody could stop would be worse.
    return WaitForMultipleObjects(count, handles, FALSE, waitMs) != WAIT_TIMEOUT;
  }
};

}  // namespace refhost
