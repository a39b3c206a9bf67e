#include <gtest/gtest.h>
#include <windows.h>

#include "host/common/FileSystem.h"
#include "tests/host/windows/TestMachine.h"

namespace {

TEST(Start, AHostWithHighRightsReadsOnlyWhatNobodyElseMayWrite) {
  const std::wstring folder = TestMachine::Folder() + L"\\open";
  const std::wstring file = folder + L"\\host.json";
  FileSystem::createDirectory(folder, false);
  CopyFileW((TestMachine::Folder() + L"\\host.json").c_str(), file.c_str(), FALSE);
  const struct {
    const wchar_t* open;  ///< what everybody may write to
    const char* said;
  } rows[] = {{L"\\host.json", "open\\host.json: is not for a host with high rights, S-1-1-0 may"},
              {L"", "is not for a host with high rights, its folder: S-1-1-0 may"},
              {nullptr, ""}};
  for (const auto& row : rows) {
    if (row.open != nullptr) TestMachine::LetEverybodyWrite(folder + row.open);
    std::string output;
    const unsigned long result = TestMachine::RunAgain(L"--start", file, output);
    EXPECT_EQ(result, row.open == nullptr ? 0U : 1U) << output;
    EXPECT_NE(output.find(row.said), std::string::npos) << output;
    TestMachine::LetEverybodyWrite(file, false);
    TestMachine::LetEverybodyWrite(folder, false);
  }
}

TEST(Start, FollowsTheMachinesValueWhereTheEnvironmentNamesNoFile) {
  std::string output;
  EXPECT_EQ(TestMachine::RunAgain(L"--start", L"", output), 1U);
  EXPECT_NE(output.find("ConfigurationFile"), std::string::npos) << output;
  const std::wstring file = TestMachine::Folder() + L"\\host.json";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Tolmar", 0, nullptr, 0,
                            KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegSetValueExW(key, L"ConfigurationFile", 0, REG_SZ, reinterpret_cast<const BYTE*>(file.c_str()),
                 static_cast<DWORD>(2 * file.size() + 2));
  EXPECT_EQ(TestMachine::RunAgain(L"--start", L"", output), 0U) << output;
  RegDeleteValueW(key, L"ConfigurationFile");
  RegCloseKey(key);
}

}  // namespace
