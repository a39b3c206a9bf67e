#pragma once

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <bcrypt.h>

#include <array>
#include <cstdint>
#include <span>

namespace refhost {

using Sha256 = std::array<std::uint8_t, 32>;

/// A SHA-256 that takes its bytes piece by piece. Each operation throws std::runtime_error when the
/// platform does not do it.
class Sha256Hash {
 public:
  Sha256Hash();
  ~Sha256Hash() { Close(); }
  Sha256Hash(const Sha256Hash&) = delete;
  Sha256Hash& operator=(const Sha256Hash&) = delete;

  void Add(std::span<const std::uint8_t> bytes);

  /// Once; behind it nothing more is added.
  Sha256 Finish();

 private:
  void Close();

  BCRYPT_ALG_HANDLE _algorithm = nullptr;
  BCRYPT_HASH_HANDLE _hash = nullptr;
};

/// @return the SHA-256 of the bytes. @throws std::runtime_error as above.
Sha256 DigestOf(std::span<const std::uint8_t> bytes);

}  // namespace refhost
