#pragma once

#include <cstdarg>
#include <string>

namespace refhost {

/// Formats as Windows' own C library does, where "%s" in a wide format takes a wide string (the
/// compiler's replacement takes a narrow one there).
/// @return the text; what goes past a million characters is cut off and said to be.
std::wstring FormatWide(const wchar_t* format, va_list arguments);

}  // namespace refhost
