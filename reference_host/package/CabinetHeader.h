#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace refhost {

/// How many of a file's first bytes `ParseCabinetHeader` looks at.
constexpr std::size_t CabinetHeaderBytes = 60;

/// What a cabinet says about itself.
struct CabinetHeader {
  std::uint32_t size = 0;             ///< of the cabinet, in bytes, without a signature behind it
  std::uint32_t signatureOffset = 0;  ///< 0 together with a size of 0: the cabinet is not signed
  std::uint32_t signatureSize = 0;    ///< in bytes

  bool IsSigned() const { return signatureOffset != 0 || signatureSize != 0; }
};

/// Reads a cabinet's header. Pure.
/// @param bytes in, the file's first `CabinetHeaderBytes` bytes, fewer when the file is shorter.
/// @param fileSize in, bytes. @param header out, complete on success only.
/// @return why the file cannot be taken for one whole cabinet (a phrase for a log line), empty on
/// success.
std::string ParseCabinetHeader(std::span<const std::uint8_t> bytes, std::uint64_t fileSize,
                               CabinetHeader& header);

/// @return true when cabinet and signature together are exactly the file: nothing between or behind
/// them escapes the check.
bool SignatureEndsFile(const CabinetHeader& header, std::uint64_t fileSize);

}  // namespace refhost
