#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace refhost {

/// What somebody is allowed to do with a file or folder. Denials are left out: they only ever take
/// away.
struct AccessEntry {
  std::wstring sid;  ///< as text, "S-1-5-18"
  std::uint32_t mask = 0;
};

/// Who rules over a file or folder.
struct ObjectRights {
  std::wstring owner;    ///< SID as text
  bool hasList = false;  ///< without an access list everybody may do everything
  std::vector<AccessEntry> entries;
};

/// Judges who may change, replace or delete a file or folder, or something in it. An entry that
/// only comes down to what is made inside counts like any other: what is made inside matters as
/// much. Pure.
/// @param trusted in, SIDs as texts.
/// @return what is wrong (a phrase for a log line), empty when it is the trusted ones alone.
std::wstring RefusalOfRights(const ObjectRights& rights, const std::set<std::wstring>& trusted);

}  // namespace refhost
