#pragma once

#include <cstdint>
#include <string>

#include "host/Export.h"

/// The suite's source of device identity, made by the host; components only pass it on.
class ZLT_API DeviceIdentityService {
 public:
  /// @return the one service, never null. Any thread.
  static DeviceIdentityService* GetInstance();

 private:
  DeviceIdentityService() = default;
};

/// Reads the device identifier. Any thread; nothing throws.
class ZLT_API DeviceIdAgent {
 public:
  /// @param service in, where the identity comes from; not owned.
  /// @return the one agent, never null.
  static DeviceIdAgent* GetInstance(DeviceIdentityService* service);

  /// @param text out, the identifier as text; left as it was on failure.
  /// @return 0 on success.
  unsigned long GetDeviceID(std::wstring& text);

  /// @param bytes out, the binary identifier (SHA-256 of the textual one).
  /// @param length in: capacity of `bytes`; out: bytes written, or, when the capacity is too small,
  /// bytes needed.
  /// @param flags in, 0.
  /// @return 0 on success; otherwise `bytes` is untouched.
  unsigned long GetDeviceID(unsigned char* bytes, std::uint32_t* length, unsigned int flags);

 private:
  DeviceIdAgent() = default;
};
