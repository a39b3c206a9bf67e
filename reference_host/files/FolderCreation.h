#pragma once

#include <string>

namespace refhost {

/// Creates a folder and its missing parents, unless it is there.
/// @param restricted in, true: what is created is for administrators and SYSTEM only, from its
/// first moment on; a folder that is there must pass `RefusalOfFolder`.
/// @return why there is no such folder (a phrase for a log line), empty when there is.
std::wstring CreateFolder(const std::wstring& path, bool restricted);

}  // namespace refhost
