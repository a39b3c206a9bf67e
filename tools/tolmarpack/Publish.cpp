#include "tools/tolmarpack/Publish.h"

#include <json/writer.h>

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
/// @return the files, relative to the catalogue's folder.
std::vector<std::string> Place(const PackageFolder& folder, const Manifest& manifest,
                               const fs::path& home, const Signer& signer) {
  if (folder.checks.size() != 1) {
    throw std::runtime_error(TextOf(folder.path) + " must have one check script, it has " +
                             std::to_string(folder.checks.size()));
  }
  std::vector<std::string> files;
  const auto add = [&](const std::string& name) {
    files.push_back(folder.name + "/" + name);
    return home / PathOf(files.back());
  };
  const auto copy = [&](const std::string& file) {
    const fs::path source = folder.path / PathOf(file);
    Copy(source, add(TextOf(source.filename())));
  };
  for (const std::string& file : manifest.files) copy(file);
  const fs::path cabinet = add(folder.name + ".cab");
  BuildPackage(folder, cabinet);
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

void AddModule(Json::Value& titles, const Published& published) {
  const Manifest& manifest = published.manifest;
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
    Published published{ReadManifest(folder), {}};
    published.files = Place(folder, published.manifest, catalogue.parent_path(), signer);
    AddModule(titles, published);
    all.push_back(std::move(published));
  }
  root["titles"] = titles;
  WriteFile(catalogue, Json::writeString(Json::StreamWriterBuilder(), root) + "\n");
  return all;
}

}  // namespace tolmarpack
