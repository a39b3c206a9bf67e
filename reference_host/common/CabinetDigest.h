#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "reference_host/common/CabinetFile.h"

namespace refhost {

using Sha256 = std::array<std::uint8_t, 32>;

/// @return the SHA-256 of the bytes. @throws std::runtime_error when the platform gives none.
Sha256 DigestOf(std::span<const std::uint8_t> bytes);

/// @return the SHA-256 over the parts of the cabinet that a signature vouches for: everything but
/// the signature itself and the fields that adding it changes. The cabinet is signed.
/// @throws std::runtime_error when the file cannot be read.
Sha256 SignedDigestOf(const CabinetFile& cabinet);

/// @return lower-case hex digits.
std::string Hex(std::span<const std::uint8_t> bytes);

}  // namespace refhost
