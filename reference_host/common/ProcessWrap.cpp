#include "host/common/ProcessWrap.h"

#include "host/common/Log.h"
#include "reference_host/common/Configuration.h"
#include "reference_host/common/ProcessStart.h"
#include "reference_host/common/ProcessTree.h"
#include "reference_host/common/UserSession.h"

namespace ZLT {

namespace {

DWORD TimeoutMilliseconds() {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  return 1000 * (configuration != nullptr ? configuration->processTimeoutSeconds
                                          : refhost::Configuration().processTimeoutSeconds);
}

enum class Ending { Ended, Cancelled, TimedOut };

/// A program that has ended counts as ended, also when it was cancelled at the same moment.
Ending WaitForEnd(HANDLE process, HANDLE cancelHandle) {
  const HANDLE handles[] = {process, cancelHandle};
  const DWORD count = cancelHandle != nullptr ? 2 : 1;
  const DWORD result = WaitForMultipleObjects(count, handles, FALSE, TimeoutMilliseconds());
  if (result == WAIT_OBJECT_0) return Ending::Ended;
  return result == WAIT_OBJECT_0 + 1 ? Ending::Cancelled : Ending::TimedOut;
}

bool IsSignalled(HANDLE event) {
  return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

/// @return true when the program ended by itself with exit code 0.
bool HasSucceeded(HANDLE process, const std::wstring& commandLine) {
  DWORD exitCode = 1;
  const bool known = GetExitCodeProcess(process, &exitCode) != 0;
  g_log.d(L"ProcessWrap: exit code %lu of %s", exitCode, commandLine.c_str());
  return known && exitCode == 0;
}

bool RunToEnd(const std::wstring& commandLine, const std::wstring& workingDirectory, bool hidden,
              HANDLE cancelHandle) {
  refhost::ProcessTree tree({commandLine, workingDirectory, hidden});
  if (!tree.IsRunning()) {
    g_log.e(L"ProcessWrap: not started, error %lu: %s", tree.Error(), commandLine.c_str());
    return false;
  }
  const Ending ending = WaitForEnd(tree.Process(), cancelHandle);
  if (ending == Ending::Ended) {
    tree.Release();
    return HasSucceeded(tree.Process(), commandLine);
  }
  tree.End();
  g_log.e(L"ProcessWrap: ended by %s: %s",
          ending == Ending::Cancelled ? L"the cancel event" : L"its time-out", commandLine.c_str());
  return false;
}

}  // namespace

// Not in a job: the caller learns nothing of the installer but its end, and an installer that its
// host's end cuts off half-way is worse than one that runs on.
int ProcessWrap::CreateProcessInUserSession(const std::wstring& commandLine,
                                            const std::wstring& workingDirectory,
                                            HANDLE& processHandle, bool hidden) {
  processHandle = nullptr;
  const refhost::Handle token = refhost::TokenForUserSession();
  refhost::ProcessSpec spec{commandLine, workingDirectory, hidden, false, token.Get()};
  refhost::StartedProcess started = refhost::StartProcess(spec);
  if (!started && spec.token != nullptr) {
    spec.token = nullptr;
    started = refhost::StartProcess(spec);
  }
  if (!started) {
    g_log.e(L"ProcessWrap: not started, error %lu: %s", GetLastError(), commandLine.c_str());
    return 0;
  }
  processHandle = started.process.Release();
  return 1;
}

int ProcessWrap::LaunchApplicationAndCheckExitCode(const std::wstring& commandLine,
                                                   const std::wstring& workingDirectory,
                                                   bool hidden, HANDLE cancelHandle) {
  if (IsSignalled(cancelHandle)) {
    g_log.e(L"ProcessWrap: not started, cancelled before: %s", commandLine.c_str());
    return 0;
  }
  return RunToEnd(commandLine, workingDirectory, hidden, cancelHandle) ? 1 : 0;
}

}  // namespace ZLT
