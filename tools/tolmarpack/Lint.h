#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "reference_host/configuration/Configuration.h"
#include "tools/tolmarpack/Rules.h"
#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

/// What packages are measured against.
struct Yardstick {
  std::optional<refhost::Configuration> configuration;  ///< the devices', when it is known
  Trust trust;
};

/// Looks for every rule's mistake in folders and packages (`*.cab`).
/// @throws std::runtime_error when a folder cannot be read.
LintReport Lint(const std::vector<std::filesystem::path>& paths, const Yardstick& yardstick);

}  // namespace tolmarpack
