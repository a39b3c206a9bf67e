#pragma once

#include <string>

namespace refhost {

/// @return `path` in the notation that takes more than 260 characters, without a trailing
/// backslash: a package may nest deeply.
std::wstring LongPath(std::wstring path);

}  // namespace refhost
