#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "reference_host/package/CabinetMember.h"
#include "reference_host/package/CabinetPolicy.h"
#include "tools/tolmarpack/Lint.h"

namespace tolmarpack {

/// What a host would say to a package.
struct Verdict {
  std::string refusal;  ///< a phrase; empty: it would be unpacked and its installer started
  std::string cause;    ///< identifier of the refusal's cause (Causes.h); empty: none
  refhost::SignatureFindings signature;
  std::vector<refhost::CabinetMember> members;  ///< as far as they are known
};

/// Judges a package in the host's order, by the host's rules: header, signature, publisher, names,
/// size, contents, and whether there is an installer. Without a configuration the host's defaults
/// count.
Verdict Judge(const std::filesystem::path& cabinet, const Yardstick& yardstick);

}  // namespace tolmarpack
