#include "reference_host/base/Sha256.h"

#include <stdexcept>

namespace refhost {

namespace {

void Check(NTSTATUS status) {
  if (status != 0) throw std::runtime_error("hashing failed");
}

}  // namespace

Sha256Hash::Sha256Hash() {
  if (BCryptOpenAlgorithmProvider(&_algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0 ||
      BCryptCreateHash(_algorithm, &_hash, nullptr, 0, nullptr, 0, 0) != 0) {
    Close();
    throw std::runtime_error("the platform offers no SHA-256");
  }
}

void Sha256Hash::Add(std::span<const std::uint8_t> bytes) {
  Check(
      BCryptHashData(_hash, const_cast<UCHAR*>(bytes.data()), static_cast<ULONG>(bytes.size()), 0));
}

Sha256 Sha256Hash::Finish() {
  Sha256 digest;
  Check(BCryptFinishHash(_hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
  return digest;
}

void Sha256Hash::Close() {
  if (_hash != nullptr) BCryptDestroyHash(_hash);
  if (_algorithm != nullptr) BCryptCloseAlgorithmProvider(_algorithm, 0);
}

Sha256 DigestOf(std::span<const std::uint8_t> bytes) {
  Sha256Hash hash;
  hash.Add(bytes);
  return hash.Finish();
}

}  // namespace refhost
