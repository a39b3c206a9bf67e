// The parts below ProcessWrap. Their sources are compiled here once more, with the system calls
// replaced whose answers no test can bring about.
#include <gtest/gtest.h>
#include <windows.h>
// Behind windows.h, whose types it needs.
#include <wtsapi32.h>

#include <string>
#include <thread>
#include <vector>

#include "reference_host/process/CheckQueue.h"
#include "reference_host/process/InstallerStart.h"
#include "tests/host/windows/TestMachine.h"

namespace {

/// The console's session and the user there, as the system tells of them.
DWORD consoleSession;
DWORD userError;

DWORD TellSession() { return consoleSession; }

BOOL TellUser(ULONG, HANDLE* token) {
  SetLastError(userError);
  return userError == 0 && OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token);
}

/// A program whose input or output no driver gives up outlives its termination.
BOOL EndNothing(HANDLE, UINT) { return TRUE; }

/// Counts threads that are about to wait: Windows' own semaphore, since that of GCC 12's library
/// can lose a wake-up here.
HANDLE Waits() {
  static const HANDLE waits = CreateSemaphoreW(nullptr, 0, 1000, nullptr);
  return waits;
}

DWORD TellAndWait(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
  ReleaseSemaphore(Waits(), 1, nullptr);
  return WaitForMultipleObjects(count, handles, all, milliseconds);
}

}  // namespace

#define WTSGetActiveConsoleSessionId TellSession
#define WTSQueryUserToken TellUser
#include "reference_host/process/UserSession.cpp"
#define TerminateJobObject EndNothing
#include "reference_host/process/ProcessTree.cpp"
#define WaitForMultipleObjects TellAndWait
#include "reference_host/process/Patience.cpp"
#undef WaitForMultipleObjects

namespace {

using refhost::CheckQueue;
using refhost::Handle;
using refhost::Patience;

constexpr DWORD Foreign = 4711;

std::wstring Child(const std::wstring& arguments) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return L"\"" + std::wstring(program) + L"\" " + arguments;
}

HANDLE NewEvent(const wchar_t* name = nullptr) { return CreateEventW(nullptr, TRUE, FALSE, name); }

TEST(UserSession, ThereIsATokenOrAnErrorOnlyForAUserInAnotherSession) {
  DWORD own = 0;
  ProcessIdToSessionId(GetCurrentProcessId(), &own);
  const struct {
    DWORD session, userError, error;
  } rows[] = {
      {0xFFFFFFFF, ERROR_PRIVILEGE_NOT_HELD, 0},  // no console at all
      {own, ERROR_PRIVILEGE_NOT_HELD, 0},
      {Foreign, ERROR_NO_TOKEN, 0},  // nobody signed in
      {Foreign, ERROR_PRIVILEGE_NOT_HELD, ERROR_PRIVILEGE_NOT_HELD},
  };
  for (const auto& row : rows) {
    consoleSession = row.session;
    userError = row.userError;
    const refhost::SessionToken user = refhost::TokenForUserSession();
    EXPECT_FALSE(user.token) << row.session << ' ' << row.userError;
    EXPECT_EQ(user.error, row.error) << row.session << ' ' << row.userError;
  }
}

/// An installer whose output goes into a pipe. @return what came through it until its end.
std::string OutputOf(const refhost::SessionToken& user, const std::wstring& arguments) {
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  CreatePipe(&readEnd, &writeEnd, &inheritable, 0);
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  const Handle process = refhost::StartInstaller(
      {Child(arguments), TestMachine::Folder(), true, nullptr, nullptr, writeEnd}, user);
  EXPECT_TRUE(process);
  CloseHandle(writeEnd);
  std::string output(100, ' ');
  DWORD count = 0;
  ReadFile(readEnd, output.data(), 100, &count, nullptr);
  CloseHandle(readEnd);
  EXPECT_EQ(WaitForSingleObject(process.Get(), 20000), DWORD{WAIT_OBJECT_0});
  return output.substr(0, count);
}

