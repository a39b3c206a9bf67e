#pragma once

#include <string>

namespace refhost {

/// @return `path` in the notation that takes more than 260 characters, without a trailing
/// backslash: a package may nest deeply.
std::wstring LongPath(std::wstring path);

/// Creates a folder and its missing parents, unless it is there.
/// @param restricted in, true: what is created is for administrators and SYSTEM only, from its
/// first moment on; a folder that is there must pass `RefusalOfFolder`.
/// @return why there is no such folder (a phrase for a log line), empty when there is.
std::wstring CreateFolder(const std::wstring& path, bool restricted);

/// Judges a folder that is trusted with files that run with high rights: it must be a folder, no
/// link, and belong to the administrators, SYSTEM or this process's user. Whoever owns a folder
/// rules over what is in it, whatever its access list says.
/// @return what is wrong with it (a phrase for a log line), empty when nothing is.
std::wstring RefusalOfFolder(const std::wstring& path);

}  // namespace refhost
