#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace refhost {

/// @return the code that stands for an HTTP status among the system's codes.
HRESULT HttpCode(unsigned long status);

/// @return the HTTP status that a code stands for, 0 when it stands for none.
std::uint32_t HttpStatusOf(HRESULT code);

/// @return a sentence for a code that nobody else describes: HTTP statuses, WinHTTP's errors and
/// what the system knows.
std::wstring DescriptionOf(HRESULT code);

/// @return that sentence and the code: "... (code 0x80190194)".
std::wstring DescriptionWithCode(HRESULT code);

}  // namespace refhost
