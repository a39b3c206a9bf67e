#pragma once

#include <string>

namespace refhost {

/// @return the suite's own folder on this machine, "Tolmar" below the machine's ProgramData folder,
/// without a trailing backslash. It need not exist.
std::wstring ProgramDataFolder();

}  // namespace refhost
