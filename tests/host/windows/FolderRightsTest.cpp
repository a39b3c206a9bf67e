#include <gtest/gtest.h>
#include <windows.h>

#include "host/common/FileSystem.h"
#include "tests/host/windows/TestMachine.h"

namespace {

using TestMachine::LetEverybodyWrite;
using TestMachine::WriteFile;

std::wstring Below(const std::wstring& name) { return TestMachine::Folder() + L"\\" + name; }

bool Rename(const std::wstring& from, const std::wstring& to) {
  return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

bool IsThere(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

TEST(FileSystemRights, NobodyElseMayRuleOverAFolderOrWhatItLiesInOrHolds) {
  const struct {
    const wchar_t* open;  ///< what everybody may write to
    bool isFile;
    const char* said;
  } rows[] = {{L"outer", false, "rights\\outer: S-1-1-0 may change it"},
              {L"outer\\inner", false, "is refused: S-1-1-0 may change it"},
              {L"outer\\inner\\file", true, "is refused: it holds file: S-1-1-0 may change it"},
              {nullptr, false, nullptr}};
  for (const auto& row : rows) {
    const std::wstring folder = Below(L"rights\\outer\\inner");
    ASSERT_TRUE(FileSystem::createDirectory(folder, false));
    WriteFile(folder + L"\\file", "x");
    if (row.open != nullptr) LetEverybodyWrite(Below(std::wstring(L"rights\\") + row.open));
    EXPECT_EQ(FileSystem::createDirectory(folder, true), row.said == nullptr);
    EXPECT_EQ(FileSystem::fileExists(folder + L"\\file"), row.said == nullptr);
    if (row.said != nullptr) {
      EXPECT_NE(TestMachine::LastError().find(row.said), std::string::npos)
          << TestMachine::LastError();
    }
    LetEverybodyWrite(Below(L"rights\\outer"), false);
    LetEverybodyWrite(folder, false);
    ASSERT_TRUE(FileSystem::deleteDirectoryOrFile(Below(L"rights"), true));
  }
}

TEST(FileSystemRights, AFolderStaysInItsPlaceUntilItIsDeleted) {
  const std::wstring folder = Below(L"held");
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(FileSystem::createDirectory(folder, true));
    ASSERT_TRUE(FileSystem::createDirectory(folder, true));
    EXPECT_FALSE(Rename(folder, Below(L"elsewhere")));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    WriteFile(folder + L"\\file", "x");
    EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(folder, true));
    EXPECT_FALSE(IsThere(folder));
  }
}

TEST(FileSystemRights, AFolderThatAnotherHostHoldsIsEmptied) {
  const std::wstring folder = Below(L"shared");
  ASSERT_TRUE(FileSystem::createDirectory(folder, true));
  WriteFile(folder + L"\\file", "x");
  const HANDLE others =
      CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(folder, true));
  EXPECT_FALSE(IsThere(folder + L"\\file"));
  CloseHandle(others);
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(folder, true));
  EXPECT_FALSE(IsThere(folder));
}

TEST(FileSystemRights, AScriptCountsOnlyWhereItCouldNotBePutByOthers) {
  const std::wstring folder = Below(L"scripts");
  const std::wstring script = folder + L"\\check.PS1";
  ASSERT_TRUE(FileSystem::createDirectory(folder + L"\\sub", false));
  for (const wchar_t* name : {L"\\check.PS1", L"\\package.cab", L"\\new", L"\\sub\\check.ps1"}) {
    WriteFile(folder + name, "x");
  }
  EXPECT_TRUE(FileSystem::fileExists(script));
  ASSERT_TRUE(FileSystem::createDirectory(folder, true));
  EXPECT_FALSE(FileSystem::fileExists(script));
  EXPECT_FALSE(FileSystem::fileExists(folder + L"\\sub\\check.ps1"));
  EXPECT_TRUE(FileSystem::fileExists(folder + L"\\package.cab"));
  ASSERT_TRUE(Rename(folder + L"\\new", script));
  EXPECT_TRUE(FileSystem::fileExists(script));
}

}  // namespace
