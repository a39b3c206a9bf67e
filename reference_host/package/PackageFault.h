#pragma once

#include <stdexcept>
#include <string>

namespace refhost {

/// Why a package is not unpacked, where that is another cause than damage.
struct PackageFault : std::runtime_error {
  /// @param id in, of the cause (Causes.h).
  PackageFault(const char* id, const std::string& text) : std::runtime_error(text), cause(id) {}

  const char* cause;
};

}  // namespace refhost
