#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/tolmarpack/Manifest.h"
#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

/// A module that was published.
struct Published {
  Manifest manifest;
  std::vector<std::string> files;  ///< relative to the catalogue's folder
};

/// Builds packages, signs them when a signer is named, puts them with their check scripts below the
/// catalogue's folder and writes the simulator's catalogue: modules of the same title belong
/// together, in the order of `folders`. Of a catalogue that is there its titles are replaced, all
/// else is kept; a new one gets a session token of its own.
/// @throws std::runtime_error saying what a folder lacks; the catalogue is then as it was.
std::vector<Published> Publish(const std::vector<std::filesystem::path>& folders,
                               const std::filesystem::path& catalogue, const Signer& signer);

}  // namespace tolmarpack
