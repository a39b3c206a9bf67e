#pragma once

#include <cstdint>

/// The notification that tells of a device's set-up: topic, and its state DEVICE_CONFIGURE.
inline constexpr std::uint32_t DeviceTopic = 4;
inline constexpr std::uint32_t DeviceConfigured = 15;
