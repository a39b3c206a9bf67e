#include "tools/cloudsim/Catalogue.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "tools/cloudsim/JsonNode.h"

namespace cloudsim {
namespace {

/// Fills in size and CRC. @return false when the file cannot be read.
bool Measure(CatalogueFile& file) {
  std::ifstream stream(file.path, std::ios::binary);
  std::vector<char> buffer(256u << 10);
  uLong crc = crc32(0, nullptr, 0);
  while (stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size())),
         stream.gcount() > 0) {
    const auto count = static_cast<uInt>(stream.gcount());
    crc = crc32(crc, reinterpret_cast<const Bytef*>(buffer.data()), count);
    file.size += count;
  }
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08lx", crc);
  file.crc = digits;
  return stream.eof() && !stream.bad();
}

/// A part number stands in URLs between slashes.
std::string ReadPartNumber(const JsonNode& node) {
  std::string text = node.Text();
  const bool plain = std::none_of(text.begin(), text.end(), [](char c) {
    return c == '/' || static_cast<unsigned char>(c) < 0x20;
  });
  if (!plain) node.Fail("must not hold slashes or control characters");
  return text;
}

CatalogueFile ReadFile(const JsonNode& node, const std::filesystem::path& folder,
                       const std::string& urlFolder) {
  CatalogueFile file;
  file.path = folder / node.Text();
  file.name = file.path.filename().string();
  file.urlPath = urlFolder + file.name;
  const bool readable = std::filesystem::is_regular_file(file.path) && Measure(file);
  if (!readable) node.Fail("cannot read the file " + file.path.string());
  return file;
}

CatalogueModule ReadModule(const JsonNode& node, const std::filesystem::path& folder,
                           const std::string& l1FruPn) {
  node.RequireOnly({"moduleFruPn", "files"});
  CatalogueModule module;
  module.moduleFruPn = ReadPartNumber(node.At("moduleFruPn"));
  const std::string urlFolder = "/files/" + l1FruPn + "/" + module.moduleFruPn + "/";
  for (const JsonNode& item : node.At("files").Items()) {
    CatalogueFile file = ReadFile(item, folder, urlFolder);
    for (const CatalogueFile& other : module.files) {
      if (other.name == file.name) item.Fail("the module has two files of this name");
    }
    module.files.push_back(std::move(file));
  }
  return module;
}

CatalogueTitle ReadTitle(const JsonNode& node, const std::filesystem::path& folder) {
  node.RequireOnly({"l1FruPn", "name", "preinstallSw", "modules"});
  CatalogueTitle title;
  title.l1FruPn = ReadPartNumber(node.At("l1FruPn"));
  title.name = node.At("name").Text();
  if (const auto flag = node.Find("preinstallSw")) title.preinstallSw = flag->Flag();
  for (const JsonNode& item : node.At("modules").Items()) {
    CatalogueModule module = ReadModule(item, folder, title.l1FruPn);
    for (const CatalogueModule& other : title.modules) {
      if (other.moduleFruPn == module.moduleFruPn) item.Fail("the title has this module twice");
    }
    title.modules.push_back(std::move(module));
  }
  return title;
}

template <class Predicate>
const CatalogueFile* FindFileIf(const Catalogue& catalogue, const Predicate& predicate) {
  for (const CatalogueTitle& title : catalogue.titles) {
    for (const CatalogueModule& module : title.modules) {
      const auto found = std::find_if(module.files.begin(), module.files.end(), predicate);
      if (found != module.files.end()) return &*found;
    }
  }
  return nullptr;
}

}  // namespace

bool Catalogue::IsEntitled(const std::string& deviceId) const {
  return devices.empty() || devices.contains(deviceId);
}

bool Catalogue::HasFileNamed(const std::string& name) const {
  return FindFileIf(*this, [&](const CatalogueFile& file) { return file.name == name; }) != nullptr;
}

const CatalogueModule* Catalogue::FindModule(const std::string& l1FruPn,
                                             const std::string& moduleFruPn) const {
  for (const CatalogueTitle& title : titles) {
    if (title.l1FruPn != l1FruPn) continue;
    for (const CatalogueModule& module : title.modules) {
      if (module.moduleFruPn == moduleFruPn) return &module;
    }
  }
  return nullptr;
}

const CatalogueFile* Catalogue::FindFile(const std::string& urlPath) const {
  return FindFileIf(*this, [&](const CatalogueFile& file) { return file.urlPath == urlPath; });
}

Catalogue ReadCatalogue(const JsonNode& root, const std::filesystem::path& folder) {
  root.RequireOnly({"sessionToken", "devices", "titles", "faults"});
  Catalogue catalogue;
  catalogue.sessionToken = root.At("sessionToken").Text();
  if (const auto devices = root.Find("devices")) {
    for (const JsonNode& item : devices->Items()) catalogue.devices.insert(item.Text());
  }
  for (const JsonNode& item : root.At("titles").Items()) {
    CatalogueTitle title = ReadTitle(item, folder);
    for (const CatalogueTitle& other : catalogue.titles) {
      if (other.l1FruPn == title.l1FruPn) item.Fail("the catalogue has this title twice");
    }
    catalogue.titles.push_back(std::move(title));
  }
  return catalogue;
}

}  // namespace cloudsim
