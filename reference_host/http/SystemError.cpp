#include "reference_host/http/SystemError.h"

#include <cwchar>
#include <iterator>
#include <map>

namespace refhost {

namespace {

/// The upper halves of codes that stand for HTTP statuses and for system errors.
constexpr std::uint32_t HttpFacility = 0x80190000;
constexpr std::uint32_t SystemFacility = 0x80070000;

/// @return the lower half of a code of that facility, 0 of any other.
std::uint32_t NumberIn(std::uint32_t facility, HRESULT code) {
  const auto number = static_cast<std::uint32_t>(code);
  return (number & 0xFFFF0000) == facility ? number & 0xFFFF : 0;
}

std::wstring SystemText(HRESULT code) {
  wchar_t text[256];
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     static_cast<DWORD>(code), 0, text, ARRAYSIZE(text), nullptr);
  const std::wstring found(text, length);
  return found.substr(0, found.find_last_not_of(L"\r\n. ") + 1);
}

std::wstring HttpText(std::uint32_t status) {
  const bool redirection = status >= 300 && status < 400;
  return L"the server answered with HTTP status " + std::to_wstring(status) +
         (redirection ? L", a redirection, which is not followed" : L"");
}

std::wstring WinHttpText(std::uint32_t error) {
  static const std::map<std::uint32_t, const wchar_t*> texts{
      {12002, L"the server did not answer in time"},
      {12005, L"the address is no URL"},
      {12006, L"the address is neither https nor of this machine"},
      {12007, L"the server's name is not known"},
      {12029, L"no connection to the server can be made"},
      {12030, L"the connection broke"},
      {12175, L"the server's certificate is not accepted"},
      {12184, L"the answer is longer than it may be"}};
  const auto found = texts.find(error);
  const wchar_t* text = found != texts.end() ? found->second : L"the server was not reached";
  return text + (L", error " + std::to_wstring(error));
}

}  // namespace

HRESULT HttpCode(unsigned long status) { return static_cast<HRESULT>(HttpFacility + status); }

std::uint32_t HttpStatusOf(HRESULT code) { return NumberIn(HttpFacility, code); }

std::wstring DescriptionOf(HRESULT code) {
  if (const auto status = HttpStatusOf(code)) return HttpText(status);
  if (const auto error = NumberIn(SystemFacility, code); error >= 12000 && error < 13000) {
    return WinHttpText(error);
  }
  const std::wstring text = SystemText(code);
  return text.empty() ? L"no description is available" : text;
}

std::wstring DescriptionWithCode(HRESULT code) {
  wchar_t number[16];
  std::swprintf(number, std::size(number), L"0x%08X", static_cast<unsigned int>(code));
  return DescriptionOf(code) + L" (code " + number + L")";
}

}  // namespace refhost
