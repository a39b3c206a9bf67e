#include "host/common/FileSystem.h"

#include <gtest/gtest.h>
#include <windows.h>
// Behind windows.h, whose types it needs.
#include <aclapi.h>
#include <sddl.h>

#include <thread>

#include "host/common/RegUtil.h"
#include "tests/host/windows/DownloadFixture.h"
#include "tests/host/windows/TestMachine.h"

namespace {

std::wstring Below(const wchar_t* name) { return TestMachine::Folder() + L"\\" + name; }

TEST(FileSystem, CreatesFoldersWithTheirParents) {
  EXPECT_TRUE(FileSystem::createDirectory(Below(L"a\\b/c\\"), false));
  EXPECT_TRUE(FileSystem::createDirectory(Below(L"a\\b\\c"), false));
  TestMachine::WriteFile(Below(L"a\\file"), "x");
  EXPECT_FALSE(FileSystem::createDirectory(Below(L"a\\file"), false));
  EXPECT_FALSE(FileSystem::createDirectory(Below(L"a\\file\\d"), false));
  EXPECT_FALSE(FileSystem::createDirectory(L"Q:\\no\\such\\drive", false));
  EXPECT_FALSE(FileSystem::createDirectory(L"", false));
  EXPECT_TRUE(FileSystem::fileExists(Below(L"a\\file")));
  EXPECT_FALSE(FileSystem::fileExists(Below(L"a\\b")));
  EXPECT_FALSE(FileSystem::fileExists(Below(L"a\\none")));
}

/// @return the entries of a folder's access list.
std::vector<EXPLICIT_ACCESSW> AccessTo(const std::wstring& path, PSECURITY_DESCRIPTOR& holder) {
  PACL list = nullptr;
  EXPECT_EQ(GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, &list, nullptr, &holder),
            DWORD{ERROR_SUCCESS});
  ULONG count = 0;
  EXPLICIT_ACCESSW* entries = nullptr;
  GetExplicitEntriesFromAclW(list, &count, &entries);
  std::vector<EXPLICIT_ACCESSW> access(entries, entries + count);
  LocalFree(entries);
  return access;
}

TEST(FileSystem, ARestrictedFolderIsUsableButNotForEverybody) {
  const std::wstring folder = Below(L"open\\restricted");
  ASSERT_TRUE(FileSystem::createDirectory(folder, true));
  TestMachine::WriteFile(folder + L"\\file", "x");
  EXPECT_EQ(TestMachine::ReadFile(folder + L"\\file"), "x");
  BYTE everyone[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof everyone;
  ASSERT_TRUE(CreateWellKnownSid(WinWorldSid, nullptr, everyone, &size));
  PSECURITY_DESCRIPTOR holder = nullptr;
  const auto access = AccessTo(folder, holder);
  EXPECT_FALSE(access.empty());
  for (const EXPLICIT_ACCESSW& entry : access) {
    const bool forEveryone =
        entry.Trustee.TrusteeForm == TRUSTEE_IS_SID && EqualSid(entry.Trustee.ptstrName, everyone);
    EXPECT_FALSE(forEveryone && entry.grfAccessMode == GRANT_ACCESS &&
                 entry.grfAccessPermissions != 0);
  }
  LocalFree(holder);
}

TEST(FileSystem, DeletesWhatItIsToldTo) {
  const std::wstring tree = Below(L"tree");
  ASSERT_TRUE(FileSystem::createDirectory(tree + L"\\sub", false));
  TestMachine::WriteFile(tree + L"\\sub\\locked", "x");
  SetFileAttributesW((tree + L"\\sub\\locked").c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(FileSystem::deleteDirectoryOrFile(tree, false));
  EXPECT_TRUE(FileSystem::fileExists(tree + L"\\sub\\locked"));
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(tree + L"\\", true));
  EXPECT_EQ(GetFileAttributesW(tree.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(tree, true));
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(Below(L"none\\none"), false));
  EXPECT_FALSE(FileSystem::deleteDirectoryOrFile(L"", true));
}

TEST(FileSystem, WaitsForWhatOthersHoldAndTellsWhatItCouldNotDelete) {
  for (const bool isAlone : {true, false}) {
    const std::wstring folder = Below(L"open");
    ASSERT_TRUE(FileSystem::createDirectory(folder, false));
    const std::wstring held = folder + L"\\held";
    for (const std::wstring& name : {held, folder + L"\\other"}) TestMachine::WriteFile(name, "x");
    const std::wstring path = isAlone ? held : folder;
    const HANDLE handle = TestMachine::Hold(held);
    EXPECT_FALSE(FileSystem::deleteDirectoryOrFile(path, true));
    EXPECT_EQ(FileSystem::fileExists(folder + L"\\other"), isAlone);
    std::thread scanner([handle] {
      Sleep(300);
      CloseHandle(handle);
    });
    EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(path, true));
    scanner.join();
  }
}

