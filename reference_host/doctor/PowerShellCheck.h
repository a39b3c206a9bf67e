#pragma once

#include "reference_host/doctor/Finding.h"
#include "reference_host/doctor/Questions.h"

namespace refhost {

/// Is there a PowerShell, and may it run scripts that nobody has signed? The policies of the
/// machine and of this process's user are looked at, the machine's first.
Finding ExaminePowerShell(const Questions& questions);

}  // namespace refhost
