#include "host/core/DeviceIdAgent.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <bcrypt.h>

#include <algorithm>
#include <array>
#include <utility>

#include "host/common/Text.h"
#include "reference_host/common/Configuration.h"

namespace {

constexpr std::uint32_t DigestBytes = 32;
using Digest = std::array<unsigned char, DigestBytes>;

bool Sha256(std::string text, Digest& digest) {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  if (BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0) {
    return false;
  }
  const NTSTATUS status =
      BCryptHash(algorithm, nullptr, 0, reinterpret_cast<unsigned char*>(text.data()),
                 static_cast<ULONG>(text.size()), digest.data(), DigestBytes);
  BCryptCloseAlgorithmProvider(algorithm, 0);
  return status == 0;
}

}  // namespace

DeviceIdentityService* DeviceIdentityService::GetInstance() {
  static DeviceIdentityService service;
  return &service;
}

DeviceIdAgent* DeviceIdAgent::GetInstance(DeviceIdentityService*) {
  static DeviceIdAgent agent;
  return &agent;
}

unsigned long DeviceIdAgent::GetDeviceID(std::wstring& text) {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return ERROR_NOT_FOUND;
  text = ZLT::String::UTF8ToUTF16(configuration->deviceId);
  return ERROR_SUCCESS;
}

unsigned long DeviceIdAgent::GetDeviceID(unsigned char* bytes, std::uint32_t* length,
                                         unsigned int flags) {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return ERROR_NOT_FOUND;
  if (length == nullptr || flags != 0) return ERROR_INVALID_PARAMETER;
  Digest digest{};
  const std::uint32_t capacity = std::exchange(*length, DigestBytes);
  if (bytes == nullptr || capacity < DigestBytes) return ERROR_INSUFFICIENT_BUFFER;
  if (!Sha256(configuration->deviceId, digest)) return ERROR_INTERNAL_ERROR;
  std::copy(digest.begin(), digest.end(), bytes);
  return ERROR_SUCCESS;
}
