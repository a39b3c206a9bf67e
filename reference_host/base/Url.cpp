#include "reference_host/base/Url.h"

#include <algorithm>

namespace refhost {

namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool IsLower(wchar_t c) { return c >= L'a' && c <= L'z'; }
wchar_t Lower(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c; }

std::wstring Lower(std::wstring text) {
  for (wchar_t& c : text) c = Lower(c);
  return text;
}

/// Control characters would split a header or a log line.
bool HasControl(const std::wstring& text) {
  return std::any_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x20 || c == 0x7F; });
}

bool IsHostName(const std::wstring& host) {
  return !host.empty() && std::all_of(host.begin(), host.end(), [](wchar_t c) {
    return IsLower(c) || IsDigit(c) || c == L'-' || c == L'.' || c == L'_';
  });
}

bool IsBracketedAddress(const std::wstring& host) {
  return host.size() > 3 && host.front() == L'[' && host.back() == L']' &&
         std::all_of(host.begin() + 1, host.end() - 1, [](wchar_t c) {
           return IsDigit(c) || (c >= L'a' && c <= L'f') || c == L':' || c == L'.';
         });
}

bool ParsePort(const std::wstring& text, std::uint16_t& port) {
  if (text.empty() || text.size() > 5 || !std::all_of(text.begin(), text.end(), IsDigit)) {
    return false;
  }
  const unsigned long value = std::stoul(text);
  if (value == 0 || value > 0xFFFF) return false;
  port = static_cast<std::uint16_t>(value);
  return true;
}

bool ParseAuthority(const std::wstring& authority, Url& url) {
  const std::size_t colon =
      authority.find(L':', authority.starts_with(L'[') ? authority.find(L']') : 0);
  url.host = Lower(authority.substr(0, colon));
  if (!IsHostName(url.host) && !IsBracketedAddress(url.host)) return false;
  url.port = url.secure ? 443 : 80;
  return colon == std::wstring::npos || ParsePort(authority.substr(colon + 1), url.port);
}

/// @return true for 127.0.0.0/8 in the usual notation, and for nothing that only begins like it.
bool IsLoopbackAddress(const std::wstring& host) {
  if (!host.starts_with(L"127.") || std::count(host.begin(), host.end(), L'.') != 3) return false;
  std::size_t digits = 0;
  for (const wchar_t c : host) {
    if (c == L'.' ? digits == 0 : (!IsDigit(c) || digits == 3)) return false;
    digits = c == L'.' ? 0 : digits + 1;
  }
  return digits != 0;
}

}  // namespace

bool IsLoopbackHost(const std::wstring& host) {
  return host == L"localhost" || host == L"[::1]" || IsLoopbackAddress(host);
}

bool ParseUrl(const std::wstring& text, Url& url) {
  const std::size_t colon = text.find(L"://");
  if (colon == std::wstring::npos || HasControl(text)) return false;
  const std::wstring scheme = Lower(text.substr(0, colon));
  if (scheme != L"https" && scheme != L"http") return false;
  const std::size_t host = colon + 3;
  const std::size_t path = std::min(text.find_first_of(L"/?#", host), text.size());
  Url parsed;
  parsed.secure = scheme == L"https";
  if (!ParseAuthority(text.substr(host, path - host), parsed)) return false;
  parsed.pathAndQuery = text.substr(path, text.find(L'#', path) - path);
  if (!parsed.pathAndQuery.starts_with(L'/')) parsed.pathAndQuery.insert(0, 1, L'/');
  url = parsed;
  return true;
}

bool IsAllowedUrl(const std::wstring& text) {
  Url url;
  return ParseUrl(text, url) && (url.secure || IsLoopbackHost(url.host));
}

std::wstring WithoutQuery(const std::wstring& text) {
  std::wstring shown = text.substr(0, text.find_first_of(L"?#"));
  const std::size_t host = shown.find(L"://");
  if (host == std::wstring::npos) return shown;
  // A refused URL may carry a user and a password.
  const std::size_t at = shown.substr(0, shown.find(L'/', host + 3)).rfind(L'@');
  if (at != std::wstring::npos) shown.erase(host + 3, at + 1 - (host + 3));
  return shown;
}

}  // namespace refhost
