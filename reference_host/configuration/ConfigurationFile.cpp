#include "reference_host/configuration/ConfigurationFile.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>

#include "host/common/Text.h"
#include "reference_host/base/FileInUse.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/configuration/Policy.h"
#include "reference_host/configuration/TokenStore.h"
#include "reference_host/files/SuiteFile.h"
#include "reference_host/files/Trust.h"

namespace refhost {

namespace {

using ZLT::String;

constexpr const wchar_t* Variable = L"TOLMAR_HOST_CONFIG";
constexpr const wchar_t* MachineKey = L"SOFTWARE\\Tolmar";
constexpr const wchar_t* MachineValue = L"ConfigurationFile";
constexpr std::size_t MaxFileBytes = 1 << 20;

/// What was read at one time.
struct Loaded {
  std::vector<Layer> layers;  ///< the strongest first
  std::wstring error;         ///< empty: usable
  Effective effective;
};

/// What the host program has said itself, in the place of the file that is looked for.
struct Given {
  std::wstring file;
  std::optional<std::string> json;
};

/// Null: nothing. Never destroyed: threads may read the configuration to the last moment.
std::atomic<std::shared_ptr<const Given>>& TheGiven() {
  static auto& given = *new std::atomic<std::shared_ptr<const Given>>;
  return given;
}

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

/// @return what is said when no file is named and the policy does not do without one.
std::wstring NoFile() {
  const std::wstring machine = std::wstring(L"the value ") + MachineValue +
                               L" of HKEY_LOCAL_MACHINE\\" + MachineKey + L" names no file";
  if (IsService()) return L"no configuration: " + machine;
  return std::wstring(L"no configuration: the environment variable ") + Variable +
         L" names no file, and " + machine;
}

/// @return an empty text on success, else what is wrong.
std::wstring ReadFileLayer(Layer& layer) {
  const std::shared_ptr<const Given> given = TheGiven().load();
  if (given != nullptr && given->json) {
    layer.name = "the text that the host gives";
    return String::UTF8ToUTF16(ReadValues(*given->json, layer));
  }
  const std::wstring name = ConfigurationFileName();
  layer.name = String::UTF16ToUTF8(name.empty() ? NoFile() : name);
  if (name.empty()) return {};
  std::string json;
  const std::wstring failure = ReadJudgedFile(name, MaxFileBytes, json);
  return failure.empty() ? String::UTF8ToUTF16(ReadValues(json, layer)) : name + failure;
}

std::wstring ReadStoreLayer(Layer& layer) {
  std::string token;
  std::wstring failure = ReadKeptToken(token);
  if (!token.empty()) layer.values["sessionToken"] = token;
  return failure;
}

/// Where it can be told, which of them is to blame comes first.
std::vector<Layer> ReadLayers(std::vector<std::wstring>& failures) {
  std::vector<Layer> layers{
      ReadRegistry(Source::Policy), {Source::Store, "the protected session token"}, {}};
  for (const std::wstring& failure : {ReadFileLayer(layers[2]), ReadStoreLayer(layers[1])}) {
    if (!failure.empty()) failures.push_back(failure);
  }
  Layer setup = ReadRegistry(Source::Setup);
  if (!setup.values.empty()) layers.push_back(std::move(setup));
  return layers;
}

bool IsNothingSet(const std::vector<Layer>& layers) {
  return TheGiven().load() == nullptr && ConfigurationFileName().empty() &&
         layers[0].values.empty() && layers.size() == 3;
}

Loaded Load() {
  Loaded loaded;
  std::vector<std::wstring> failures;
  loaded.layers = ReadLayers(failures);
  if (!failures.empty()) {
    loaded.error = failures.front();
  } else if (IsNothingSet(loaded.layers)) {
    loaded.error = NoFile();
  } else {
    loaded.error = String::UTF8ToUTF16(Combine(loaded.layers, loaded.effective));
  }
  if (!loaded.error.empty()) return loaded;
  Configuration& configuration = loaded.effective.configuration;
  if (configuration.downloadFolder.empty()) configuration.downloadFolder = DefaultDownloadFolder();
  if (configuration.logFolder.empty()) configuration.logFolder = DefaultLogFolder();
  return loaded;
}

/// @return it for good: none is ever freed, since somebody may go by it still.
const Loaded* Keep(Loaded loaded) {
  SetFileInUsePatience(std::chrono::seconds(loaded.effective.configuration.fileInUseSeconds));
  return new Loaded(std::move(loaded));
}

/// Once for the process, unless it is told otherwise: the suite's operations must agree on what
/// they were told.
/// @param isFirst out, true when this call has read it; else untouched.
std::atomic<const Loaded*>& Current(bool* isFirst = nullptr) {
  static std::atomic<const Loaded*> current{[isFirst] {
    if (isFirst != nullptr) *isFirst = true;
    return Keep(Load());
  }()};
  return current;
}

const Loaded& TheLoaded() { return *Current().load(); }

bool AreSame(const Loaded& one, const Loaded& other) {
  return one.error == other.error &&
         std::equal(one.layers.begin(), one.layers.end(), other.layers.begin(), other.layers.end(),
                    [](const Layer& a, const Layer& b) {
                      return a.name == b.name && a.values == b.values;
                    });
}

bool Use(Given given, std::wstring& error) {
  const auto before = TheGiven().exchange(std::make_shared<const Given>(std::move(given)));
  std::wstring failure;
  ReloadConfiguration(failure);
  if (failure.empty()) return true;
  error = failure;
  TheGiven() = before;
  ReloadConfiguration(failure);
  return false;
}

}  // namespace

std::wstring ConfigurationFileName() {
  const std::shared_ptr<const Given> given = TheGiven().load();
  if (given != nullptr) return given->file;
  return FileToRead(IsService(), FromEnvironment(), FromMachine());
}

std::wstring ConfigurationOrigin() {
  std::wstring origin;
  for (const Layer& layer : TheLoaded().layers) {
    if (!layer.values.empty()) {
      origin.insert(0, String::UTF8ToUTF16(layer.name) + (origin.empty() ? L"" : L" and "));
    }
  }
  return origin;
}

const Configuration* GetConfiguration() {
  const Loaded& loaded = TheLoaded();
  return loaded.error.empty() ? &loaded.effective.configuration : nullptr;
}

const Configuration& Settings() {
  static const Configuration defaults{};
  const Configuration* configuration = GetConfiguration();
  return configuration != nullptr ? *configuration : defaults;
}

bool ReloadConfiguration(std::wstring& error) {
  bool isFirst = false;
  const Loaded& before = *Current(&isFirst).load();
  if (isFirst) {
    error = before.error;
    return false;
  }
  Loaded read = Load();
  error = read.error;
  const bool isWorse = !read.error.empty() && before.error.empty();
  if (isWorse || AreSame(before, read)) return false;
  Current() = Keep(std::move(read));
  return true;
}

bool UseConfigurationFile(const std::wstring& file, std::wstring& error) {
  return Use({file, {}}, error);
}

bool UseConfigurationText(const std::string& json, std::wstring& error) {
  return Use({{}, json}, error);
}

const std::wstring& ConfigurationError() { return TheLoaded().error; }

Json::Value ShareableSettings() {
  const Loaded& loaded = TheLoaded();
  return loaded.error.empty() ? Shareable(loaded.effective) : Json::Value();
}

std::vector<std::string> ConfigurationComplaints() {
  std::vector<std::wstring> failures;
  const std::vector<Layer> layers = ReadLayers(failures);
  if (IsNothingSet(layers)) failures.push_back(NoFile());
  if (failures.empty()) return ComplaintsOver(layers);
  // Of a file that cannot be read all keys are missing: that is not told of.
  std::vector<std::string> complaints(failures.size());
  std::transform(failures.begin(), failures.end(), complaints.begin(), String::UTF16ToUTF8);
  return complaints;
}

}  // namespace refhost
