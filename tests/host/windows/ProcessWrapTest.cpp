#include "host/common/ProcessWrap.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>

#include "host/common/FileSystem.h"
#include "host/common/Text.h"
#include "tests/host/windows/TestMachine.h"

namespace {

using ZLT::ProcessWrap;

/// This program in one of its child modes.
std::wstring Child(const std::wstring& arguments) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return L"\"" + std::wstring(program) + L"\" " + arguments;
}

int Launch(const std::wstring& commandLine, HANDLE cancel = nullptr) {
  return ProcessWrap::LaunchApplicationAndCheckExitCode(commandLine, TestMachine::Folder(), true,
                                                        cancel);
}

/// @return the exit code of an installer that ends.
DWORD Install(const std::wstring& commandLine) {
  HANDLE process = nullptr;
  ProcessWrap::CreateProcessInUserSession(commandLine, TestMachine::Folder(), process, true);
  EXPECT_EQ(WaitForSingleObject(process, 20000), DWORD{WAIT_OBJECT_0});
  DWORD exitCode = 0xFFFFFFFF;
  GetExitCodeProcess(process, &exitCode);
  CloseHandle(process);
  return exitCode;
}

/// A named event for a child to wait for, and what the child answers with.
struct Rendezvous {
  explicit Rendezvous(const std::wstring& name)
      : text(name + std::to_wstring(GetCurrentProcessId())),
        end(CreateEventW(nullptr, TRUE, FALSE, text.c_str())),
        ready(CreateEventW(nullptr, TRUE, FALSE, (text + L"-ready").c_str())) {}
  ~Rendezvous() {
    SetEvent(end);
    CloseHandle(end);
    CloseHandle(ready);
  }
  Rendezvous(const Rendezvous&) = delete;
  Rendezvous& operator=(const Rendezvous&) = delete;

  std::wstring text;
  HANDLE end;
  HANDLE ready;
};

TEST(ProcessWrap, SucceedsExactlyWhenTheProgramRanAndExitedWith0) {
  const struct {
    std::wstring commandLine;
    bool succeeded;
  } rows[] = {
      {Child(L"--exit 0"), true},
      {Child(L"--exit 1"), false},
      {Child(L"--exit 256"), false},
      {Child(L"--exit 259"), false},  // what "still running" is called elsewhere
      {Child(L"--exit -1"), false},
      {L"C:\\none\\none.exe", false},
      {L"", false},
      {std::wstring(40000, L'x'), false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Launch(row.commandLine) != 0, row.succeeded)
        << ZLT::String::UTF16ToUTF8(row.commandLine.substr(0, 200));
  }
  EXPECT_EQ(ProcessWrap::LaunchApplicationAndCheckExitCode(Child(L"--exit 0"), L"C:\\none", true,
                                                           nullptr),
            0);
}

TEST(ProcessWrap, NoProgramWaitsForInput) {
  EXPECT_NE(Launch(Child(L"--read-input")), 0);
  EXPECT_EQ(Install(Child(L"--read-input")), 0U);
}

TEST(ProcessWrap, AProgramRunsThoughTheCancelEventIsSignalledAlready) {
  const HANDLE cancel = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  EXPECT_NE(Launch(Child(L"--exit 0"), cancel), 0);
  EXPECT_EQ(Launch(Child(L"--exit 1"), cancel), 0);
  CloseHandle(cancel);
}

TEST(ProcessWrap, CancellingEndsTheWholeTreeSoon) {
  const Rendezvous tree(L"tolmar-tree");
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  int result = 7;
  std::thread launcher([&] { result = Launch(Child(L"--tree " + tree.text), cancel); });
  EXPECT_EQ(WaitForSingleObject(tree.ready, 20000), DWORD{WAIT_OBJECT_0});
  const HANDLE mark = OpenMutexW(SYNCHRONIZE, FALSE, (tree.text + L"-mark").c_str());
  EXPECT_NE(mark, nullptr);
  const auto begin = std::chrono::steady_clock::now();
  SetEvent(cancel);
  launcher.join();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  EXPECT_EQ(result, 0);
  // The grandchild owned the mutex to its end.
  EXPECT_EQ(WaitForSingleObject(mark, 5000), DWORD{WAIT_ABANDONED});
  CloseHandle(mark);
  CloseHandle(cancel);
}

TEST(ProcessWrap, TheTimeOutCountsFromAProgramsStartAndTheGraceFromItsCall) {
  const struct {
    const char* key;
    const wchar_t* event;
    const char* records[2];
  } rows[] = {
      {"processTimeoutSeconds",
       L"",
       {"ended by its time-out of 1 s after 1", "ended by its time-out of 1 s after 1"}},
      {"cancelledCheckGraceSeconds",
       L" signalled",
       {"ended by its grace of 1000 ms after the cancel event after ",
        "not started, its grace of 1000 ms after the cancel event came before its turn: "}},
  };
  for (const auto& row : rows) {
    const Rendezvous hung(L"tolmar-hung");
    Json::Value changes;
    changes[row.key] = 1;
    changes["maxCheckScripts"] = 1;
    const std::wstring configuration = TestMachine::ConfigurationWith(changes);
    const std::size_t before = TestMachine::ReadLog(L"ZLT.log").size();
    std::string output;
    EXPECT_EQ(
        TestMachine::RunAgain(L"--launch-waiters " + hung.text + row.event, configuration, output),
        0U);
    std::string log = TestMachine::ReadLog(L"ZLT.log").substr(before);
    for (const char* record : row.records) {
      const std::size_t found = log.find(std::string(" E ProcessWrap: ") + record);
      ASSERT_NE(found, std::string::npos) << record << '\n' << log;
      log.erase(found, std::strlen(record));
    }
  }
}

