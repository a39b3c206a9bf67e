#include "reference_host/configuration/Values.h"

#include <algorithm>
#include <optional>

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/files/MemberName.h"

namespace refhost {

namespace {

[[noreturn]] void Refuse(const Key& key, const std::string& reason) {
  throw ConfigurationFault("key \"" + std::string(key.name) + "\" " + reason);
}

std::vector<std::string> TextsOf(const Key& key, const Json::Value& value) {
  std::vector<std::string> texts;
  if (!value.isArray()) Refuse(key, "must be a list of texts");
  for (const Json::Value& element : value) {
    if (!element.isString()) Refuse(key, "must be a list of texts");
    texts.push_back(element.asString());
  }
  return texts;
}

}  // namespace

std::string TextOf(const Key& key, const Json::Value& value) {
  if (!value.isString()) Refuse(key, "must be a text");
  std::string text = value.asString();
  if (text.empty()) Refuse(key, "must not be empty");
  return text;
}

std::string UrlOf(const Key& key, const Json::Value& value) {
  std::string url = TextOf(key, value);
  if (!IsAllowedUrl(ZLT::String::UTF8ToUTF16(url))) {
    Refuse(key, "must be an https URL (http for this machine only)");
  }
  return url;
}

std::wstring ProxyOf(const Key& key, const Json::Value& value) {
  std::wstring proxy = ZLT::String::UTF8ToUTF16(TextOf(key, value));
  Url url;
  if (!ParseUrl(L"http://" + proxy, url) || proxy.find_first_of(L"/?#") != std::wstring::npos) {
    Refuse(key, "must be a host and a port, as \"proxy.example:8080\"");
  }
  return proxy;
}

std::wstring FolderOfKey(const Key& key, const Json::Value& value) {
  std::wstring folder = ZLT::String::UTF8ToUTF16(TextOf(key, value));
  std::replace(folder.begin(), folder.end(), L'/', L'\\');
  while (folder.ends_with(L'\\')) folder.pop_back();
  const bool letter = !folder.empty() && ((folder[0] >= L'A' && folder[0] <= L'Z') ||
                                          (folder[0] >= L'a' && folder[0] <= L'z'));
  const bool fullPath = folder.size() > 3 && letter && folder[1] == L':' && folder[2] == L'\\';
  // The folder is deleted as a whole after each title, so it must be one that was clearly meant:
  // Windows takes "C:\\. " for the drive's root, for example.
  if (!fullPath || !RefusalOfMemberName(std::wstring_view(folder).substr(3)).empty()) {
    Refuse(key, "must be the full path of a folder below a drive's root");
  }
  return folder;
}

bool FlagOf(const Key& key, const Json::Value& value) {
  if (!value.isBool()) Refuse(key, "must be true or false");
  return value.asBool();
}

std::uint64_t NumberOf(const Key& key, const Json::Value& value) {
  if (!value.isUInt64() || value.asUInt64() < key.least || value.asUInt64() > key.most) {
    Refuse(key, "must be a whole number from " + std::to_string(key.least) + " to " +
                    std::to_string(key.most));
  }
  return value.asUInt64();
}

double ShareOf(const Key& key, const Json::Value& value) {
  if (!value.isNumeric() || value.asDouble() < 0 || value.asDouble() > 1) {
    Refuse(key, "must be a number from 0 to 1");
  }
  return value.asDouble();
}

std::string WordAt(const char* words, int position) {
  std::string rest = words;
  for (; position > 0; --position) rest.erase(0, rest.find('|') + 1);
  return rest.substr(0, rest.find('|'));
}

int WordOf(const Key& key, const Json::Value& value) {
  const std::string all = key.words;
  const auto count = static_cast<int>(std::count(all.begin(), all.end(), '|')) + 1;
  std::string choice;
  for (int i = 0; i < count; ++i) {
    const std::string word = WordAt(key.words, i);
    if (value.isString() && value.asString() == word) return i;
    choice += (i == 0 ? "\"" : i + 1 == count ? " or \"" : ", \"") + word + "\"";
  }
  Refuse(key, "must be " + choice);
}

std::vector<std::string> ThumbprintsOf(const Key& key, const Json::Value& value) {
  std::vector<std::string> thumbprints = TextsOf(key, value);
  for (std::string& thumbprint : thumbprints) {
    for (char& c : thumbprint) c = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
    const bool digits = thumbprint.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (!digits || thumbprint.size() != 64) {
      Refuse(key, "must list SHA-256 thumbprints of 64 hexadecimal digits each");
    }
  }
  return thumbprints;
}

std::vector<std::string> ProgramsOf(const Key& key, const Json::Value& value) {
  std::vector<std::string> programs = TextsOf(key, value);
  for (const std::string& program : programs) {
    if (program.empty() || program.find_first_of("\\/:*?") != std::string::npos) {
      Refuse(key, "must list names of programs without a folder, as \"program.exe\"");
    }
  }
  return programs;
}

std::vector<MaintenanceWindow> WindowsOf(const Key& key, const Json::Value& value) {
  std::vector<MaintenanceWindow> windows;
  for (const std::string& text : TextsOf(key, value)) {
    const std::optional<MaintenanceWindow> window = ParseWindow(text);
    if (!window) Refuse(key, "must list times as \"Mon-Fri 22:00-05:00\" or \"22:00-05:00\"");
    windows.push_back(*window);
  }
  return windows;
}

}  // namespace refhost
