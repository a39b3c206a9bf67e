#include "reference_host/files/AccessList.h"

#include <array>

namespace refhost {

namespace {

/// Content and entries, their deletion, attributes (an empty folder becomes a link by them), access
/// list, owner; GENERIC_WRITE and GENERIC_ALL, which entries for what is made inside may hold.
constexpr std::uint32_t Changing =
    0x2 | 0x4 | 0x10 | 0x40 | 0x100 | 0x10000 | 0x40000 | 0x80000 | 0x40000000 | 0x10000000;

/// CREATOR OWNER and OWNER RIGHTS stand for whoever owns the object, who is judged as such, or who
/// makes something in it, which only the trusted ones may.
constexpr std::array Owners = {L"S-1-3-0", L"S-1-3-4"};

bool IsOwner(const std::wstring& sid) {
  for (const wchar_t* owner : Owners) {
    if (sid == owner) return true;
  }
  return false;
}

std::wstring Hexadecimal(std::uint32_t mask) {
  std::wstring text;
  for (; mask != 0; mask >>= 4) text.insert(text.begin(), L"0123456789abcdef"[mask & 0xF]);
  return L"0x" + text;
}

}  // namespace

std::wstring RefusalOfRights(const ObjectRights& rights, const std::set<std::wstring>& trusted) {
  if (trusted.count(rights.owner) == 0) return L"it belongs to somebody else, " + rights.owner;
  if (!rights.hasList) return L"it has no access list, anybody may change it";
  for (const AccessEntry& entry : rights.entries) {
    const bool changes = (entry.mask & Changing) != 0;
    if (changes && !IsOwner(entry.sid) && trusted.count(entry.sid) == 0) {
      return entry.sid + L" may change it, access " + Hexadecimal(entry.mask);
    }
  }
  return {};
}

}  // namespace refhost
