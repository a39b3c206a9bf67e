#pragma once

#include <windows.h>

#include <string>

#include "host/Export.h"
#include "reference_host/base/Handle.h"

namespace refhost {

/// What to start, and how.
struct ProcessOrder {
  std::wstring commandLine;
  std::wstring workingDirectory;
  bool hidden = true;       ///< without a visible window
  HANDLE job = nullptr;     ///< that it is in from its first instruction on; null: in none
  HANDLE token = nullptr;   ///< whose rights and session; null: this process's own
  HANDLE output = nullptr;  ///< inheritable, for standard output and error; null: they lead nowhere
};

/// Starts a program. Its standard input is at its end, so that none can wait for input that never
/// comes; it inherits no handle of this process but `output` and that one, which is the null
/// device. With a token it inherits nothing, since no handle goes from one session to another, and
/// is in no job; its streams are those of its own console, without output for anybody and without
/// an end of its input.
/// @return the process, nothing (and the last error) when it does not start.
ZLT_API Handle StartProcess(const ProcessOrder& order);

}  // namespace refhost
