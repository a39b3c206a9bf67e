#pragma once

#include <string>

#include "host/Export.h"

namespace ZLT {

/// Unpacks signed CAB packages.
class ZLT_API PackageExtractor {
 public:
  /// Checks the package's signature and unpacks it into a new folder beside it, which can be
  /// neither renamed nor replaced until it is deleted by `FileSystem`. Blocks; any thread.
  /// @param cabPath in, full path of the package.
  /// @return the folder, without a trailing backslash; empty when the package failed validation.
  /// @throws std::runtime_error (UTF-8 text) when the package cannot be read, is no cabinet, holds
  /// a member that is refused, or cannot be unpacked (no room on the disk, a folder that others may
  /// change). Nothing of it is left behind then.
  static std::wstring ExtractCab(const std::wstring& cabPath);
};

}  // namespace ZLT
