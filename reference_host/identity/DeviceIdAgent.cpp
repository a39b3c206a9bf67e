#include "host/core/DeviceIdAgent.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/common/Text.h"
#include "reference_host/base/Sha256.h"
#include "reference_host/configuration/ConfigurationFile.h"

namespace {

constexpr auto DigestBytes = static_cast<std::uint32_t>(sizeof(refhost::Sha256));

bool Digest(const std::string& text, refhost::Sha256& digest) try {
  digest = refhost::DigestOf({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  return true;
} catch (const std::runtime_error&) {
  return false;
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
  refhost::Sha256 digest{};
  const std::uint32_t capacity = std::exchange(*length, DigestBytes);
  if (bytes == nullptr || capacity < DigestBytes) return ERROR_INSUFFICIENT_BUFFER;
  if (!Digest(configuration->deviceId, digest)) return ERROR_INTERNAL_ERROR;
  std::copy(digest.begin(), digest.end(), bytes);
  return ERROR_SUCCESS;
}
