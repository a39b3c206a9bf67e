#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// @return the folder for what programs keep for all users, without a trailing backslash. The
/// system is asked, not the environment, which the one who starts the host may set.
const std::wstring& ProgramDataFolder();

/// @return where the suite keeps what is the machine's, below it; not made here.
ZLT_API std::wstring SuiteFolder();

}  // namespace refhost
