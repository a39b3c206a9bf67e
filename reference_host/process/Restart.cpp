#include "reference_host/process/Restart.h"

#include <windows.h>

#include "host/common/Log.h"
#include "host/common/RegUtil.h"

namespace refhost {

namespace {

constexpr const wchar_t* SuiteKey = L"SOFTWARE\\Tolmar";
/// A volatile key: it lives in memory, and the system forgets it exactly when it forgets what a
/// restart is to change: at a restart, and not when a shut-down hibernates the kernel (fast
/// startup). So no boot has to be told from another.
constexpr const wchar_t* RestartKey = L"SOFTWARE\\Tolmar\\Restart";
constexpr const wchar_t* ValueName = L"Wanted";

bool Write(unsigned int value) {
  CRegUtil registry;
  registry.CreateKey(HKEY_LOCAL_MACHINE, SuiteKey);  // else it would become volatile as well
  HKEY key = nullptr;
  RegCreateKeyExW(HKEY_LOCAL_MACHINE, RestartKey, 0, nullptr, REG_OPTION_VOLATILE,
                  KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &key, nullptr);
  if (key != nullptr) RegCloseKey(key);
  return registry.SetKeyValueInt(HKEY_LOCAL_MACHINE, RestartKey, ValueName, value) != 0;
}

}  // namespace

Restart RecordedRestart() {
  DWORD value = 0, size = sizeof value;
  const LSTATUS status =
      RegGetValueW(HKEY_LOCAL_MACHINE, RestartKey, ValueName,
                   RRF_RT_REG_DWORD | RRF_SUBKEY_WOW6464KEY, nullptr, &value, &size);
  const bool known = status == ERROR_SUCCESS && value <= static_cast<DWORD>(Restart::Initiated);
  return known ? static_cast<Restart>(value) : Restart::None;
}

Restart RestartOf(unsigned long exitCode) {
  if (exitCode == ERROR_SUCCESS_REBOOT_REQUIRED) return Restart::Required;
  return exitCode == ERROR_SUCCESS_REBOOT_INITIATED ? Restart::Initiated : Restart::None;
}

void RecordRestart(Restart restart) {
  if (restart <= RecordedRestart()) return;
  if (!Write(static_cast<unsigned int>(restart))) {
    ZLT::g_log.e(L"ProcessWrap: the restart that an installer wants cannot be recorded");
  }
}

}  // namespace refhost
