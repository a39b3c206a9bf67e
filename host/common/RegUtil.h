#pragma once

#include <windows.h>

#include <string>

#include "host/Export.h"

/// The registry, 64-bit view. No operation throws; any thread.
class ZLT_API CRegUtil {
 public:
  /// Opens or creates a key with its missing parents.
  /// @param hive in, a predefined root such as HKEY_LOCAL_MACHINE.
  /// @param subKey in, the key's path below it.
  /// @return non-zero when the key exists afterwards.
  int CreateKey(HKEY hive, const std::wstring& subKey);

  /// Writes a REG_DWORD value into an existing key.
  /// @param hive in, as above. @param subKey in, as above.
  /// @param valueName in, the value's name. @param value in, what it gets.
  /// @return non-zero when it was written.
  int SetKeyValueInt(HKEY hive, const std::wstring& subKey, const std::wstring& valueName,
                     unsigned int value);
};