TEST(InstallerStart, InheritsNothingInAnotherSession) {
  consoleSession = Foreign;
  userError = 0;
  HANDLE own = nullptr, token = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own);
  DuplicateTokenEx(own, MAXIMUM_ALLOWED, nullptr, SecurityImpersonation, TokenPrimary, &token);
  CloseHandle(own);
  EXPECT_EQ(OutputOf({Handle(token), 0}, L"--echo here"), "");
}

TEST(InstallerStart, ARefusalIsLoggedAndTheHostsSessionTaken) {
  EXPECT_EQ(OutputOf({Handle(), 1314}, L"--echo without"), "[without]");
  EXPECT_EQ(TestMachine::LastError().find(
                "ProcessWrap: not in the user's session, error 1314, but in the host's: "),
            0U);
  // No token at all, which the system refuses.
  EXPECT_EQ(OutputOf({Handle(NewEvent()), 0}, L"--echo refused"), "[refused]");
  EXPECT_EQ(TestMachine::LastError().find("ProcessWrap: not in the user's session, error "), 0U);
  EXPECT_NE(TestMachine::LastError().find("--echo refused"), std::string::npos);
}

TEST(ProcessTree, TheEndOfAProgramThatDoesNotEndIsWaitedForABoundedTime) {
  const std::wstring name = L"tolmar-undying" + std::to_wstring(GetCurrentProcessId());
  const Handle end(NewEvent(name.c_str()));
  refhost::ProcessTree tree({Child(L"--wait " + name), TestMachine::Folder()});
  ASSERT_TRUE(tree.IsRunning());
  EXPECT_FALSE(tree.End(std::chrono::milliseconds(50)));
  SetEvent(end.Get());
  EXPECT_TRUE(refhost::IsGoneWithin(tree.Process(), std::chrono::seconds(20)));
}

TEST(CheckQueue, TheFirstToComeIsTheFirstToGoAndWhoGivesUpHoldsNobodyUp) {
  CheckQueue queue(1);
  const Handle cancel(NewEvent());
  std::vector<int> order;  // written by who has the one place
  std::vector<std::thread> threads;
  const auto comes = [&](int number, HANDLE cancelHandle) {
    threads.emplace_back([&queue, &order, number, cancelHandle] {
      const CheckQueue::Turn turn(queue, Patience(cancelHandle, {}));
      if (turn) order.push_back(number);
    });
    WaitForSingleObject(Waits(), INFINITE);
  };
  {
    while (WaitForSingleObject(Waits(), 0) == WAIT_OBJECT_0) {
    }
    const CheckQueue::Turn turn(queue, Patience(nullptr, {}));
    ASSERT_TRUE(turn);
    for (int number = 0; number < 6; ++number) comes(number, number % 2 ? cancel.Get() : nullptr);
    SetEvent(cancel.Get());
    for (const int number : {1, 3, 5}) threads[static_cast<std::size_t>(number)].join();
    EXPECT_TRUE(order.empty());
  }
  for (const int number : {0, 2, 4}) threads[static_cast<std::size_t>(number)].join();
  EXPECT_EQ(order, (std::vector<int>{0, 2, 4}));
}

TEST(CheckQueue, WhoComesAfterTheCancelEventWaitsForItsGraceAlone) {
  CheckQueue queue(1);
  const Handle cancel(NewEvent());
  SetEvent(cancel.Get());
  const Patience none(cancel.Get(), {}), some(cancel.Get(), std::chrono::milliseconds(50));
  EXPECT_FALSE(CheckQueue::Turn(queue, none));
  const CheckQueue::Turn turn(queue, Patience(nullptr, {}));
  EXPECT_TRUE(turn);
  EXPECT_FALSE(CheckQueue::Turn(queue, some));
}

}  // namespace
