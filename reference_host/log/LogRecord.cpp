#include "reference_host/log/LogRecord.h"

#include <chrono>
#include <cstdio>

#include "host/common/Text.h"

namespace refhost {

namespace {

constexpr const wchar_t* NextLine = L"\n    ";

std::string ComposeHead(const LogRecordHead& head) {
  char text[64];
  std::snprintf(text, sizeof text, " %lu %lu %c ", static_cast<unsigned long>(head.processId),
                static_cast<unsigned long>(head.threadId), head.level);
  return ComposeLogTime(head.unixMilliseconds) + text;
}

/// @return true for what a viewer may take for a line end, or act on: C0 and C1 controls, the
/// separators of lines and paragraphs.
bool IsControl(wchar_t c) {
  return (c < 0x20 && c != L'\t') || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

void AppendEscaped(std::wstring& text, wchar_t c) {
  constexpr const wchar_t* Digits = L"0123456789ABCDEF";
  text += L"\\u";
  for (int shift = 12; shift >= 0; shift -= 4) text += Digits[c >> shift & 0xF];
}

}  // namespace

std::string ComposeLogTime(std::int64_t unixMilliseconds) {
  using namespace std::chrono;
  const sys_time<milliseconds> time{milliseconds(unixMilliseconds)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  char text[64];
  std::snprintf(
      text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

std::string ComposeLogRecord(const LogRecordHead& head, const std::wstring& message) {
  std::wstring shown;
  shown.reserve(message.size());
  for (std::size_t i = 0; i < message.size(); ++i) {
    const bool pair = message[i] == L'\r' && i + 1 < message.size() && message[i + 1] == L'\n';
    if (pair) continue;
    if (message[i] == L'\n') {
      shown += NextLine;
    } else if (IsControl(message[i])) {
      AppendEscaped(shown, message[i]);
    } else {
      shown += message[i];
    }
  }
  return ComposeHead(head) + ZLT::String::UTF16ToUTF8(shown) + "\n";
}

}  // namespace refhost