TEST(FileSystem, DeletesTreesDeeperThanOldPathsReach) {
  std::wstring path = Below(L"deep");
  for (int i = 0; i < 12; ++i) path += L"\\" + std::wstring(40, L'd');
  ASSERT_TRUE(FileSystem::createDirectory(path, false));
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(Below(L"deep"), true));
  EXPECT_EQ(GetFileAttributesW(Below(L"deep").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(FileSystem, DoesNotFollowLinks) {
  ASSERT_TRUE(FileSystem::createDirectory(Below(L"outside"), false));
  TestMachine::WriteFile(Below(L"outside\\kept"), "x");
  ASSERT_TRUE(FileSystem::createDirectory(Below(L"linked"), false));
  const std::wstring link = Below(L"linked\\link");
  CreateSymbolicLinkW(link.c_str(), Below(L"outside").c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
  if (GetFileAttributesW(link.c_str()) == INVALID_FILE_ATTRIBUTES) {
    GTEST_SKIP() << "no links to be had here";
  }
  EXPECT_FALSE(FileSystem::createDirectory(link, true));
  EXPECT_TRUE(FileSystem::deleteDirectoryOrFile(Below(L"linked"), true));
  EXPECT_TRUE(FileSystem::fileExists(Below(L"outside\\kept")));
}

TEST(FileSystem, KnowsTheLastComponent) {
  EXPECT_EQ(FileSystem::getFileName(L"C:\\a\\b.cab"), L"b.cab");
  EXPECT_EQ(FileSystem::getFileName(L"a/b.cab"), L"b.cab");
  EXPECT_EQ(FileSystem::getFileName(L"C:b.cab"), L"b.cab");
  EXPECT_EQ(FileSystem::getFileName(L"C:\\a\\"), L"");
  EXPECT_EQ(FileSystem::getFileName(L"b.cab"), L"b.cab");
}

TEST(Registry, WritesNumbersIntoThe64BitView) {
  const std::wstring key = L"Software\\TolmarHostTest\\Deep\\Key";
  CRegUtil registry;
  EXPECT_EQ(registry.SetKeyValueInt(HKEY_CURRENT_USER, key, L"Value", 1), 0);
  ASSERT_NE(registry.CreateKey(HKEY_CURRENT_USER, key), 0);
  EXPECT_NE(registry.CreateKey(HKEY_CURRENT_USER, key), 0);
  for (const unsigned int value : {0U, 1U, 0xFFFFFFFFU}) {
    EXPECT_NE(registry.SetKeyValueInt(HKEY_CURRENT_USER, key, L"Value", value), 0);
    DWORD read = 7, size = sizeof read;
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, key.c_str(), L"Value",
                           RRF_RT_REG_DWORD | RRF_SUBKEY_WOW6464KEY, nullptr, &read, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(read, value);
  }
  EXPECT_EQ(registry.CreateKey(HKEY_CURRENT_USER, std::wstring(300, L'k')), 0);
  RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\TolmarHostTest");
}

TEST(Registry, AKeyExistsThoughItMayNotBeWritten) {
  const std::wstring key = L"Software\\TolmarHostTest";
  CRegUtil registry;
  ASSERT_NE(registry.CreateKey(HKEY_CURRENT_USER, key), 0);
  HKEY opened = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, WRITE_DAC | DELETE | KEY_WOW64_64KEY, &opened);
  PSECURITY_DESCRIPTOR rules = nullptr;
  ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;KR;;;WD)", SDDL_REVISION_1, &rules,
                                                       nullptr);
  RegSetKeySecurity(opened, DACL_SECURITY_INFORMATION, rules);
  LocalFree(rules);
  EXPECT_EQ(registry.SetKeyValueInt(HKEY_CURRENT_USER, key, L"Value", 1), 0);
  EXPECT_NE(registry.CreateKey(HKEY_CURRENT_USER, key), 0);
  RegDeleteKeyW(opened, L"");
  RegCloseKey(opened);
}

}  // namespace
