#pragma once

#include <string>

namespace refhost {

/// @return the folder for what programs keep for all users, without a trailing backslash. The
/// system is asked, not the environment, which the one who starts the host may set.
const std::wstring& ProgramDataFolder();

}  // namespace refhost
