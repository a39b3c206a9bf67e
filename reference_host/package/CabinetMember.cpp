#include "reference_host/package/CabinetMember.h"

#include "host/common/Text.h"
#include "reference_host/files/MemberName.h"
#include "reference_host/package/PackageFault.h"

namespace refhost {

std::uint64_t CheckMembers(const std::vector<CabinetMember>& members, std::uint64_t maxBytes) {
  MemberNames names;
  std::uint64_t total = 0;
  for (const CabinetMember& member : members) {
    const std::string refusal = names.Add(member.name);
    if (!refusal.empty()) {
      throw PackageFault("package.member", "the package holds a member that is refused (" +
                                               refusal +
                                               "): " + ZLT::String::UTF16ToUTF8(member.name));
    }
    total += member.size;
    if (total > maxBytes) {
      throw PackageFault("package.too-large",
                         "the package unpacks to more bytes than maxUnpackedBytes allows");
    }
  }
  return total;
}

}  // namespace refhost
