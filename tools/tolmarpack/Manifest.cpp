#include "tools/tolmarpack/Manifest.h"

#include "tools/cloudsim/JsonNode.h"

namespace tolmarpack {

namespace {

using cloudsim::JsonNode;

Manifest ManifestIn(const JsonNode& root) {
  root.RequireOnly({"title", "name", "module", "description", "preinstall", "files"});
  Manifest manifest;
  manifest.title = root.At("title").Text();
  manifest.name = root.At("name").Text();
  manifest.module = root.At("module").Text();
  root.At("description").Text();  // For who reads the file; it has to be there.
  if (const auto flag = root.Find("preinstall")) manifest.preinstall = flag->Flag();
  if (const auto files = root.Find("files")) {
    for (const JsonNode& file : files->Items()) manifest.files.push_back(file.Text());
  }
  for (const char* key : {"title", "module"}) {  // They stand in addresses between slashes.
    if (root.At(key).Text().find('/') != std::string::npos) root.At(key).Fail("must hold no slash");
  }
  return manifest;
}

}  // namespace

std::string ParseManifest(const std::string& json, Manifest& manifest) try {
  Json::Value root;
  std::string fault = cloudsim::ParseStrict(json, root);
  if (fault.empty()) manifest = ManifestIn(JsonNode(root));
  return fault;
} catch (const cloudsim::DocumentError& error) {
  return error.what();
}

}  // namespace tolmarpack
