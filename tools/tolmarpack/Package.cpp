#include "tools/tolmarpack/Package.h"

#include <algorithm>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/files/MemberName.h"
#include "tools/tolmarpack/Cabinet.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/ScriptText.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

bool IsScript(const fs::path& path) { return Lower(TextOf(path.extension())) == ".ps1"; }

/// A link may lead to other bytes on the next PC that builds the package.
void AddPayload(PackageFolder& folder) {
  const fs::path payload = folder.path / PayloadFolder;
  if (!fs::is_directory(payload)) return;
  for (const auto& entry : fs::recursive_directory_iterator(payload)) {
    const std::string name = TextOf(entry.path().lexically_relative(folder.path));
    if (entry.is_symlink()) throw std::runtime_error(name + " is a link: put the file there");
    if (entry.is_regular_file()) folder.sources.push_back({name, entry.path()});
  }
}

void RequireGoodNames(const PackageFolder& folder) {
  refhost::MemberNames names;
  for (const SourceFile& source : folder.sources) {
    const std::string refusal = names.Add(ZLT::String::UTF8ToUTF16(source.name));
    if (!refusal.empty()) {
      throw std::runtime_error(source.name + " would be refused: " + refusal);
    }
  }
}

}  // namespace

bool PackageFolder::Has(const std::string& file) const {
  return fs::is_regular_file(path / PathOf(file));
}

PackageFolder ReadFolder(const fs::path& path) {
  if (!fs::is_directory(path)) throw std::runtime_error(TextOf(path) + " is no folder");
  PackageFolder folder;
  folder.path = fs::canonical(path);
  folder.given = TextOf(path);
  folder.name = TextOf(folder.path.filename());
  for (const auto& entry : fs::directory_iterator(folder.path)) {
    const std::string name = TextOf(entry.path().filename());
    if (name != InstallerName && IsScript(entry.path())) folder.checks.push_back(name);
  }
  if (folder.Has(InstallerName)) {
    folder.sources.push_back({InstallerName, folder.path / InstallerName});
  }
  AddPayload(folder);
  std::sort(folder.checks.begin(), folder.checks.end());
  std::sort(folder.sources.begin(), folder.sources.end(),
            [](const SourceFile& a, const SourceFile& b) { return a.name < b.name; });
  return folder;
}

Manifest ReadManifest(const PackageFolder& folder) {
  const fs::path file = folder.path / ManifestName;
  Manifest manifest;
  const std::string fault = ParseManifest(ReadFile(file), manifest);
  if (!fault.empty()) throw std::runtime_error(TextOf(file) + ": " + fault);
  return manifest;
}

void BuildPackage(const PackageFolder& folder, const fs::path& cabinet) {
  if (!folder.Has(InstallerName)) {
    throw std::runtime_error(folder.given + " has no " + InstallerName);
  }
  RequireGoodNames(folder);
  WriteCabinet(folder.sources, cabinet);
}

}  // namespace tolmarpack
