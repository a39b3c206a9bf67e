#include "reference_host/process/Restart.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "host/common/ProcessWrap.h"

namespace {

constexpr const wchar_t* RestartKey = L"SOFTWARE\\Tolmar\\Restart";

void Forget() { RegDeleteKeyExW(HKEY_LOCAL_MACHINE, RestartKey, KEY_WOW64_64KEY, 0); }

/// Runs an installer that ends so, and a check behind it, as the agent does.
void Install(int exitCode) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring line = L"\"" + std::wstring(program) + L"\" --exit ";
  HANDLE process = nullptr;
  ASSERT_EQ(ZLT::ProcessWrap::CreateProcessInUserSession(line + std::to_wstring(exitCode), L"C:\\",
                                                         process, true),
            1);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
  ZLT::ProcessWrap::LaunchApplicationAndCheckExitCode(line + L"0", L"C:\\", true, nullptr);
}

}  // namespace

TEST(Restart, TheStrongestWishIsRecordedWhereTheNextStartForgetsIt) {
  const struct {
    int exitCode;
    refhost::Restart recorded;
  } rows[] = {{0, refhost::Restart::None},         {5, refhost::Restart::None},
              {3010, refhost::Restart::Required},  {0, refhost::Restart::Required},
              {1641, refhost::Restart::Initiated}, {3010, refhost::Restart::Initiated}};
  Forget();
  for (const auto& row : rows) {
    Install(row.exitCode);
    EXPECT_EQ(refhost::RecordedRestart(), row.recorded) << row.exitCode;
  }
  // What makes a key one of this start of the system alone: it takes no key that would outlive it.
  HKEY lasting = nullptr;
  EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, (std::wstring(RestartKey) + L"\\Sub").c_str(), 0,
                            nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE | KEY_WOW64_64KEY, nullptr,
                            &lasting, nullptr),
            ERROR_CHILD_MUST_BE_VOLATILE);
  Forget();
}
