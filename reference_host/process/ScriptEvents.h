#pragma once

#include <chrono>
#include <string>

#include "reference_host/process/Patience.h"
#include "reference_host/process/ProcessOutput.h"

namespace refhost {

enum class ScriptKind { Installer, Check };

void TellScriptBegins(ScriptKind kind, const std::wstring& commandLine);

/// @param error in, the system's.
void TellScriptNotStarted(ScriptKind kind, const std::wstring& commandLine, unsigned long error);

/// How a script has ended.
struct ScriptEnd {
  WaitEnd how;
  unsigned long exitCode;  ///< when it ended by itself
  std::wstring text;       ///< in words
  std::chrono::milliseconds duration;
};

/// Tells of a script that has ended, and records the restart that an installer wants.
void TellScriptEnd(ScriptKind kind, const std::wstring& commandLine, const ScriptEnd& end,
                   const ProcessOutput& output);

}  // namespace refhost
