#include "reference_host/package/SignedContent.h"

#include <algorithm>

namespace refhost {

std::array<ByteRange, 3> SignedRanges(const CabinetHeader& header) {
  // Left out: the first reserved field, the cabinet's number in a set, and the signature's place.
  return {{{0, 4}, {8, 34}, {56, header.signatureOffset}}};
}

bool EndsIn(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> prefix,
            std::span<const std::uint8_t, 32> digest) {
  if (bytes.size() < prefix.size() + digest.size()) return false;
  const auto end = bytes.last(prefix.size() + digest.size());
  return std::ranges::equal(end.first(prefix.size()), prefix) &&
         std::ranges::equal(end.last(digest.size()), digest);
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  constexpr char Digits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += Digits[byte >> 4];
    text += Digits[byte & 15];
  }
  return text;
}

}  // namespace refhost
