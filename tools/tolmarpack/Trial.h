#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/tolmarpack/Lab.h"

namespace tolmarpack {

/// A part of a trial.
struct Phase {
  std::string name;     ///< "detect", "download", …
  std::string outcome;  ///< a phrase: "not installed", or what went wrong
  bool isGood = true;
  std::int64_t milliseconds = 0;
  std::string output;  ///< of the script, where it failed; lines
};

/// What became of a package.
struct Trial {
  std::string title;  ///< its part number
  std::vector<Phase> phases;

  bool IsGood() const;
};

/// Has a package detected, installed and detected, and installed and detected once more, by the
/// real agent out of a simulator of its own. Blocks. The device is left as the installer has left
/// it.
/// @param timeoutSeconds in, for each installation.
/// @throws std::runtime_error when the package cannot be published, or the lab does not do its
/// part.
Trial Try(const std::filesystem::path& folder, const Lab& lab, unsigned int timeoutSeconds);

}  // namespace tolmarpack
