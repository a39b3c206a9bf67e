#pragma once

#include <string>
#include <vector>

namespace tolmarpack {

/// What `package.json` tells. Texts are UTF-8 and not empty.
struct Manifest {
  std::string title;   ///< the title's part number
  std::string name;    ///< the title's name, for people
  std::string module;  ///< the module's part number
  bool preinstall = false;
  std::vector<std::string> files;  ///< what the module has fetched beside package and check
};

/// Reads the text of a `package.json`; pure.
/// @param manifest out, complete on success only.
/// @return an empty text on success, else one line naming the key at fault.
std::string ParseManifest(const std::string& json, Manifest& manifest);

}  // namespace tolmarpack
