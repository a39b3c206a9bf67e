#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/Export.h"

namespace refhost {

/// Judges, without changing anything, whether this process's user can make a folder and write to
/// it, or to the one that is there already; that one, or the nearest parent that is there, is
/// judged as `RefusalOfFolder` does.
/// @param folder in, full path without a trailing backslash.
/// @return what is in the way (a phrase), empty when nothing is.
std::wstring RefusalToUseFolder(const std::wstring& folder);

/// @param folder in, as above; it need not exist.
/// @return the bytes that this process's user may still write there; nothing when nobody can tell.
ZLT_API std::optional<std::uint64_t> FreeBytesFor(const std::wstring& folder);

}  // namespace refhost
