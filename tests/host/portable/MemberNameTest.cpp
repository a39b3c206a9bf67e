#include "reference_host/files/MemberName.h"

#include <vector>

#include <gtest/gtest.h>

using refhost::MemberNames;
using refhost::RefusalOfMemberName;

TEST(MemberName, OrdinaryNamesAndSubFoldersAreTaken) {
  for (const wchar_t* name : {L"a", L"install.ps1", L"tools\\deep/er\\x.txt", L".config", L"a..b",
                              L"console.txt", L"com.txt", L"COM10", L"nul\u00E9.txt", L"a b.txt",
                              L"\u00DCber \u65E5\u672C.txt", L" leading", L"lpt\u00B4"}) {
    EXPECT_EQ(RefusalOfMemberName(name), "") << name;
  }
}

TEST(MemberName, NamesThatLeaveTheFolderOrMeanSomethingElseAreRefused) {
  for (const wchar_t* name :
       {L"",          L"..",        L"..\\x",        L"a\\..\\x",   L"a/../x",    L".",
        L".\\a",      L"\\a",       L"/a",           L"\\\\srv\\s", L"a\\\\b",    L"a\\",
        L"C:\\a",     L"C:a",       L"a:stream",     L"a.",         L"a ",        L"a. .\\b",
        L"NUL",       L"nul.txt",   L"d\\CoM1.a.b",  L"lpt9",       L"com\u00B2", L"aux .txt",
        L"CONIN$",    L"conout$.x", L"COM0",         L"a\tb",       L"a\x01",     L"a\x7F",
        L"what?.txt", L"*",         L"\\\\?\\C:\\a", L"a|b",        L"<a>",       L"\"a\"",
        L"...",       L"x\\ \\y"}) {
    EXPECT_NE(RefusalOfMemberName(name), "") << name;
  }
  EXPECT_NE(RefusalOfMemberName(std::wstring_view(L"a\0b", 3)), "");
}

TEST(MemberName, NoNameMayHideAnother) {
  const struct {
    std::vector<const wchar_t*> taken;
    const wchar_t* refused;
  } rows[] = {{{L"a.txt", L"b\\a.txt"}, L"A.TXT"},
              {{L"b\\a"}, L"B/A"},
              {{L"x"}, L"X\\y"},
              {{L"x\\y\\z"}, L"X\\Y"},
              {{}, L"..\\x"}};
  for (const auto& row : rows) {
    MemberNames names;
    for (const wchar_t* name : row.taken) EXPECT_EQ(names.Add(name), "") << name;
    EXPECT_NE(names.Add(row.refused), "") << row.refused;
    EXPECT_EQ(names.Add(L"other"), "");
  }
}
