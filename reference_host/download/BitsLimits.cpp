#include "reference_host/download/BitsLimits.h"

#include <algorithm>

namespace refhost {

namespace {

constexpr std::size_t LongestAddress = 2200;
constexpr std::size_t LongestPath = 260;

}  // namespace

bool IsAddressForBits(const std::wstring& url) {
  if (url.size() > LongestAddress) return false;
  const std::size_t path = url.find(L"://") == std::wstring::npos ? 0 : url.find(L"://") + 3;
  const std::size_t end = std::min(url.find_first_of(L"?#", path), url.size());
  for (std::size_t begin = path; begin < end;) {
    const std::size_t slash = std::min(url.find(L'/', begin), end);
    if (slash - begin > LongestPath) return false;
    begin = slash + 1;
  }
  return true;
}

bool IsPathForBits(const std::wstring& path) { return path.size() <= LongestPath; }

std::wstring HeadersForBits(std::wstring headers) {
  if (!headers.empty() && !headers.ends_with(L"\r\n")) headers += L"\r\n";
  return headers;
}

}  // namespace refhost
