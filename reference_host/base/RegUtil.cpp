#include "host/common/RegUtil.h"

int CRegUtil::CreateKey(HKEY hive, const std::wstring& subKey) {
  HKEY key = nullptr;
  // A key that is there need not be one that may be written.
  const LSTATUS status = RegCreateKeyExW(hive, subKey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         MAXIMUM_ALLOWED | KEY_WOW64_64KEY, nullptr, &key, nullptr);
  if (status != ERROR_SUCCESS) return 0;
  RegCloseKey(key);
  return 1;
}

int CRegUtil::SetKeyValueInt(HKEY hive, const std::wstring& subKey, const std::wstring& valueName,
                             unsigned int value) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(hive, subKey.c_str(), 0, KEY_SET_VALUE | KEY_WOW64_64KEY, &key) !=
      ERROR_SUCCESS) {
    return 0;
  }
  const LSTATUS status = RegSetValueExW(key, valueName.c_str(), 0, REG_DWORD,
                                        reinterpret_cast<const BYTE*>(&value), sizeof value);
  RegCloseKey(key);
  return status == ERROR_SUCCESS ? 1 : 0;
}
