#pragma once

#include "reference_host/base/Sha256.h"
#include "reference_host/package/CabinetFile.h"

namespace refhost {

/// @return the SHA-256 over the parts of the cabinet that a signature vouches for: everything but
/// the signature itself and the fields that adding it changes. The cabinet is signed.
/// @throws std::runtime_error when the file cannot be read.
Sha256 SignedDigestOf(const CabinetFile& cabinet);

}  // namespace refhost
