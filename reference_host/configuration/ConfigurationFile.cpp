#include "reference_host/configuration/ConfigurationFile.h"

#include <windows.h>

#include <functional>
#include <optional>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/files/HeldFolder.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/Trust.h"

namespace refhost {

namespace {

constexpr const wchar_t* Variable = L"TOLMAR_HOST_CONFIG";
constexpr const wchar_t* MachineKey = L"SOFTWARE\\Tolmar";
constexpr const wchar_t* MachineValue = L"ConfigurationFile";
constexpr LONGLONG MaxFileBytes = 1 << 20;

struct Loaded {
  std::wstring origin;
  std::string json;
  std::optional<Configuration> configuration;
  std::wstring error;
};

std::wstring FromEnvironment() {
  std::wstring name(GetEnvironmentVariableW(Variable, nullptr, 0), L'\0');
  name.resize(GetEnvironmentVariableW(Variable, name.data(), static_cast<DWORD>(name.size())));
  return name;
}

/// Only administrators write there.
std::wstring FromMachine() {
  wchar_t name[MAX_PATH];
  DWORD size = sizeof name;
  const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, MachineKey, MachineValue,
                                      RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, name, &size);
  return status == ERROR_SUCCESS ? name : L"";
}

std::wstring FullPath(const std::wstring& name) {
  std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

/// A host with high rights does what the file says: nobody may have written it who has not got
/// those rights.
bool HasHighRights() { return IsElevated() || IsService(); }

/// @return an empty text on success, else what is wrong.
std::wstring ReadWhole(const std::wstring& name, std::string& text) {
  const std::wstring path = FullPath(name);
  const bool isJudged = HasHighRights();
  const DWORD flags = isJudged ? FILE_FLAG_OPEN_REPARSE_POINT : FILE_ATTRIBUTE_NORMAL;
  const Handle file(CreateFileW(LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, flags, nullptr));
  if (!file) return L": cannot be opened (error " + std::to_wstring(GetLastError()) + L")";
  const std::wstring refusal = isJudged ? RefusalOfFile(file.Get(), path) : L"";
  if (!refusal.empty()) {
    return L": is not for a host with high rights, " + refusal +
           L" (docs/operations.md, \"Rights\", says how that is mended)";
  }
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

/// @return what is said when no file is named.
std::wstring NoFile() {
  const std::wstring machine = std::wstring(L"the value ") + MachineValue +
                               L" of HKEY_LOCAL_MACHINE\\" + MachineKey + L" names no file";
  if (IsService()) return L"no configuration: " + machine;
  return std::wstring(L"no configuration: the environment variable ") + Variable +
         L" names no file, and " + machine;
}

Loaded FromText(const std::wstring& origin, std::string json) {
  Loaded loaded{origin, std::move(json), {}, {}};
  Configuration configuration;
  const std::string error =
      ParseConfiguration(ZLT::String::UTF16ToUTF8(origin), loaded.json, configuration);
  if (configuration.downloadFolder.empty()) configuration.downloadFolder = DefaultDownloadFolder();
  if (configuration.logFolder.empty()) configuration.logFolder = DefaultLogFolder();
  if (error.empty()) loaded.configuration = std::move(configuration);
  loaded.error = ZLT::String::UTF8ToUTF16(error);
  return loaded;
}

Loaded FromFile(const std::wstring& name) {
  std::string json;
  const std::wstring failure = ReadWhole(name, json);
  if (!failure.empty()) return {name, {}, {}, name + failure};
  return FromText(name, std::move(json));
}

Loaded Load() {
  const std::wstring name = ConfigurationFileName();
  return name.empty() ? Loaded{{}, {}, {}, NoFile()} : FromFile(name);
}

/// Once for the process: the suite's operations must agree on what they were told.
const Loaded& TheLoaded(const std::function<Loaded()>& load = Load) {
  static const Loaded loaded = load();
  return loaded;
}

/// Makes what the host program has named the process's configuration.
bool TakeUp(Loaded own, std::wstring& error) {
  if (!own.configuration) {
    error = own.error;
    return false;
  }
  const Loaded& loaded = TheLoaded([&] { return own; });
  if (loaded.origin == own.origin && loaded.json == own.json) return true;
  error = own.origin + L": another configuration has been read before, and a process reads one";
  return false;
}

}  // namespace

std::wstring ConfigurationFileName() {
  return FileToRead(IsService(), FromEnvironment(), FromMachine());
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

const std::wstring& ConfigurationOrigin() { return TheLoaded().origin; }

bool ReadConfigurationFile(const std::wstring& file, std::wstring& error) {
  return TakeUp(FromFile(file), error);
}

bool ReadConfigurationText(const std::string& json, std::wstring& error) {
  return TakeUp(FromText(L"the text that the host gives", json), error);
}

}  // namespace refhost
