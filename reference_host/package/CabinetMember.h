#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace refhost {

struct CabinetMember {
  std::wstring name;  ///< as in the cabinet: a relative path if the cabinet is honest
  std::uint64_t size = 0;
};

/// Judges all members before the first is written. Pure.
/// @param maxBytes in, what they may come to in all (`maxUnpackedBytes`).
/// @return the bytes that they come to.
/// @throws PackageFault naming the first member that is refused, or that they are too much.
std::uint64_t CheckMembers(const std::vector<CabinetMember>& members, std::uint64_t maxBytes);

}  // namespace refhost
