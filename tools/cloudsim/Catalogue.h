#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace cloudsim {

class JsonNode;

/// A file that can be downloaded.
struct CatalogueFile {
  std::string name;            ///< without folders, unique in its module
  std::string urlPath;         ///< "/files/TITLE/MODULE/NAME", not encoded
  std::filesystem::path path;  ///< on disk
  std::uint64_t size = 0;      ///< bytes
  std::string crc;             ///< CRC-32 as 8 lower-case hex digits
};

struct CatalogueModule {
  std::string moduleFruPn;
  std::vector<CatalogueFile> files;
};

struct CatalogueTitle {
  std::string l1FruPn;
  std::string name;
  std::optional<bool> preinstallSw;  ///< as declared, also whether it is
  std::vector<CatalogueModule> modules;
};

/// What the service offers and to whom. Unchanged once read.
struct Catalogue {
  std::string sessionToken;
  std::set<std::string> devices;  ///< empty: any device is entitled
  std::vector<CatalogueTitle> titles;

  bool IsEntitled(const std::string& deviceId) const;
  bool HasFileNamed(const std::string& name) const;
  const CatalogueModule* FindModule(const std::string& l1FruPn,
                                    const std::string& moduleFruPn) const;
  const CatalogueFile* FindFile(const std::string& urlPath) const;
};

/// Reads a catalogue and every file that it names (for size and CRC).
/// @param root in, the document. @param folder in, what its file names are relative to.
/// @throws DocumentError naming the key at fault.
Catalogue ReadCatalogue(const JsonNode& root, const std::filesystem::path& folder);

}  // namespace cloudsim
