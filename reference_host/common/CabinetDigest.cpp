#include "reference_host/common/CabinetDigest.h"

#include <bcrypt.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace refhost {

namespace {

class Hash {
 public:
  Hash() {
    if (BCryptOpenAlgorithmProvider(&_algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0 ||
        BCryptCreateHash(_algorithm, &_hash, nullptr, 0, nullptr, 0, 0) != 0) {
      Close();
      throw std::runtime_error("the platform offers no SHA-256");
    }
  }
  ~Hash() { Close(); }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;

  void Add(std::span<const std::uint8_t> bytes) {
    Check(BCryptHashData(_hash, const_cast<UCHAR*>(bytes.data()), static_cast<ULONG>(bytes.size()),
                         0));
  }

  Sha256 Finish() {
    Sha256 digest;
    Check(BCryptFinishHash(_hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
    return digest;
  }

 private:
  static void Check(NTSTATUS status) {
    if (status != 0) throw std::runtime_error("hashing failed");
  }

  void Close() {
    if (_hash != nullptr) BCryptDestroyHash(_hash);
    if (_algorithm != nullptr) BCryptCloseAlgorithmProvider(_algorithm, 0);
  }

  BCRYPT_ALG_HANDLE _algorithm = nullptr;
  BCRYPT_HASH_HANDLE _hash = nullptr;
};

void AddRange(Hash& hash, const CabinetFile& cabinet, std::uint64_t from, std::uint64_t to) {
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

Sha256 DigestOf(std::span<const std::uint8_t> bytes) {
  Hash hash;
  hash.Add(bytes);
  return hash.Finish();
}

Sha256 SignedDigestOf(const CabinetFile& cabinet) {
  Hash hash;
  // Left out: the first reserved field, the cabinet's number in a set, and the signature's place.
  AddRange(hash, cabinet, 0, 4);
  AddRange(hash, cabinet, 8, 34);
  AddRange(hash, cabinet, 56, cabinet.Header().signatureOffset);
  return hash.Finish();
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
