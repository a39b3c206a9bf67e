#pragma once

#include <string>

#include "host/Export.h"

/// Files and folders by their full paths. No operation throws; each may be called from any thread.
class ZLT_API FileSystem {
 public:
  /// Creates a folder and its missing parents.
  /// @param path in, full path.
  /// @param restricted in, true: the folder and its missing parents are created with access for
  /// administrators and SYSTEM only (and this process's user, where it is not elevated). The folder
  /// can then be neither renamed nor replaced until `deleteDirectoryOrFile` or the process's end.
  /// @return true when the folder exists afterwards. A restricted folder does not when it, or one
  /// that it lies in, is a link, or when anybody but those owns or may change one of them, or
  /// something in it.
  static bool createDirectory(const std::wstring& path, bool restricted);

  /// @param path in, full path.
  /// @return true when `path` names an existing file (not a folder). Below a restricted folder only
  /// what lies in it directly counts, and no script (".ps1") that was in it before this process.
  static bool fileExists(const std::wstring& path);

  /// Deletes a file or a folder.
  /// @param path in, full path.
  /// @param recursive in, true: a folder goes with everything in it; links in it are removed, never
  /// followed. A folder that others own or may change, as above, is left alone.
  /// @return true when nothing of that name is left (also when nothing was there), or an empty
  /// folder that another process works in.
  static bool deleteDirectoryOrFile(const std::wstring& path, bool recursive);

  /// @param path in, any path.
  /// @return the last component of `path`: what follows the last backslash, slash or drive colon;
  /// may be empty.
  static std::wstring getFileName(const std::wstring& path);
};
