#pragma once

#include <string>

#include "host/Export.h"

/// Files and folders by their full paths. No operation throws; each may be called from any thread.
class ZLT_API FileSystem {
 public:
  /// Creates a folder and its missing parents.
  /// @param path in, full path.
  /// @param restricted in, true: the folder and its missing parents are created with access for
  /// administrators and SYSTEM only.
  /// @return true when the folder exists afterwards. A restricted folder is not one when a link
  /// stands in its place, or when it belongs to anybody but those two and this process's user.
  static bool createDirectory(const std::wstring& path, bool restricted);

  /// @param path in, full path.
  /// @return true when `path` names an existing file (not a folder).
  static bool fileExists(const std::wstring& path);

  /// Deletes a file or a folder.
  /// @param path in, full path.
  /// @param recursive in, true: a folder goes with everything in it; links in it are removed, never
  /// followed. A folder that belongs to somebody else, as above, is left alone.
  /// @return true when nothing of that name is left (also when nothing was there).
  static bool deleteDirectoryOrFile(const std::wstring& path, bool recursive);

  /// @param path in, any path.
  /// @return the last component of `path`: what follows the last backslash, slash or drive colon;
  /// may be empty.
  static std::wstring getFileName(const std::wstring& path);
};
