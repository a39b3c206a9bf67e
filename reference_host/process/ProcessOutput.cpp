#include "reference_host/process/ProcessOutput.h"

#include <windows.h>

#include "host/common/Log.h"
#include "host/common/Text.h"

namespace refhost {

namespace {

/// Programs write UTF-8 or the code page of their console; what is no UTF-8 is taken for the other.
UINT CodePageOf(const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  const int length =
      MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
  return length > 0 ? CP_UTF8 : CP_OEMCP;
}

std::wstring Decode(const std::string& bytes) {
  if (CodePageOf(bytes) == CP_UTF8) return ZLT::String::UTF8ToUTF16(bytes);
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');
  text.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_OEMCP, 0, bytes.data(), size, text.data(), size)));
  return text;
}

std::wstring TextOf(const ProcessOutput& output) {
  const std::wstring end = EndOf(output, KeptOutputBytes);
  if (end.empty()) return {};
  const bool cut = output.total > KeptOutputBytes;
  const std::wstring head = L"\noutput, " + std::to_wstring(output.total) + L" bytes";
  return head + (cut ? L", its end:\n" : L":\n") + end;
}

}  // namespace

void ProcessOutput::Append(const char* bytes, std::size_t count) {
  kept.append(bytes, count);
  total += count;
  // Not at every step, which would move all of it for a few bytes.
  if (kept.size() > 2 * KeptOutputBytes) kept.erase(0, kept.size() - KeptOutputBytes);
}

std::wstring EndOf(const ProcessOutput& output, std::size_t maxBytes) {
  std::string bytes = output.kept;
  if (bytes.size() > maxBytes) bytes.erase(0, bytes.size() - maxBytes);
  // A character that was cut in two would make the rest look like another encoding.
  if (output.total > bytes.size()) bytes.erase(0, bytes.find('\n') + 1);
  bytes.erase(bytes.find_last_not_of("\r\n ") + 1);
  return Decode(bytes);
}

void LogProcessEnd(bool isError, const std::wstring& ending, std::chrono::milliseconds duration,
                   const std::wstring& commandLine, const ProcessOutput& output) {
  const auto ms = static_cast<unsigned long>(duration.count());
  const std::wstring text = TextOf(output);
  constexpr const wchar_t* Format = L"ProcessWrap: %s after %lu ms: %s%s";
  if (isError) {
    ZLT::g_log.e(Format, ending.c_str(), ms, commandLine.c_str(), text.c_str());
  } else {
    ZLT::g_log.d(Format, ending.c_str(), ms, commandLine.c_str(), text.c_str());
  }
}

}  // namespace refhost
