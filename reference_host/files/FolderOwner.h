#pragma once

#include <string>

namespace refhost {

/// Judges a folder that is trusted with files that run with high rights: it must be a folder, no
/// link, and belong to the administrators, SYSTEM or this process's user. Whoever owns a folder
/// rules over what is in it, whatever its access list says.
/// @return what is wrong with it (a phrase for a log line), empty when nothing is.
std::wstring RefusalOfFolder(const std::wstring& path);

}  // namespace refhost
