#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/tolmarpack/Manifest.h"

namespace tolmarpack {

inline constexpr char InstallerName[] = "install.ps1";
inline constexpr char ManifestName[] = "package.json";
inline constexpr char PayloadFolder[] = "payload";

/// A file of the folder and the name that it has in the cabinet, with slashes.
struct SourceFile {
  std::string name;
  std::filesystem::path path;
};

/// A folder that a package is made of: `package.json`, `install.ps1`, one check script, `payload`.
struct PackageFolder {
  std::filesystem::path path;
  std::string given;                ///< its path as the user named it
  std::string name;                 ///< the folder's; the package is NAME.cab
  std::vector<std::string> checks;  ///< the scripts in it that are not the installer, by name
  std::vector<SourceFile> sources;  ///< what goes into the cabinet, by name: the installer too

  /// @return true when the folder has a file of that name.
  bool Has(const std::string& file) const;
};

/// Looks at a folder; what it lacks is no error here.
/// @throws std::runtime_error when it is no folder or cannot be read.
PackageFolder ReadFolder(const std::filesystem::path& path);

/// @return the manifest of a folder. @throws std::runtime_error saying what is wrong with it.
Manifest ReadManifest(const PackageFolder& folder);

/// Makes a folder with everything that a package needs, which explains itself, and installs.
/// @param path in, not there yet; its last part is the package's name.
/// @throws std::runtime_error when it is there, or the name is none for a package.
void MakeFolder(const std::filesystem::path& path);

/// Packs a folder. @param cabinet in, replaced once the new one is whole.
/// @throws std::runtime_error when the folder has no installer, or a name that is refused.
void BuildPackage(const PackageFolder& folder, const std::filesystem::path& cabinet);

}  // namespace tolmarpack
