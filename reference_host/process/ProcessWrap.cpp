#include "host/common/ProcessWrap.h"

#include <chrono>
#include <memory>
#include <system_error>
#include <thread>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/base/ModulePin.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/process/ProcessOutput.h"
#include "reference_host/process/ProcessStart.h"
#include "reference_host/process/ProcessStreams.h"
#include "reference_host/process/ProcessTree.h"
#include "reference_host/process/UserSession.h"

namespace ZLT {

namespace {

using Clock = std::chrono::steady_clock;

std::chrono::milliseconds Since(Clock::time_point begin) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
}

enum class Ending { Ended, Cancelled, TimedOut };

/// A program that has ended counts as ended, also when it was cancelled at the same moment.
Ending WaitForEnd(HANDLE process, HANDLE cancelHandle, unsigned int timeoutSeconds) {
  const HANDLE handles[] = {process, cancelHandle};
  const DWORD count = cancelHandle != nullptr ? 2 : 1;
  const DWORD result = WaitForMultipleObjects(count, handles, FALSE, 1000 * timeoutSeconds);
  if (result == WAIT_OBJECT_0) return Ending::Ended;
  return result == WAIT_OBJECT_0 + 1 ? Ending::Cancelled : Ending::TimedOut;
}

bool IsSignalled(HANDLE event) {
  return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

void LogNotStarted(unsigned long error, const std::wstring& commandLine) {
  g_log.e(L"ProcessWrap: not started, error %lu: %s", error, commandLine.c_str());
}

/// @return exit code of a program that has ended; what is not to be found out is no success.
DWORD ExitCodeOf(HANDLE process) {
  DWORD exitCode = 1;
  GetExitCodeProcess(process, &exitCode);
  return exitCode;
}

std::wstring TextOf(Ending ending, DWORD exitCode, unsigned int timeoutSeconds) {
  if (ending == Ending::Cancelled) return L"ended by the cancel event";
  if (ending == Ending::TimedOut) {
    return L"ended by its time-out of " + std::to_wstring(timeoutSeconds) + L" s";
  }
  return L"exit code " + std::to_wstring(exitCode);
}

bool RunToEnd(const std::wstring& commandLine, const std::wstring& workingDirectory, bool hidden,
              HANDLE cancelHandle) {
  const unsigned int timeoutSeconds = refhost::Settings().processTimeoutSeconds;
  refhost::OutputPipe pipe;
  const auto begin = Clock::now();
  refhost::ProcessTree tree(
      {commandLine, workingDirectory, hidden, nullptr, nullptr, pipe.WriteEnd()});
  if (!tree.IsRunning()) {
    LogNotStarted(tree.Error(), commandLine);
    return false;
  }
  pipe.Read();
  const Ending ending = WaitForEnd(tree.Process(), cancelHandle, timeoutSeconds);
  if (ending == Ending::Ended) {
    tree.Release();
  } else {
    tree.End();
  }
  const std::chrono::milliseconds duration = Since(begin);
  const DWORD exitCode = ExitCodeOf(tree.Process());
  refhost::LogProcessEnd(ending != Ending::Ended, TextOf(ending, exitCode, timeoutSeconds),
                         duration, commandLine, pipe.Collect());
  return ending == Ending::Ended && exitCode == 0;
}

/// An installer that is under way: the end of its time, and the record of its end.
struct Watched {
  std::wstring commandLine;
  refhost::Handle process;
  refhost::OutputFile output;
  Clock::time_point begin;

  void ToEnd() const {
    const unsigned int timeoutSeconds = refhost::Settings().installerTimeoutSeconds;
    const Ending ending = WaitForEnd(process.Get(), nullptr, timeoutSeconds);
    if (ending == Ending::TimedOut) {
      TerminateProcess(process.Get(), 1);
      WaitForSingleObject(process.Get(), INFINITE);
    }
    const std::wstring text = TextOf(ending, ExitCodeOf(process.Get()), timeoutSeconds);
    refhost::LogProcessEnd(ending == Ending::TimedOut, text, Since(begin), commandLine,
                           output.Collect());
  }
};

/// Nobody waits for the thread: the caller waits for the process itself, as long as it wants to.
void WatchAside(std::shared_ptr<const Watched> watched) {
  refhost::PinModule();
  try {
    std::thread([watched = std::move(watched)] { watched->ToEnd(); }).detach();
  } catch (const std::system_error& error) {
    g_log.e(L"ProcessWrap: the end will not be logged: %s",
            String::UTF8ToUTF16(error.what()).c_str());
  }
}

/// In the signed-in user's session where that can be done, else in this process's own.
refhost::Handle StartForUser(refhost::ProcessOrder order) {
  const refhost::Handle token = refhost::TokenForUserSession();
  if (token) {
    order.token = token.Get();
    if (refhost::Handle started = refhost::StartProcess(order)) return started;
    order.token = nullptr;
  }
  // Enclosed only while it is being started: a host that dies just then leaves no program behind
  // that nobody ever lets go. A job has programs of its own session only, hence not above.
  refhost::ProcessTree tree(order);
  tree.Release();
  if (!tree.IsRunning()) SetLastError(tree.Error());
  return tree.TakeProcess();
}

refhost::Handle Duplicate(HANDLE process) {
  HANDLE copy = nullptr;
  DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &copy, 0, FALSE,
                  DUPLICATE_SAME_ACCESS);
  return refhost::Handle(copy);
}

}  // namespace

// Its host's end leaves an installer alone: the caller learns nothing of it but its end, and one
// that is cut off half-way is worse than one that runs on.
int ProcessWrap::CreateProcessInUserSession(const std::wstring& commandLine,
                                            const std::wstring& workingDirectory,
                                            HANDLE& processHandle, bool hidden) {
  processHandle = nullptr;
  const auto begin = Clock::now();
  refhost::OutputFile output(refhost::LogFolder());
  refhost::Handle started =
      StartForUser({commandLine, workingDirectory, hidden, nullptr, nullptr, output.WriteEnd()});
  if (!started) {
    LogNotStarted(GetLastError(), commandLine);
    return 0;
  }
  WatchAside(std::make_shared<Watched>(
      Watched{commandLine, Duplicate(started.Get()), std::move(output), begin}));
  processHandle = started.Release();
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
