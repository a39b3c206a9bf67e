#pragma once

#include <string>

namespace refhost {

/// @return `path` in the notation that takes more than 260 characters, without a trailing
/// backslash: a package may nest deeply.
std::wstring LongPath(std::wstring path);

/// @return what `path` lies in, without a trailing backslash; empty when it has none.
std::wstring FolderOf(const std::wstring& path);

/// @return true when `path` lies below `folder`, at any depth, by its name.
bool IsBelow(const std::wstring& path, const std::wstring& folder);

}  // namespace refhost
