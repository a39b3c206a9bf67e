#pragma once

#include <windows.h>

#include "reference_host/base/Handle.h"

namespace refhost {

/// Keeps the machine from falling asleep for want of a user, as long as the object lives. The
/// user's own wish for sleep stands above it.
class KeepAwake {
 public:
  /// @param reason in, what "powercfg /requests" shows.
  explicit KeepAwake(const wchar_t* reason);
  ~KeepAwake();
  KeepAwake(const KeepAwake&) = delete;
  KeepAwake& operator=(const KeepAwake&) = delete;

  /// @return 0, or the system's error when the machine may fall asleep all the same.
  DWORD Error() const { return _error; }

 private:
  Handle _request;
  DWORD _error = ERROR_SUCCESS;
};

}  // namespace refhost
