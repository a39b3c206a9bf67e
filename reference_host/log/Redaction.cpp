#include "reference_host/log/Redaction.h"

#include <algorithm>
#include <string_view>

namespace refhost {

namespace {

constexpr std::wstring_view LeftOut = L"[left out]";
/// How the header of a JSON Web Token begins: '{"' in base64url.
constexpr std::wstring_view TokenStart = L"eyJ";
/// What no URL can hold. Brackets and apostrophes are legal in one, so a signature may stand behind
/// them; no backslash, since JSON may write a URL with escapes in it.
constexpr std::wstring_view UrlEnds = L" \t\r\n\"<>";

bool IsTokenCharacter(wchar_t c) {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
         c == L'-' || c == L'_';
}

bool IsUrlStart(std::wstring_view rest) {
  const auto starts = [&](std::wstring_view scheme) {
    for (std::size_t i = 0; i < scheme.size(); ++i) {
      if (i >= rest.size() || (rest[i] | 0x20) != (scheme[i] | 0x20)) return false;
    }
    return true;
  };
  return starts(L"http://") || starts(L"https://") || starts(LR"(http:\/\/)") ||
         starts(LR"(https:\/\/)");
}

/// @return position behind the token that starts at `at`: words joined by dots; `at` when there is
/// none.
std::size_t TokenEnd(std::wstring_view text, std::size_t at) {
  if (at > 0 && IsTokenCharacter(text[at - 1])) return at;
  std::size_t end = at;
  bool hasDot = false;
  // A URL that follows without a blank has a query of its own to leave out.
  while (end < text.size() && (IsTokenCharacter(text[end]) || text[end] == L'.') &&
         !IsUrlStart(text.substr(end))) {
    hasDot = hasDot || text[end] == L'.';
    ++end;
  }
  return hasDot ? end : at;
}

/// @return position behind the URL that starts at `at`. When it stands in brackets or apostrophes,
/// the closing one, which could be its own, is taken for theirs.
std::size_t UrlEnd(std::wstring_view text, std::size_t at) {
  const std::size_t end = std::min(text.find_first_of(UrlEnds, at), text.size());
  const wchar_t before = at > 0 ? text[at - 1] : L' ';
  const wchar_t closing = before == L'(' ? L')' : before;
  const bool enclosed = closing == L')' || closing == L'\'';
  return enclosed && text[end - 1] == closing ? end - 1 : end;
}

}  // namespace

std::wstring WithoutSecrets(const std::wstring& text) {
  const std::wstring_view view = text;
  std::wstring out;
  out.reserve(text.size());
  std::size_t urlEnd = 0;
  for (std::size_t at = 0; at < view.size();) {
    const std::wstring_view rest = view.substr(at);
    if (IsUrlStart(rest)) urlEnd = UrlEnd(view, at);
    if (at < urlEnd && (view[at] == L'?' || view[at] == L'#')) {
      out.append(L"?").append(LeftOut);
      at = urlEnd;
      continue;
    }
    const std::size_t end = rest.starts_with(TokenStart) ? TokenEnd(view, at) : at;
    if (end == at) {
      out += view[at++];
    } else {
      out += LeftOut;
      at = end;
    }
  }
  return out;
}

}  // namespace refhost
