#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "reference_host/package/CabinetHeader.h"

namespace refhost {

/// What is said of a signature that is not good, whoever has looked at it: phrases for a log line.
namespace SignatureFault {

inline constexpr char NotWhole[] = "its signature does not cover the whole file";
inline constexpr char TooLarge[] = "its signature is too large";
inline constexpr char NotRead[] = "its signature cannot be read";
inline constexpr char NotDecoded[] = "its signature cannot be decoded";
inline constexpr char OtherKind[] = "its signature is none of a program or package";
inline constexpr char Malformed[] = "its signature's content is malformed";
inline constexpr char Changed[] =
    "it was changed after it was signed, or signed with another digest than SHA-256";
inline constexpr char ContentChanged[] = "its signature's content was changed";
inline constexpr char NotOneSigner[] = "it has not exactly one signer";
inline constexpr char NoCertificate[] = "its signer's certificate is missing";
inline constexpr char OtherSigner[] = "its signature does not belong to its signer's certificate";
inline constexpr char NotTrusted[] = "its signer is not trusted for code signing on this machine";

}  // namespace SignatureFault

/// No honest signature comes near; a package must not make the check use up the memory.
constexpr std::uint32_t MaxSignatureBytes = 1 << 20;

constexpr char TimeStampAttribute[] = "1.3.6.1.4.1.311.3.3.1";
constexpr char CounterSignatureAttribute[] = "1.2.840.113549.1.9.6";

struct ByteRange {
  std::uint64_t from;
  std::uint64_t to;  ///< the first byte behind it
};

/// @return the parts of a signed cabinet that its signature vouches for: everything but the
/// signature itself and the fields that adding it changes. Pure.
std::array<ByteRange, 3> SignedRanges(const CabinetHeader& header);

/// What stands before the digest of the signed parts, at the end of what was signed (DER).
constexpr std::uint8_t Sha256DigestInfo[] = {0x30, 0x31, 0x30, 0x0D, 0x06, 0x09, 0x60,
                                             0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02,
                                             0x01, 0x05, 0x00, 0x04, 0x20};

/// @return true when `bytes` end in `prefix` and then `digest`. Pure.
bool EndsIn(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> prefix,
            std::span<const std::uint8_t, 32> digest);

/// @return lower-case hex digits.
std::string Hex(std::span<const std::uint8_t> bytes);

}  // namespace refhost
