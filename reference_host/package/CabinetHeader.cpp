#include "reference_host/package/CabinetHeader.h"

#include <algorithm>
#include <string_view>

namespace refhost {

namespace {

constexpr std::string_view Magic = "MSCF";
constexpr std::size_t PlainHeaderBytes = 36;
constexpr unsigned int FlagPrevious = 1, FlagNext = 2, FlagReserve = 4;
constexpr std::uint32_t SignatureReserveBytes = 20;

std::uint32_t Number(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t length) {
  std::uint32_t number = 0;
  for (std::size_t i = length; i-- > 0;) number = number << 8 | bytes[offset + i];
  return number;
}

/// The signature's place stands in the header's reserve, when that has the size for it.
void ReadSignaturePlace(std::span<const std::uint8_t> bytes, CabinetHeader& header) {
  if (bytes.size() < CabinetHeaderBytes || Number(bytes, 36, 2) != SignatureReserveBytes) return;
  header.signatureOffset = Number(bytes, 44, 4);
  header.signatureSize = Number(bytes, 48, 4);
}

}  // namespace

std::string ParseCabinetHeader(std::span<const std::uint8_t> bytes, std::uint64_t fileSize,
                               CabinetHeader& header) {
  if (bytes.size() < PlainHeaderBytes || !std::equal(Magic.begin(), Magic.end(), bytes.begin())) {
    return "it is not a cabinet";
  }
  const std::uint32_t flags = Number(bytes, 30, 2);
  if ((flags & (FlagPrevious | FlagNext)) != 0) return "it is a part of a set of cabinets";
  CabinetHeader found;
  found.size = Number(bytes, 8, 4);
  if (found.size > fileSize) return "it is shorter than it says";
  if ((flags & FlagReserve) != 0) ReadSignaturePlace(bytes, found);
  if (!found.IsSigned() && found.size < fileSize) return "it is longer than it says";
  header = found;
  return {};
}

bool SignatureEndsFile(const CabinetHeader& header, std::uint64_t fileSize) {
  return header.signatureSize != 0 && header.signatureOffset == header.size &&
         std::uint64_t{header.signatureOffset} + header.signatureSize == fileSize;
}

}  // namespace refhost
