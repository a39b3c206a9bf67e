#include "reference_host/configuration/ConfigurationFile.h"

#include <windows.h>

#include <optional>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/configuration/Folders.h"

namespace refhost {

namespace {

constexpr const wchar_t* Variable = L"TOLMAR_HOST_CONFIG";
constexpr LONGLONG MaxFileBytes = 1 << 20;

struct Loaded {
  std::optional<Configuration> configuration;
  std::wstring error;
};

/// @return an empty text on success, else what is wrong.
std::wstring ReadWhole(const std::wstring& name, std::string& text) {
  const Handle file(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return L": cannot be opened (error " + std::to_wstring(GetLastError()) + L")";
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart > MaxFileBytes) {
    return L": is larger than a configuration can be";
  }
  text.resize(static_cast<std::size_t>(size.QuadPart));
  DWORD read = 0;
  if (!ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr)) {
    return L": cannot be read (error " + std::to_wstring(GetLastError()) + L")";
  }
  text.resize(read);
  return {};
}

Loaded Load() {
  Loaded loaded;
  const std::wstring name = ConfigurationFileName();
  if (name.empty()) {
    loaded.error =
        std::wstring(L"no configuration: the environment variable ") + Variable + L" names no file";
    return loaded;
  }
  std::string json;
  const std::wstring failure = ReadWhole(name, json);
  if (!failure.empty()) {
    loaded.error = name + failure;
    return loaded;
  }
  Configuration configuration;
  const std::string error = ParseConfiguration(ZLT::String::UTF16ToUTF8(name), json, configuration);
  if (configuration.downloadFolder.empty()) configuration.downloadFolder = DefaultDownloadFolder();
  if (configuration.logFolder.empty()) configuration.logFolder = DefaultLogFolder();
  if (error.empty()) loaded.configuration = std::move(configuration);
  loaded.error = ZLT::String::UTF8ToUTF16(error);
  return loaded;
}

/// Once for the process: the suite's operations must agree on what they were told.
const Loaded& TheLoaded() {
  static const Loaded loaded = Load();
  return loaded;
}

}  // namespace

std::wstring ConfigurationFileName() {
  std::wstring name(GetEnvironmentVariableW(Variable, nullptr, 0), L'\0');
  name.resize(GetEnvironmentVariableW(Variable, name.data(), static_cast<DWORD>(name.size())));
  return name;
}

const Configuration* GetConfiguration() {
  const Loaded& loaded = TheLoaded();
  return loaded.configuration ? &*loaded.configuration : nullptr;
}

const Configuration& Settings() {
  static const Configuration defaults{};
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? *configuration : defaults;
}

const std::wstring& ConfigurationError() { return TheLoaded().error; }

}  // namespace refhost