TEST(ProcessWrap, WhoWaitsForATurnIsCancelledAtOnce) {
  const Rendezvous first(L"tolmar-first"), second(L"tolmar-second");
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  int results[3] = {7, 7, 7};
  // Two places: TestMachine's configuration.
  std::thread one([&] { results[0] = Launch(Child(L"--hold " + first.text)); });
  std::thread two([&] { results[1] = Launch(Child(L"--hold " + second.text)); });
  EXPECT_EQ(WaitForSingleObject(first.ready, 20000), DWORD{WAIT_OBJECT_0});
  EXPECT_EQ(WaitForSingleObject(second.ready, 20000), DWORD{WAIT_OBJECT_0});
  std::thread three([&] { results[2] = Launch(Child(L"--exit 0"), cancel); });
  // Whether it waits already or comes later, there is no place for it.
  SetEvent(cancel);
  three.join();
  EXPECT_EQ(results[2], 0);
  EXPECT_EQ(WaitForSingleObject(first.end, 0), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(TestMachine::LastError().find("ProcessWrap: not started, "), 0U);
  SetEvent(first.end);
  SetEvent(second.end);
  one.join();
  two.join();
  EXPECT_NE(results[0], 0);
  EXPECT_NE(results[1], 0);
  CloseHandle(cancel);
}

TEST(ProcessWrap, NoHandleIsInheritedButTheStreams) {
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const HANDLE event = CreateEventW(&inheritable, TRUE, FALSE, nullptr);
  const std::wstring line =
      Child(L"--set " + std::to_wstring(reinterpret_cast<std::uintptr_t>(event)));
  Launch(line);
  Install(line);
  EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_TIMEOUT});
  CloseHandle(event);
}

TEST(ProcessWrap, AnInstallersChildrenMayLeaveItsJob) {
  EXPECT_EQ(Install(Child(L"--break-away")), 0U);
  EXPECT_EQ(Launch(Child(L"--break-away")), 0);
}

TEST(ProcessWrap, TheRecordOfAProgramHoldsTheEndOfItsOutput) {
  EXPECT_EQ(Launch(Child(L"--print 20000 3")), 0);
  const std::string log = TestMachine::ReadLog(L"ZLT.log");
  const std::size_t record = log.rfind(" D ProcessWrap: exit code 3 after ");
  ASSERT_NE(record, std::string::npos);
  const std::string text = log.substr(record, log.find("\n2", record) - record);
  EXPECT_NE(text.find("--print 20000 3\n    output, 228913 bytes, its end:\n    line "),
            std::string::npos);
  EXPECT_NE(text.find("\n    line 20000\n    to standard error"), std::string::npos);
  EXPECT_EQ(text.find("line 10000\n"), std::string::npos);
}

TEST(ProcessWrap, ANameArrivesAsOneArgumentAndNothingOfItRuns) {
  for (const wchar_t* name :
       {L"a b.ps1", L"a & echo 1 >canary & b", L"a; New-Item canary; b", L"$(New-Item canary)",
        L"%TEMP% ^| `n", L"it's (1) \u00FC \u65E5\u672C \U0001F600"}) {
    EXPECT_NE(Launch(Child(L"--echo \"" + std::wstring(name) + L"\" end")), 0);
    const std::string arrived = ZLT::String::UTF16ToUTF8(L'[' + std::wstring(name) + L"][end]");
    EXPECT_NE(TestMachine::ReadLog(L"ZLT.log").find(arrived), std::string::npos) << arrived;
  }
  EXPECT_FALSE(FileSystem::fileExists(TestMachine::Folder() + L"\\canary"));
}

TEST(ProcessWrap, WhatAFinishedProgramHasStartedRunsOn) {
  const Rendezvous left(L"tolmar-left");
  EXPECT_NE(Launch(Child(L"--leave " + left.text)), 0);
  const HANDLE mark = OpenMutexW(SYNCHRONIZE, FALSE, (left.text + L"-mark").c_str());
  ASSERT_NE(mark, nullptr);
  EXPECT_EQ(WaitForSingleObject(mark, 200), DWORD{WAIT_TIMEOUT});
  SetEvent(left.end);
  EXPECT_EQ(WaitForSingleObject(mark, 20000), DWORD{WAIT_ABANDONED});
  CloseHandle(mark);
}

TEST(ProcessWrap, AStartedInstallerIsHandedToTheCaller) {
  const Rendezvous installer(L"tolmar-installer");
  HANDLE process = nullptr;
  ASSERT_NE(ProcessWrap::CreateProcessInUserSession(Child(L"--wait " + installer.text),
                                                    TestMachine::Folder(), process, true),
            0);
  EXPECT_EQ(WaitForSingleObject(process, 0), DWORD{WAIT_TIMEOUT});
  SetEvent(installer.end);
  EXPECT_EQ(WaitForSingleObject(process, 20000), DWORD{WAIT_OBJECT_0});
  CloseHandle(process);
  // The record comes from a thread that nobody waits for.
  const std::string record = "--wait " + ZLT::String::UTF16ToUTF8(installer.text);
  for (int i = 0; i < 500 && TestMachine::ReadLog(L"ZLT.log").find(record) == std::string::npos;
       ++i) {
    Sleep(10);
  }
  EXPECT_NE(TestMachine::ReadLog(L"ZLT.log").find(record), std::string::npos);
  process = GetCurrentProcess();
  EXPECT_EQ(ProcessWrap::CreateProcessInUserSession(L"C:\\none.exe", L"C:\\", process, true), 0);
  EXPECT_EQ(process, nullptr);
}

}  // namespace
