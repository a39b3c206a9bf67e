#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "reference_host/base/Handle.h"

namespace refhost {

/// A folder whose way from the drive's root down has been judged, step by step. From ProgramData on
/// where it lies below that one, since the system keeps ProgramData itself; everybody may make
/// folders in it, as in the root. As long as the object lives no folder on the way can be renamed
/// or deleted.
class HeldFolder {
 public:
  /// Goes down the way: each folder must be no link, and nobody but the trusted ones may own or
  /// change it (see `Trusted`). Whoever owns a folder rules over what is in it, whatever its access
  /// list says.
  /// @param name in, as `LongPath` gives it. @param rules in, with which folders that are missing
  /// are made; null: none is made.
  /// @return what is wrong (a phrase for a log line), empty when nothing is.
  std::wstring Enter(const std::wstring& name, SECURITY_ATTRIBUTES* rules);

  /// Lets go of the folders.
  void Leave() { _way.clear(); }

  /// @return true when `Enter` has made the folder, not found it.
  bool IsNew() const { return _isNew; }
  explicit operator bool() const { return !_way.empty(); }

 private:
  std::wstring Step(const std::wstring& name, SECURITY_ATTRIBUTES* rules);

  std::vector<Handle> _way;
  bool _isNew = false;
};

/// Judges a file that is open and the folders that it lies in.
/// @param file in, opened with READ_CONTROL and FILE_READ_ATTRIBUTES. @param path in, full.
/// @return what is wrong with it (a phrase for a log line), empty when nothing is.
std::wstring RefusalOfFile(HANDLE file, const std::wstring& path);

}  // namespace refhost
