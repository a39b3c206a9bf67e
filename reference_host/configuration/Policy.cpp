#include "reference_host/configuration/Policy.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "host/common/Text.h"

namespace refhost {

namespace {

/// More than any value of a key needs.
constexpr DWORD MaxValueBytes = 1 << 20;
constexpr DWORD MaxNameLength = 256;

std::uint64_t NumberIn(const std::vector<BYTE>& data) {
  std::uint64_t number = 0;
  std::memcpy(&number, data.data(), std::min(data.size(), sizeof number));
  return number;
}

/// With all its zeros.
std::wstring CharactersIn(const std::vector<BYTE>& data) {
  std::wstring text(data.size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
  return text;
}

/// Up to its zero, which need not be there.
std::string TextIn(const std::vector<BYTE>& data) {
  const std::wstring all = CharactersIn(data);
  return ZLT::String::UTF16ToUTF8(all.substr(0, all.find(L'\0')));
}

/// An empty line ends the list.
std::vector<std::string> TextsIn(const std::vector<BYTE>& data) {
  std::vector<std::string> texts;
  const std::wstring all = CharactersIn(data) + L'\0';
  for (std::size_t at = 0; all[at] != L'\0'; at = all.find(L'\0', at) + 1) {
    texts.push_back(ZLT::String::UTF16ToUTF8(all.c_str() + at));
    if (all.find(L'\0', at) + 1 >= all.size()) break;
  }
  return texts;
}

/// REG_EXPAND_SZ is none of them: what it names depends on the environment, which whoever starts
/// the host may set.
PolicyValue ValueOf(DWORD type, const std::vector<BYTE>& data) {
  switch (type) {
    case REG_DWORD:
    case REG_QWORD:
      return NumberIn(data);
    case REG_SZ:
      return TextIn(data);
    case REG_MULTI_SZ:
      return TextsIn(data);
    default:
      return {};
  }
}

void Add(const std::wstring& wideName, const PolicyValue& value, Layer& layer) {
  const std::string name = ZLT::String::UTF16ToUTF8(wideName);
  const Key* key = FindKey(name);
  layer.values[name] = key != nullptr ? FromPolicy(*key, value) : Json::Value();
}

void ReadInto(HKEY key, Layer& layer) {
  std::vector<BYTE> data(MaxValueBytes);
  wchar_t name[MaxNameLength];
  for (DWORD index = 0;; ++index) {
    DWORD length = MaxNameLength, size = MaxValueBytes, type = 0;
    const LSTATUS status =
        RegEnumValueW(key, index, name, &length, nullptr, &type, data.data(), &size);
    if (status == ERROR_NO_MORE_ITEMS) return;
    // What is too long is of no key; its name is all that there is to tell.
    if (status == ERROR_MORE_DATA) continue;
    if (status != ERROR_SUCCESS) return;
    // The key's default value is nobody's.
    if (length != 0) Add(name, ValueOf(type, {data.begin(), data.begin() + size}), layer);
  }
}

}  // namespace

Layer ReadRegistry(Source source) {
  const wchar_t* name = source == Source::Policy ? PolicyKey : SetupKey;
  Layer layer{source, "HKEY_LOCAL_MACHINE\\" + ZLT::String::UTF16ToUTF8(name)};
  HKEY key = nullptr;
  const LSTATUS status =
      RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &key);
  if (status != ERROR_SUCCESS) return layer;
  ReadInto(key, layer);
  RegCloseKey(key);
  return layer;
}

}  // namespace refhost
