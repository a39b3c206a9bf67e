#pragma once

#include <chrono>
#include <vector>

#include "host/Export.h"
#include "reference_host/doctor/Finding.h"

namespace refhost {

/// How long the service and BITS have for their answers, which are waited for at the same time.
inline constexpr std::chrono::milliseconds DoctorPatience{10000};

/// Examines whether this device can do what the suite is for: configuration, folders, service,
/// clock, PowerShell, BITS and so on. Changes nothing on the device: no folder is made, no log is
/// written from then on by a process that has not begun one. Blocks for little more than
/// `patience`.
/// @return one finding a check, the configuration's first.
ZLT_API std::vector<Finding> Examine(std::chrono::milliseconds patience = DoctorPatience);

}  // namespace refhost
