#include "reference_host/base/ThisUser.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <sddl.h>

#include <cstddef>

#include "reference_host/base/Handle.h"

namespace refhost {

namespace {

std::wstring FindSid() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return {};
  const Handle token(opened);
  alignas(TOKEN_USER) std::byte memory[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  wchar_t* text = nullptr;
  if (!GetTokenInformation(opened, TokenUser, memory, sizeof memory, &size) ||
      !ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(memory)->User.Sid, &text)) {
    return {};
  }
  std::wstring sid = text;
  LocalFree(text);
  return sid;
}

}  // namespace

const std::wstring& SidOfThisUser() {
  static const std::wstring sid = FindSid();
  return sid;
}

}  // namespace refhost
