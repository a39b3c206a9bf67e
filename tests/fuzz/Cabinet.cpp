// A package's header and the decision over what a look at its signature found.

#include "reference_host/package/CabinetHeader.h"
#include "reference_host/package/CabinetPolicy.h"
#include "tests/fuzz/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{data, size};
  const auto fileSize = input.Take<std::uint64_t>();
  refhost::CabinetHeader header;
  const std::size_t looked = std::min(input.size, refhost::CabinetHeaderBytes);
  const bool read = refhost::ParseCabinetHeader({input.data, looked}, fileSize, header).empty();
  Require(read || (header.size == 0 && !header.IsSigned()), "nothing of a refused file is told");
  Require(!read || header.size == fileSize || (header.IsSigned() && header.size < fileSize),
          "size");
  const bool covered = refhost::SignatureEndsFile(header, fileSize);
  Require(!covered || fileSize - header.size == header.signatureSize, "nothing escapes the check");
  const refhost::SignatureFindings findings{header.IsSigned(), covered ? "" : "gap", input.Text()};
  const refhost::PackagePolicy policy{size % 2 != 0, {std::string(64, 'a')}};
  const bool taken = refhost::RefusalOfPackage(policy, findings).empty();
  Require(!taken || !findings.present || findings.thumbprint == policy.trustedPublishers[0], "who");
  Require(!taken || findings.present || !policy.requireSigned, "unsigned ones are refused");
  return 0;
}
