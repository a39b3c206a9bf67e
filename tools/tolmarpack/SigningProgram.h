#pragma once

#include <string>
#include <vector>

#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

/// @return the command that makes the signed cabinet `result` (not there yet) out of `cabinet`.
/// @throws std::runtime_error when this system's program cannot sign with what the signer has.
std::vector<std::string> SigningWords(const std::filesystem::path& cabinet,
                                      const std::filesystem::path& result, const Signer& signer);

}  // namespace tolmarpack
