#include "tests/host/windows/ChildModes.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "reference_host/Startup.h"
#include "reference_host/doctor/Doctor.h"

namespace {

/// Starts the suite and tells what it says.
int StartSuite() {
  std::wstring error = L"untouched";
  const bool started = refhost::Start(error);
  std::printf("%s", ZLT::String::UTF16ToUTF8(error).c_str());
  return started ? 0 : 1;
}

/// Appends records to a log that other processes append to as well.
int AppendRecords(const char* fileName, const char* mark) {
  ZLT::Log log;
  if (!ZLT::utility::InitLog(log, ZLT::String::UTF8ToUTF16(fileName).c_str(), 4)) return 1;
  for (int i = 0; i < 300; ++i) {
    log.d(L"%s %d of three hundred .", ZLT::String::UTF8ToUTF16(mark).c_str(), i);
  }
  return 0;
}

/// Waits for an event that the test knows the name of, at most a minute.
int WaitForEvent(const char* name) {
  const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, name);
  return event != nullptr && WaitForSingleObject(event, 60000) == WAIT_OBJECT_0 ? 0 : 9;
}

/// Starts a process that owns the mutex of the test and waits until it does.
bool StartGrandchild(const char* name) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring line =
      L"\"" + std::wstring(program) + L"\" --hold " + ZLT::String::UTF8ToUTF16(name);
  const HANDLE ready = OpenEventA(SYNCHRONIZE, FALSE, (std::string(name) + "-ready").c_str());
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  // It inherits the standard output, as most programs' children do.
  return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &process) &&
         WaitForSingleObject(ready, 20000) == WAIT_OBJECT_0;
}

/// Runs a program that would wait for a minute. @return 0 when it was ended before.
int LaunchWaiter(const char* name) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring line =
      L"\"" + std::wstring(program) + L"\" --wait " + ZLT::String::UTF8ToUTF16(name);
  const ULONGLONG begin = GetTickCount64();
  const int launched =
      ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(line, L"C:\\", true, nullptr);
  return launched == 0 && GetTickCount64() - begin < 30000 ? 0 : 6;
}

/// Owns a mutex, which the test sees abandoned when this process ends, and waits.
int HoldMark(const std::string& name) {
  CreateMutexA(nullptr, TRUE, (name + "-mark").c_str());
  const HANDLE ready = OpenEventA(EVENT_MODIFY_STATE, FALSE, (name + "-ready").c_str());
  SetEvent(ready);
  return WaitForEvent(name.c_str());
}

/// Downloads the file "held.cab", which gives this process the machine's lease, and waits.
int HoldLease(const std::string& name, const char* url) {
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  FileSystem::createDirectory(folder, true);
  GUID id{};
  const bool done = DownloadAgent::GetInstance(L"Holder", {}, {}, {})
                        ->DownloadFiles(L"Holder", false,
                                        {{ZLT::String::UTF8ToUTF16(url), folder + L"\\held.cab"}},
                                        L"", id, nullptr, 1);
  if (!done) return 1;
  SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, (name + "-ready").c_str()));
  return WaitForEvent(name.c_str());
}

/// Prints what the doctor finds, a line a check: identifier, number of the verdict, text.
int RunDoctor(int patienceMs) {
  for (const refhost::Finding& finding : refhost::Examine(std::chrono::milliseconds(patienceMs))) {
    std::printf("%s %d %s\n", finding.id.c_str(), static_cast<int>(finding.health),
                finding.found.c_str());
  }
  return 0;
}

/// @return 0 when standard input is at its end at once.
int ReadInput() { return std::getchar() == EOF ? 0 : 7; }

/// Writes so many lines, and one to standard error. @return the exit code asked for.
int Print(int lines, const char* exitCode) {
  for (int i = 1; i <= lines; ++i) std::printf("line %d\n", i);
  std::fflush(stdout);
  std::fputs("to standard error\n", stderr);
  return std::atoi(exitCode);
}

/// Writes each argument in brackets, as it has come.
int Echo() {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 2; i < count; ++i) {
    std::printf("[%s]", ZLT::String::UTF16ToUTF8(arguments[i]).c_str());
  }
  return 0;
}

}  // namespace

std::optional<int> RunAsChild(int count, char** arguments) {
  const std::string mode = count > 1 ? arguments[1] : "";
  const char* first = count > 2 ? arguments[2] : "";
  if (mode == "--start") return StartSuite();
  if (mode == "--doctor") return RunDoctor(std::atoi(first));
  if (mode == "--lease" && count > 3) return HoldLease(first, arguments[3]);
  if (mode == "--append" && count > 3) return AppendRecords(first, arguments[3]);
  if (mode == "--exit") return std::atoi(first);
  if (mode == "--wait") return WaitForEvent(first);
  if (mode == "--tree") return StartGrandchild(first) ? WaitForEvent(first) : 8;
  if (mode == "--leave") return StartGrandchild(first) ? 0 : 8;
  if (mode == "--launch-waiter") return LaunchWaiter(first);
  if (mode == "--hold") return HoldMark(first);
  if (mode == "--read-input") return ReadInput();
  if (mode == "--print" && count > 3) return Print(std::atoi(first), arguments[3]);
  if (mode == "--echo") return Echo();
  return std::nullopt;
}
