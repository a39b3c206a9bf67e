#pragma once

#include <string>

namespace refhost {

/// @return false for an address that BITS does not take: over 2,200 characters, or a part of its
/// path over 260 ("BG_FILE_INFO structure" of Microsoft's documentation). Pure.
bool IsAddressForBits(const std::wstring& url);

/// @return false for a local path that BITS does not take: over 260 characters. Pure.
bool IsPathForBits(const std::wstring& path);

/// @return `headers` with a line end behind the last line as well, as BITS needs it.
std::wstring HeadersForBits(std::wstring headers);

}  // namespace refhost
