#include "host/common/ProcessWrap.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/base/ModulePin.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/log/Event.h"
#include "reference_host/process/CheckQueue.h"
#include "reference_host/process/InstallerStart.h"
#include "reference_host/process/Patience.h"
#include "reference_host/process/ProcessOutput.h"
#include "reference_host/process/ProcessStreams.h"
#include "reference_host/process/ProcessTree.h"
#include "reference_host/process/ScriptEvents.h"
#include "reference_host/process/UserSession.h"

namespace ZLT {

namespace {

using Clock = std::chrono::steady_clock;
using refhost::ScriptEnd;
using refhost::ScriptKind;
using refhost::WaitEnd;

std::chrono::milliseconds Since(Clock::time_point begin) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
}

void LogNotStarted(ScriptKind kind, unsigned long error, const std::wstring& commandLine) {
  g_log.e(L"ProcessWrap: not started, error %lu: %s", error, commandLine.c_str());
  TellScriptNotStarted(kind, commandLine, error);
}

/// @return exit code of a program that has ended; what is not to be found out is no success.
DWORD ExitCodeOf(HANDLE process) {
  DWORD exitCode = 1;
  GetExitCodeProcess(process, &exitCode);
  return exitCode;
}

/// In words how the wait for a program ended, and the program with it.
/// @param isGone in, false: it was to be ended, and is still there.
std::wstring TextOf(WaitEnd end, DWORD exitCode, const std::wstring& bound, bool isGone) {
  if (end == WaitEnd::Signalled) return L"exit code " + std::to_wstring(exitCode);
  const std::wstring late = std::to_wstring(refhost::EndWait.count()) + L" s later";
  return L"ended by " + bound + (isGone ? L"" : L", but still there " + late);
}

std::wstring TimeOutText(std::chrono::seconds limit) {
  return L"its time-out of " + std::to_wstring(limit.count()) + L" s";
}

void LogEnd(ScriptKind kind, const ScriptEnd& end, const std::wstring& commandLine,
            const refhost::ProcessOutput& output) {
  refhost::LogProcessEnd(end.how != WaitEnd::Signalled, end.text, end.duration, commandLine,
                         output);
  TellScriptEnd(kind, commandLine, end, output);
}

bool RunToEnd(const std::wstring& commandLine, const std::wstring& workingDirectory, bool hidden,
              const refhost::Patience& patience) {
  const std::chrono::seconds limit(refhost::Settings().processTimeoutSeconds);
  refhost::OutputPipe pipe;
  const auto begin = Clock::now();
  refhost::ProcessTree tree(
      {commandLine, workingDirectory, hidden, nullptr, nullptr, pipe.WriteEnd()});
  if (!tree.IsRunning()) {
    LogNotStarted(ScriptKind::Check, tree.Error(), commandLine);
    return false;
  }
  TellScriptBegins(ScriptKind::Check, commandLine);
  pipe.Read();
  const WaitEnd end = patience.WaitFor(tree.Process(), limit);
  const bool hasEnded = end == WaitEnd::Signalled;
  if (hasEnded) tree.Release();
  const bool isGone = hasEnded || tree.End();
  const std::chrono::milliseconds duration = Since(begin);
  const DWORD exitCode = ExitCodeOf(tree.Process());
  const std::wstring bound = end == WaitEnd::GivenUp ? patience.Bound() : TimeOutText(limit);
  const ScriptEnd told{end, exitCode, TextOf(end, exitCode, bound, isGone), duration};
  LogEnd(ScriptKind::Check, told, commandLine, pipe.Collect());
  return hasEnded && exitCode == 0;
}

/// The check scripts of this process.
refhost::CheckQueue& Checks() {
  const unsigned int most = refhost::Settings().maxCheckScripts;
  static refhost::CheckQueue queue(most != 0 ? most
                                             : std::max(1u, std::thread::hardware_concurrency()));
  return queue;
}

/// An installer that is under way: the end of its time, and the record of its end.
struct Watched {
  std::wstring commandLine;
  refhost::Handle process;
  refhost::OutputFile output;
  Clock::time_point begin;
  std::string title = refhost::EventTitle::Current();
  refhost::Handle told{CreateEventW(nullptr, TRUE, FALSE, nullptr)};  ///< its end is

