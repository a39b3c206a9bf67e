#pragma once

#include <string>

namespace refhost {

/// Judges a folder that is trusted with files that run with high rights, and all that it lies in.
/// @return what is wrong with it (a phrase for a log line), empty when nothing is and this process
/// has not been refused it for what it holds.
std::wstring RefusalOfFolder(const std::wstring& path);

}  // namespace refhost
