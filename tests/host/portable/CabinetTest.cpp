#include <gtest/gtest.h>

#include <functional>

#include "reference_host/package/CabinetHeader.h"
#include "reference_host/package/CabinetPolicy.h"

using namespace refhost;

namespace {

using Bytes = std::vector<std::uint8_t>;

void Put(Bytes& bytes, std::size_t offset, std::size_t length, std::uint64_t number) {
  for (std::size_t i = 0; i < length; ++i) {
    bytes[offset + i] = static_cast<std::uint8_t>(number >> 8 * i);
  }
}

/// The header of a signed cabinet of 1000 bytes with a signature of 200 bytes behind it.
Bytes SignedHeader() {
  Bytes bytes(CabinetHeaderBytes);
  std::copy_n("MSCF", 4, bytes.begin());
  Put(bytes, 8, 4, 1000);
  Put(bytes, 30, 2, 4);
  Put(bytes, 36, 2, 20);
  Put(bytes, 44, 4, 1000);
  Put(bytes, 48, 4, 200);
  return bytes;
}

Bytes PlainHeader() {
  Bytes bytes = SignedHeader();
  Put(bytes, 30, 2, 0);
  return bytes;
}

}  // namespace

TEST(CabinetHeader, TellsWholeCabinetsAndTheirSignaturesApart) {
  using Change = std::function<void(Bytes&)>;
  const auto none = [](Bytes&) {};
  const struct {
    const char* name;
    Bytes bytes;
    Change change;
    std::uint64_t fileSize;
    bool readable, isSigned, covered;
  } rows[] = {
      {"signed", SignedHeader(), none, 1200, true, true, true},
      {"plain", PlainHeader(), none, 1000, true, false, false},
      {"empty file", {}, none, 0, false, false, false},
      {"short", PlainHeader(), [](Bytes& b) { b.resize(35); }, 1000, false, false, false},
      {"other file", PlainHeader(), [](Bytes& b) { b[3] = 'X'; }, 1000, false, false, false},
      {"cut off", PlainHeader(), none, 999, false, false, false},
      {"bytes behind", PlainHeader(), none, 1001, false, false, false},
      {"previous", PlainHeader(), [](Bytes& b) { b[30] |= 1; }, 1000, false, false, false},
      {"next", SignedHeader(), [](Bytes& b) { b[30] |= 2; }, 1200, false, false, false},
      {"other reserve", SignedHeader(), [](Bytes& b) { b[36] = 21; }, 1000, true, false, false},
      {"reserve cut", SignedHeader(), [](Bytes& b) { b.resize(59); }, 1000, true, false, false},
      {"no signature", SignedHeader(), [](Bytes& b) { Put(b, 44, 8, 0); }, 1000, true, false,
       false},
      {"bytes behind the signature", SignedHeader(), none, 1201, true, true, false},
      {"gap", SignedHeader(), [](Bytes& b) { Put(b, 8, 4, 999); }, 1200, true, true, false},
      {"overlap", SignedHeader(), [](Bytes& b) { Put(b, 44, 4, 900); }, 1100, true, true, false},
      {"empty signature", SignedHeader(), [](Bytes& b) { Put(b, 48, 4, 0); }, 1000, true, true,
       false},
      {"overflow", SignedHeader(), [](Bytes& b) { Put(b, 48, 4, 0xFFFFFFFF); }, 999 + 1000, true,
       true, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Bytes bytes = row.bytes;
    row.change(bytes);
    CabinetHeader header;
    EXPECT_EQ(ParseCabinetHeader(bytes, row.fileSize, header).empty(), row.readable);
    EXPECT_EQ(header.IsSigned(), row.isSigned);
    EXPECT_EQ(SignatureEndsFile(header, row.fileSize), row.covered);
  }
}

TEST(CabinetPolicy, DecidesWhatMayBeInstalled) {
  const SignatureFindings none{}, good{true, "", "aa"}, bad{true, "it was changed", ""};
  const struct {
    const char* name;
    PackagePolicy policy;
    SignatureFindings findings;
    bool taken;
  } rows[] = {
      {"signed", {true, {}}, good, true},
      {"unsigned", {true, {}}, none, false},
      {"changed", {true, {}}, bad, false},
      {"unsigned, none required", {false, {}}, none, true},
      {"changed, none required", {false, {}}, bad, false},
      {"publisher listed", {true, {"bb", "aa"}}, good, true},
      {"publisher not listed", {true, {"bb"}}, good, false},
      {"publisher not listed, none required", {false, {"bb"}}, good, false},
      {"changed, empty thumbprint listed", {true, {""}}, bad, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(RefusalOfPackage(row.policy, row.findings).empty(), row.taken) << row.name;
  }
  EXPECT_EQ(RefusalOfPackage({}, bad), "it was changed");
}
