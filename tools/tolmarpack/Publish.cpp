#include "tools/tolmarpack/Publish.h"

#include <json/writer.h>

#include <algorithm>
#include <stdexcept>

#include "tools/cloudsim/JsonNode.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Package.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

constexpr unsigned int SessionTokenBytes = 24;

Json::Value ReadCatalogue(const fs::path& path) {
  Json::Value root(Json::objectValue);
  if (!fs::exists(path)) {
    root["sessionToken"] = RandomText(SessionTokenBytes);
    return root;
  }
  const std::string fault = cloudsim::ParseStrict(ReadFile(path), root);
  if (!fault.empty()) throw std::runtime_error(TextOf(path) + ": " + fault);
  if (!root.isObject()) throw std::runtime_error(TextOf(path) + ": must be an object");
  return root;
}

/// The last cabinet and the last script of a module count: the package's own stand behind the rest.
std::vector<std::string> Place(const PackageFolder& folder, const Manifest& manifest,
                               const fs::path& target, const Signer& signer) {
  if (folder.checks.size() != 1) {
    throw std::runtime_error(TextOf(folder.path) + " must have one check script, it has " +
                             std::to_string(folder.checks.size()));
  }
  std::vector<std::string> files;
  const auto copy = [&](const std::string& file) {
    const fs::path source = folder.path / PathOf(file);
    files.push_back(TextOf(source.filename()));
    WriteFile(target / source.filename(), ReadFile(source));
  };
  for (const std::string& file : manifest.files) copy(file);
  files.push_back(folder.name + ".cab");
  const fs::path cabinet = target / PathOf(files.back());
  BuildPackage(folder.path, cabinet);
  if (signer.IsNamed()) SignCabinet(cabinet, cabinet, signer);
  copy(folder.checks.front());
  return files;
}

/// @return the title's entry, a new one unless a module before this was its.
Json::Value& EntryOf(Json::Value& titles, const Manifest& manifest) {
  for (Json::Value& entry : titles) {
    if (entry["l1FruPn"] != manifest.title) continue;
    if (entry["name"] != manifest.name || entry["preinstallSw"] != manifest.preinstall) {
      throw std::runtime_error("the modules of " + manifest.title +
                               " must agree on name and preinstall");
    }
    return entry;
  }
  Json::Value& entry = titles.append(Json::objectValue);
  entry["l1FruPn"] = manifest.title;
  entry["name"] = manifest.name;
  entry["preinstallSw"] = manifest.preinstall;
  return entry;
}

void AddModule(Json::Value& titles, const Manifest& manifest, const Published& published) {
  Json::Value& modules = EntryOf(titles, manifest)["modules"];
  for (const Json::Value& other : modules) {
    if (other["moduleFruPn"] == manifest.module) {
      throw std::runtime_error(manifest.title + " has the module " + manifest.module + " twice");
    }
  }
  Json::Value& module = modules.append(Json::objectValue);
  module["moduleFruPn"] = manifest.module;
  for (const std::string& file : published.files) module["files"].append(file);
}

}  // namespace

std::vector<Published> Publish(const std::vector<fs::path>& folders, const fs::path& catalogue,
                               const Signer& signer) {
  Json::Value root = ReadCatalogue(catalogue);
  Json::Value titles(Json::arrayValue);
  std::vector<Published> all;
  for (const fs::path& path : folders) {
    const PackageFolder folder = ReadFolder(path);
    const Manifest manifest = ReadManifest(folder);
    Published published{manifest.title, manifest.name, manifest.module, {}};
    const fs::path target = catalogue.parent_path() / PathOf(folder.name);
    for (const std::string& file : Place(folder, manifest, target, signer)) {
      published.files.push_back(folder.name + "/" + file);
    }
    AddModule(titles, manifest, published);
    all.push_back(std::move(published));
  }
  root["titles"] = titles;
  WriteFile(catalogue, Json::writeString(Json::StreamWriterBuilder(), root) + "\n");
  return all;
}

}  // namespace tolmarpack
