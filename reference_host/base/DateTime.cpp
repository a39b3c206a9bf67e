#include "host/common/DateTime.h"

#include <windows.h>

#include <cstdio>
#include <ctime>
#include <cwchar>

std::int64_t DateTimeUtility::GetCurrentDatetime() { return std::time(nullptr); }

double DateTimeUtility::CompareDateTime(std::int64_t later, std::int64_t earlier) {
  return static_cast<double>(later) - static_cast<double>(earlier);
}

namespace ZLT {

std::wstring System::GetTime() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  wchar_t text[32];
  std::swprintf(text, std::size(text), L"%04d-%02d-%02d %02d:%02d:%02d", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond);
  return text;
}

}  // namespace ZLT
