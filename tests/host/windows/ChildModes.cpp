#include "tests/host/windows/ChildModes.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <shellapi.h>
#include <winhttp.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/HttpRequest.h"
#include "host/common/Log.h"
#include "host/common/ProcessWrap.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "reference_host/Startup.h"
#include "reference_host/doctor/Doctor.h"
#include "reference_host/log/Event.h"
#include "tests/host/windows/FakeImport.h"

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

int WriteEvents(int count) {
  for (int i = 0; i < count; ++i) refhost::Event("test.crowd").With("number", i).Write();
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

/// Runs two programs that would wait for a minute, with an event that is signalled or not.
/// @return 0 when both were ended before.
int LaunchWaiters(const char* name, bool signalled) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring line =
      L"\"" + std::wstring(program) + L"\" --wait " + ZLT::String::UTF8ToUTF16(name);
  const HANDLE cancel = CreateEventW(nullptr, TRUE, signalled, nullptr);
  const ULONGLONG begin = GetTickCount64();
  std::atomic<int> succeeded = 0;
  const auto launch = [&] {
    succeeded += ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(line, L"C:\\", true, cancel);
  };
  std::thread other(launch);
  launch();
  other.join();
  return succeeded == 0 && GetTickCount64() - begin < 30000 ? 0 : 6;
}

/// Sets an event by the number of a handle, should this process have inherited that.
int SetByNumber(const char* number) {
  const auto handle = reinterpret_cast<HANDLE>(std::strtoull(number, nullptr, 10));
  return SetEvent(handle) ? 0 : 7;
}

/// Starts a program that is in no job of this one. @return 0 or the system's error.
int BreakAway() {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring line = L"\"" + std::wstring(program) + L"\" --exit 0";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const BOOL started =
      CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_BREAKAWAY_FROM_JOB,
                     nullptr, nullptr, &startup, &process);
  return started ? 0 : static_cast<int>(GetLastError());
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

/// @return 0 when the POST was answered.
int Post(const std::wstring& url) {
  ZLT::HttpRequest request(url.c_str(), L"", nullptr, ZLT::HttpTimeouts::DEFAULT);
  return request.doPost("{}", 2, L"") && request.getStatusCode() == 200 ? 0 : 1;
}

/// @return 0 when BITS has brought the file.
int Download(const std::wstring& url) {
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  FileSystem::createDirectory(folder, true);
  GUID id{};
  DownloadAgent& agent = *DownloadAgent::GetInstance(L"Child", {}, {}, {});
  return agent.DownloadFiles(L"Child", false, {{url, folder + L"\\child.bin"}}, L"", id, nullptr, 0)
             ? 0
             : 1;
}

/// Windows as it was before it knew TLS 1.3: what is asked for besides is not taken either.
std::vector<DWORD> protocolsAsked;
BOOL WINAPI SetOptionOfOlderWindows(HINTERNET handle, DWORD option, void* value, DWORD size) {
  if (option != WINHTTP_OPTION_SECURE_PROTOCOLS) {
    return WinHttpSetOption(handle, option, value, size);
  }
  protocolsAsked.push_back(*static_cast<DWORD*>(value));
  SetLastError(ERROR_INVALID_PARAMETER);
  return (protocolsAsked.back() & WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3) == 0;
}

/// @return 0 when TLS 1.3 and 1.2 are asked for, and 1.2 alone when that is refused.
int AskForProtocols() {
  const FakeImport option("winhttp.dll", "WinHttpSetOption",
                          reinterpret_cast<void*>(&SetOptionOfOlderWindows));
  Post(L"http://127.0.0.1:1/");
  constexpr DWORD Tls12 = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
  const std::vector<DWORD> expected{Tls12 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3, Tls12};
  return protocolsAsked == expected ? 0 : 1;
}

/// The guest DLL as a host has it.
struct Guest {
  HMODULE module = LoadLibraryW(L"host_guest.dll");

  template <typename Result, typename... Arguments>
  Result Call(const char* name, Arguments... arguments) const {
    const auto address = reinterpret_cast<void*>(GetProcAddress(module, name));
    return reinterpret_cast<Result (*)(Arguments...)>(address)(arguments...);
  }
};

bool Publish(std::uint32_t topic, HANDLE event, unsigned int timeout) {
  const auto state = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(event));
  return ZLTPublisherSubscriber::GetInstance()->Publish({false, topic, state}, timeout);
}

/// A notification, a download and another notification. @return true when all reached the guest.
bool Serve(const Guest& guest, const wchar_t* url) {
  guest.Call<void>("GuestStart");
  const std::wstring path = ZLT::utility::GetZltKivDownloadPath() + L"\\guest.bin";
  return Publish(1, nullptr, 20000) && guest.Call<int>("GuestDownload", url, path.c_str()) == 1 &&
         Publish(1, nullptr, 20000) && guest.Call<int>("GuestNotifications") == 2;
}

/// Loads a component of the suite, unloads it while the bus is in it, and loads it again at another
/// place. @return 0 when both served and nothing called where nothing is.
int Reload(const std::wstring& url) {
  FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath(), true);
  const Guest first;
  if (!Serve(first, url.c_str())) return 20;
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (Publish(2, event, 1)) return 21;  // held there
  while (first.Call<int>("GuestNotifications") < 3) SwitchToThread();
  first.Call<void>("GuestCleanUp");
  if (first.Call<int>("GuestDownload", url.c_str(), L"C:\\never") != 0) return 22;
  FreeLibrary(first.module);
  SetEvent(event);
  Publish(1, nullptr, 20000);
  if (GetModuleHandleW(L"host_guest.dll") != nullptr) return 23;
  VirtualAlloc(first.module, 1, MEM_RESERVE, PAGE_NOACCESS);
  const Guest second;
  if (second.module == first.module) return 24;
  return Serve(second, url.c_str()) ? 0 : 25;
}

}  // namespace

std::optional<int> RunAsChild(int count, char** arguments) {
  const std::string mode = count > 1 ? arguments[1] : "";
  const char* first = count > 2 ? arguments[2] : "";
  if (mode == "--start") return StartSuite();
  if (mode == "--doctor") return RunDoctor(std::atoi(first));
  if (mode == "--lease" && count > 3) return HoldLease(first, arguments[3]);
  if (mode == "--append" && count > 3) return AppendRecords(first, arguments[3]);
  if (mode == "--events") return WriteEvents(std::atoi(first));
  if (mode == "--exit") return std::atoi(first);
  if (mode == "--wait") return WaitForEvent(first);
  if (mode == "--tree") return StartGrandchild(first) ? WaitForEvent(first) : 8;
  if (mode == "--leave") return StartGrandchild(first) ? 0 : 8;
  if (mode == "--launch-waiters") return LaunchWaiters(first, count > 3);
  if (mode == "--set") return SetByNumber(first);
  if (mode == "--break-away") return BreakAway();
  if (mode == "--hold") return HoldMark(first);
  if (mode == "--read-input") return ReadInput();
  if (mode == "--print" && count > 3) return Print(std::atoi(first), arguments[3]);
  if (mode == "--echo") return Echo();
  if (mode == "--post") return Post(ZLT::String::UTF8ToUTF16(first));
  if (mode == "--download") return Download(ZLT::String::UTF8ToUTF16(first));
  if (mode == "--older-windows") return AskForProtocols();
  if (mode == "--reload") return Reload(ZLT::String::UTF8ToUTF16(first));
  return std::nullopt;
}
