#include "reference_host/doctor/PowerShellCheck.h"

#include <windows.h>

#include <iterator>

#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "reference_host/doctor/Judgement.h"

namespace refhost {

namespace {

constexpr const wchar_t* PolicyKey = L"SOFTWARE\\Policies\\Microsoft\\Windows\\PowerShell";

std::optional<std::uint32_t> EnableScriptsOf(HKEY hive) {
  DWORD value = 0, size = sizeof value;
  const LSTATUS status =
      RegGetValueW(hive, PolicyKey, L"EnableScripts", RRF_RT_REG_DWORD | RRF_SUBKEY_WOW6464KEY,
                   nullptr, &value, &size);
  return status == ERROR_SUCCESS ? std::optional<std::uint32_t>(value) : std::nullopt;
}

std::string ExecutionPolicyOf(HKEY hive) {
  wchar_t text[64];
  DWORD size = sizeof text;
  const LSTATUS status = RegGetValueW(hive, PolicyKey, L"ExecutionPolicy",
                                      RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, text, &size);
  return status == ERROR_SUCCESS ? ZLT::String::UTF16ToUTF8(text) : std::string();
}

Finding JudgePolicyOf(HKEY hive) {
  return JudgeScriptPolicy(EnableScriptsOf(hive), ExecutionPolicyOf(hive));
}

}  // namespace

Finding ExaminePowerShell(const Questions&) {
  const std::wstring program =
      ZLT::utility::GetSystemDirectoryW() + L"\\WindowsPowerShell\\v1.0\\powershell.exe";
  if (GetFileAttributesW(program.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return {"", Health::Fail, ZLT::String::UTF16ToUTF8(program) + " is not there",
            "Put Windows PowerShell back: checks and installers are its scripts."};
  }
  const bool isMachines = EnableScriptsOf(HKEY_LOCAL_MACHINE).has_value();
  return JudgePolicyOf(isMachines ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER);
}

}  // namespace refhost
