#include "reference_host/files/AccessList.h"

#include <gtest/gtest.h>

namespace {

using refhost::AccessEntry;

const std::set<std::wstring> Trusted = {L"S-1-5-18", L"S-1-5-32-544"};
constexpr const wchar_t* System = L"S-1-5-18";
constexpr const wchar_t* Users = L"S-1-5-32-545";
constexpr std::uint32_t Full = 0x1F01FF;

TEST(AccessList, OnlyTheTrustedOnesMayChangeAnything) {
  const struct {
    const char* name;
    const wchar_t* owner;
    std::vector<AccessEntry> entries;
    const wchar_t* refusal;  ///< a part of it, null: none
  } rows[] = {
      {"the suite's own", System, {{System, Full}, {L"S-1-5-32-544", Full}}, nullptr},
      {"nobody at all", System, {}, nullptr},
      {"others read and run", System, {{Users, 0x1200A9}, {Users, 0xA0000000}}, nullptr},
      {"whoever owns it", System, {{L"S-1-3-0", 0x10000000}, {L"S-1-3-4", Full}}, nullptr},
      {"somebody's", Users, {{System, Full}}, L"belongs to somebody else, S-1-5-32-545"},
      {"nobody's", L"", {}, L"belongs to somebody else"},
      {"as ProgramData hands down", System, {{System, Full}, {Users, 0x116}}, L"access 0x116"},
      {"everybody", System, {{L"S-1-1-0", Full}}, L"S-1-1-0 may change it, access 0x1f01ff"},
      {"group of the creator", System, {{L"S-1-3-1", Full}}, L"S-1-3-1 may change it"},
      {"unknown kind", System, {{L"an unknown kind of entry", 0x10000000}}, L"an unknown kind"},
  };
  for (const auto& row : rows) {
    const std::wstring refusal = refhost::RefusalOfRights({row.owner, true, row.entries}, Trusted);
    EXPECT_EQ(refusal.empty(), row.refusal == nullptr) << row.name;
    if (row.refusal != nullptr) {
      EXPECT_NE(refusal.find(row.refusal), std::wstring::npos) << row.name;
    }
  }
  EXPECT_NE(refhost::RefusalOfRights({System, false, {}}, Trusted), L"");
}

TEST(AccessList, EveryRightToChangeCounts) {
  // Files, folders, extended attributes, deletion of what is inside, attributes, deletion, access
  // list, owner, and the generic rights that hold them.
  for (const std::uint32_t mask :
       {0x2u, 0x4u, 0x10u, 0x40u, 0x100u, 0x10000u, 0x40000u, 0x80000u, 0x40000000u, 0x10000000u}) {
    EXPECT_NE(refhost::RefusalOfRights({System, true, {{Users, mask}}}, Trusted), L"") << mask;
  }
}

}  // namespace
