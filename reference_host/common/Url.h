#pragma once

#include <cstdint>
#include <string>

namespace refhost {

/// The parts of an absolute http or https URL.
struct Url {
  bool secure = false;
  std::wstring host;
  std::uint16_t port = 0;
  std::wstring pathAndQuery;
};

/// @return true and fills `url` when `text` is an absolute http or https URL without user
/// information.
bool ParseUrl(const std::wstring& text, Url& url);

/// @return true when the suite may talk to `text`: https anywhere, http to a loopback host only.
bool IsAllowedUrl(const std::wstring& text);

/// @return `text` up to its query or fragment: what may stand in a log.
std::wstring WithoutQuery(const std::wstring& text);

}  // namespace refhost
