#include "reference_host/files/MemberName.h"

#include <algorithm>
#include <array>
#include <cwctype>

namespace refhost {

namespace {

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

/// Folds what the file system takes for the same. Letters outside of ASCII depend on the locale;
/// for those the extraction itself, which never opens an existing file, is the second line.
std::wstring Folded(std::wstring_view name) {
  std::wstring folded(name);
  for (wchar_t& c : folded) {
    c = IsSeparator(c) ? L'\\' : static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
  }
  return folded;
}

/// Windows opens the device whatever stands behind the first dot, and skips blanks before it.
bool IsDeviceName(std::wstring_view component) {
  std::wstring stem = Folded(component.substr(0, component.find(L'.')));
  stem.erase(stem.find_last_not_of(L' ') + 1);
  constexpr std::array Devices = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$", L"CLOCK$"};
  if (std::find(Devices.begin(), Devices.end(), stem) != Devices.end()) return true;
  constexpr std::wstring_view PortNumbers = L"0123456789\u00B9\u00B2\u00B3";
  return stem.size() == 4 && (stem.starts_with(L"COM") || stem.starts_with(L"LPT")) &&
         PortNumbers.find(stem[3]) != std::wstring_view::npos;
}

bool IsForbidden(wchar_t c) {
  return c < 0x20 || c == 0x7F || std::wstring_view(L"<>\"|?*").find(c) != std::wstring_view::npos;
}

std::string RefusalOfComponent(std::wstring_view component) {
  if (component.empty()) return "an absolute path or an empty part";
  if (component.find(L':') != std::wstring_view::npos) return "a drive or a stream";
  if (std::any_of(component.begin(), component.end(), IsForbidden)) {
    return "a character that file names cannot hold";
  }
  // "." and ".." end in a dot too.
  if (component.back() == L'.' || component.back() == L' ') {
    return "a part that ends in a dot or a blank";
  }
  return IsDeviceName(component) ? "a device's name" : "";
}

}  // namespace

std::string RefusalOfMemberName(std::wstring_view name) {
  for (;;) {
    const auto end = std::find_if(name.begin(), name.end(), IsSeparator);
    const auto length = static_cast<std::size_t>(end - name.begin());
    std::string refusal = RefusalOfComponent(name.substr(0, length));
    if (!refusal.empty() || end == name.end()) return refusal;
    name.remove_prefix(length + 1);
  }
}

std::string MemberNames::Add(std::wstring_view name) {
  std::string refusal = RefusalOfMemberName(name);
  if (!refusal.empty()) return refusal;
  const std::wstring folded = Folded(name);
  for (auto cut = folded.find(L'\\'); cut != std::wstring::npos;
       cut = folded.find(L'\\', cut + 1)) {
    const std::wstring folder = folded.substr(0, cut);
    if (_files.count(folder) != 0) return "a folder that is a file too";
    _folders.insert(folder);
  }
  if (_folders.count(folded) != 0) return "a file that is a folder too";
  return _files.insert(folded).second ? "" : "a name that occurs twice";
}

}  // namespace refhost
