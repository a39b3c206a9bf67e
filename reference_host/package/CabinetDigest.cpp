#include "reference_host/package/CabinetDigest.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "reference_host/package/SignedContent.h"

namespace refhost {

namespace {

void AddRange(Sha256Hash& hash, const CabinetFile& cabinet, std::uint64_t from, std::uint64_t to) {
  std::vector<std::uint8_t> buffer(1 << 20);
  while (from < to) {
    const auto wanted =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(to - from, buffer.size()));
    const std::uint32_t read = cabinet.ReadAt(from, buffer.data(), wanted);
    if (read == 0) throw std::runtime_error("the package cannot be read");
    hash.Add({buffer.data(), read});
    from += read;
  }
}

}  // namespace

Sha256 SignedDigestOf(const CabinetFile& cabinet) {
  Sha256Hash hash;
  for (const ByteRange& range : SignedRanges(cabinet.Header())) {
    AddRange(hash, cabinet, range.from, range.to);
  }
  return hash.Finish();
}

}  // namespace refhost
