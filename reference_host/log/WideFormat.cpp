#include "reference_host/log/WideFormat.h"

#include <algorithm>
#include <cstdio>

namespace refhost {

namespace {

constexpr int MaxCharacters = 1000000;

int LengthOf(const wchar_t* format, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  const int length = _vscwprintf(format, copy);
  va_end(copy);
  return length;
}

}  // namespace

std::wstring FormatWide(const wchar_t* format, va_list arguments) {
  const int length = LengthOf(format, arguments);
  if (length < 0) return std::wstring(L"[not formatted] ") + format;
  std::wstring text(static_cast<std::size_t>(std::min(length, MaxCharacters)), L'\0');
  // Not terminated when it just fills the buffer; the string has its own terminator.
  _vsnwprintf(text.data(), text.size(), format, arguments);
  if (length > MaxCharacters) {
    text += L" [" + std::to_wstring(length - MaxCharacters) + L" more characters]";
  }
  return text;
}

}  // namespace refhost
