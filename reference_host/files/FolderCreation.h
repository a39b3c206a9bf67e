#pragma once

#include <string>

namespace refhost {

/// Creates a folder and its missing parents, unless it is there.
/// @param restricted in, true: what is created is for administrators and SYSTEM only, from its
/// first moment on; the folder is judged and held, see `HoldFolder`.
/// @return why there is no such folder (a phrase for a log line), empty when there is.
std::wstring CreateFolder(const std::wstring& path, bool restricted);

}  // namespace refhost
