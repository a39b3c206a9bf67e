#include "reference_host/files/Trust.h"

// Behind windows.h, whose types they need.
#include <aclapi.h>
#include <sddl.h>

#include <vector>

#include "reference_host/base/Handle.h"
#include "reference_host/base/ThisUser.h"

namespace refhost {

namespace {

constexpr const wchar_t* Administrators = L"S-1-5-32-544";
constexpr const wchar_t* System = L"S-1-5-18";
constexpr const wchar_t* TrustedInstaller =
    L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";

std::wstring TextOf(PSID sid) {
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(sid, &text)) return {};
  std::wstring copy = text;
  LocalFree(text);
  return copy;
}

/// Groups that the token holds for denials only do not count.
bool IsMember(WELL_KNOWN_SID_TYPE group) {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof sid;
  BOOL isMember = FALSE;
  return CreateWellKnownSid(group, nullptr, sid, &size) &&
         CheckTokenMembership(nullptr, sid, &isMember) && isMember;
}

std::wstring OwnerOfWindows() {
  wchar_t path[MAX_PATH];
  if (GetSystemWindowsDirectoryW(path, MAX_PATH) == 0) return {};
  const Handle folder(CreateFileW(path, READ_CONTROL, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const std::optional<ObjectRights> rights = RightsOf(folder.Get());
  return rights ? rights->owner : std::wstring();
}

std::set<std::wstring> FindTrusted() {
  std::set<std::wstring> trusted{Administrators, System, TrustedInstaller, OwnerOfWindows()};
  if (!IsElevated()) trusted.insert(SidOfThisUser());
  trusted.erase(L"");
  return trusted;
}

/// A kind of entry that is not known here may allow everything to everybody.
const AccessEntry UnknownEntry{L"an unknown kind of entry", GENERIC_ALL};

std::vector<AccessEntry> EntriesOf(PACL list) {
  std::vector<AccessEntry> entries;
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    void* found = nullptr;
    if (!GetAce(list, i, &found)) return {UnknownEntry};
    auto* entry = static_cast<ACCESS_ALLOWED_ACE*>(found);
    switch (entry->Header.AceType) {
      case ACCESS_DENIED_ACE_TYPE:
      case ACCESS_DENIED_CALLBACK_ACE_TYPE:
        break;
      case ACCESS_ALLOWED_ACE_TYPE:
      case ACCESS_ALLOWED_CALLBACK_ACE_TYPE:
        entries.push_back({TextOf(&entry->SidStart), entry->Mask});
        break;
      default:
        entries.push_back(UnknownEntry);
    }
  }
  return entries;
}

}  // namespace

bool IsElevated() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return false;
  const Handle token(opened);
  TOKEN_ELEVATION elevation{};
  DWORD size = sizeof elevation;
  return (GetTokenInformation(opened, TokenElevation, &elevation, size, &size) &&
          elevation.TokenIsElevated != 0) ||
         IsMember(WinBuiltinAdministratorsSid);
}

bool IsService() { return SidOfThisUser() == System || IsMember(WinServiceSid); }

bool HasHighRights() { return IsElevated() || IsService(); }

const std::set<std::wstring>& Trusted() {
  static const std::set<std::wstring> trusted = FindTrusted();
  return trusted;
}

std::optional<ObjectRights> RightsOf(HANDLE object) {
  PSID owner = nullptr;
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR holder = nullptr;
  const DWORD error = GetSecurityInfo(object, SE_FILE_OBJECT,
                                      OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                      &owner, nullptr, &list, nullptr, &holder);
  if (error != ERROR_SUCCESS) return std::nullopt;
  ObjectRights rights{TextOf(owner), list != nullptr, EntriesOf(list)};
  LocalFree(holder);
  return rights;
}

OwnRules::OwnRules() {
  const std::wstring rules =
      (IsElevated() ? L"O:BAD:P" : L"D:P(A;OICI;FA;;;" + SidOfThisUser() + L")") +
      L"(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)";
  ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1,
                                                       &_attributes.lpSecurityDescriptor, nullptr);
}

DWORD OwnRules::ApplyTo(const std::wstring& folder) const {
  const DWORD owner = IsElevated() ? OWNER_SECURITY_INFORMATION : 0;
  const Handle opened(
      CreateFileW(folder.c_str(), WRITE_DAC | (owner != 0 ? WRITE_OWNER : 0),
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  const DWORD what = owner | DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION;
  const bool applied =
      opened && SetKernelObjectSecurity(opened.Get(), what, _attributes.lpSecurityDescriptor);
  return applied ? ERROR_SUCCESS : GetLastError();
}

}  // namespace refhost
