#include "host/common/ProcessWrap.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <thread>

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

TEST(ProcessWrap, NoProgramWaitsForInput) { EXPECT_NE(Launch(Child(L"--read-input")), 0); }

TEST(ProcessWrap, ACancelledProgramIsNotStarted) {
  const HANDLE cancel = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  EXPECT_EQ(Launch(Child(L"--exit 0"), cancel), 0);
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

TEST(ProcessWrap, TheTimeOutEndsTheProgram) {
  const Rendezvous hung(L"tolmar-hung");
  const std::wstring configuration = TestMachine::Folder() + L"\\short.json";
  std::string json = TestMachine::ReadFile(TestMachine::Folder() + L"\\host.json");
  const std::string before = "\"processTimeoutSeconds\" : 20";
  ASSERT_NE(json.find(before), std::string::npos);
  json.replace(json.find(before), before.size(), "\"processTimeoutSeconds\" : 1");
  TestMachine::WriteFile(configuration, json);
  std::string output;
  EXPECT_EQ(TestMachine::RunAgain(L"--launch-waiter " + hung.text, configuration, output), 0U);
  EXPECT_NE(TestMachine::ReadLog(L"ZLT.log").find("ended by its time-out"), std::string::npos);
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
  process = GetCurrentProcess();
  EXPECT_EQ(ProcessWrap::CreateProcessInUserSession(L"C:\\none.exe", L"C:\\", process, true), 0);
  EXPECT_EQ(process, nullptr);
}

}  // namespace