  void ToEnd() const {
    const std::chrono::seconds limit(refhost::Settings().installerTimeoutSeconds);
    const WaitEnd end = refhost::Patience(nullptr, {}).WaitFor(process.Get(), limit);
    const bool hasEnded = end == WaitEnd::Signalled;
    const bool isGone = hasEnded || EndNow();
    const DWORD exitCode = ExitCodeOf(process.Get());
    const std::wstring text = TextOf(end, exitCode, TimeOutText(limit), isGone);
    const refhost::EventTitle named(title);
    LogEnd(ScriptKind::Installer, {end, exitCode, text, Since(begin)}, commandLine,
           output.Collect());
    SetEvent(told.Get());
  }

 private:
  bool EndNow() const {
    TerminateProcess(process.Get(), 1);
    return refhost::IsGoneWithin(process.Get());
  }
};

/// The newest one of this process.
struct Newest {
  std::mutex mutex;
  std::shared_ptr<const Watched> installer;
};

/// Never destroyed: threads may use it to the last moment of the process.
Newest& TheNewest() {
  static auto* const newest = new Newest;
  return *newest;
}

/// What comes behind an installer that has ended finds its end told of.
void WaitUntilTold() {
  constexpr DWORD Patience = 2000;  ///< ms; what is told is in the log and the events by then
  std::shared_ptr<const Watched> installer;
  {
    const std::scoped_lock lock(TheNewest().mutex);
    installer = TheNewest().installer;
  }
  if (installer == nullptr || WaitForSingleObject(installer->process.Get(), 0) == WAIT_TIMEOUT) {
    return;
  }
  WaitForSingleObject(installer->told.Get(), Patience);
}

/// Nobody waits for the thread: the caller waits for the process itself, as long as it wants to.
void WatchAside(std::shared_ptr<const Watched> watched) {
  refhost::PinModule();
  {
    const std::scoped_lock lock(TheNewest().mutex);
    TheNewest().installer = watched;
  }
  try {
    std::thread([watched = std::move(watched)] { watched->ToEnd(); }).detach();
  } catch (const std::system_error& error) {
    g_log.e(L"ProcessWrap: the end will not be logged: %s",
            String::UTF8ToUTF16(error.what()).c_str());
  }
}

/// Of the session that installers are to run in.
refhost::SessionToken InstallersSession() {
  const bool isUsers = refhost::Settings().installerSession == refhost::InstallerSession::User;
  return isUsers ? refhost::TokenForUserSession() : refhost::SessionToken();
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
  refhost::Handle started = refhost::StartInstaller(
      {commandLine, workingDirectory, hidden, nullptr, nullptr, output.WriteEnd()},
      InstallersSession());
  if (!started) {
    LogNotStarted(ScriptKind::Installer, GetLastError(), commandLine);
    return 0;
  }
  TellScriptBegins(ScriptKind::Installer, commandLine);
  WatchAside(std::make_shared<Watched>(
      Watched{commandLine, Duplicate(started.Get()), std::move(output), begin}));
  processHandle = started.Release();
  return 1;
}

int ProcessWrap::LaunchApplicationAndCheckExitCode(const std::wstring& commandLine,
                                                   const std::wstring& workingDirectory,
                                                   bool hidden, HANDLE cancelHandle) {
  const refhost::Patience patience(
      cancelHandle, std::chrono::seconds(refhost::Settings().cancelledCheckGraceSeconds));
  WaitUntilTold();
  const refhost::CheckQueue::Turn turn(Checks(), patience);
  if (!turn) {
    g_log.e(L"ProcessWrap: not started, %s came before its turn: %s", patience.Bound().c_str(),
            commandLine.c_str());
    return 0;
  }
  return RunToEnd(commandLine, workingDirectory, hidden, patience) ? 1 : 0;
}

}  // namespace ZLT
