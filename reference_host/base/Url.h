#pragma once

#include <cstdint>
#include <string>

namespace refhost {

/// The parts of an absolute http or https URL.
struct Url {
  bool secure = false;
  std::wstring host;  ///< lower case; an IPv6 address in brackets
  std::uint16_t port = 0;
  std::wstring pathAndQuery;  ///< begins with a slash; no fragment
};

/// @return true and fills `url` when `text` is an absolute http or https URL without user
/// information.
bool ParseUrl(const std::wstring& text, Url& url);

/// @return true when `host`, as `ParseUrl` gives it, is this machine: localhost, 127.x.y.z or
/// [::1].
bool IsLoopbackHost(const std::wstring& host);

/// This machine's usual names, as WinHTTP and BITS take a list of what no proxy is asked for.
constexpr const wchar_t* LoopbackHosts = L"localhost 127.0.0.1 [::1]";

/// @return true when the suite may talk to `text`: https anywhere, http to a loopback host only.
bool IsAllowedUrl(const std::wstring& text);

/// @return `text` up to its query or fragment and without user information: what may stand in a
/// log.
std::wstring WithoutQuery(const std::wstring& text);

}  // namespace refhost
