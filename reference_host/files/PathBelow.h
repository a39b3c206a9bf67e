#pragma once

#include <string>

namespace refhost {

/// @param folder in, without a trailing backslash. @return true when `path` begins with the folder
/// and a backslash, in any case; an empty folder has nothing below it.
bool IsBelow(const std::wstring& path, const std::wstring& folder);

}  // namespace refhost
