#include "reference_host/files/FolderOwner.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <aclapi.h>
#include <sddl.h>

#include <vector>

#include "reference_host/base/Handle.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

bool IsOfThisUser(PSID owner) {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return false;
  const Handle token(opened);
  DWORD size = 0;
  GetTokenInformation(opened, TokenUser, nullptr, 0, &size);
  std::vector<std::byte> memory(size);
  if (!GetTokenInformation(opened, TokenUser, memory.data(), size, &size)) return false;
  return EqualSid(owner, reinterpret_cast<TOKEN_USER*>(memory.data())->User.Sid) != 0;
}

bool IsTrusted(PSID owner) {
  return IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
         IsWellKnownSid(owner, WinLocalSystemSid) || IsOfThisUser(owner);
}

std::wstring NameOf(PSID owner) {
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(owner, &text)) return L"an unknown owner";
  std::wstring name = text;
  LocalFree(text);
  return name;
}

std::wstring RefusalOfOwner(HANDLE folder) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR holder = nullptr;
  const DWORD error = GetSecurityInfo(folder, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                                      nullptr, nullptr, nullptr, &holder);
  if (error != ERROR_SUCCESS || owner == nullptr) return L"its owner is not to be found out";
  std::wstring refusal =
      IsTrusted(owner) ? std::wstring() : L"it belongs to somebody else, " + NameOf(owner);
  LocalFree(holder);
  return refusal;
}

std::wstring RefusalOfKind(DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return L"a link stands in its place";
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? L"" : L"a file has its name";
}

}  // namespace

std::wstring RefusalOfFolder(const std::wstring& path) {
  const std::wstring name = LongPath(path);
  // One open object answers all questions, so that nobody swaps it between two of them. A link
  // itself is opened, not what it leads to.
  const Handle folder(
      CreateFileW(name.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!folder) return L"it cannot be opened, error " + std::to_wstring(GetLastError());
  BY_HANDLE_FILE_INFORMATION found{};
  if (!GetFileInformationByHandle(folder.Get(), &found)) return L"it cannot be examined";
  DWORD attributes = found.dwFileAttributes;
  if (wine::IsInForce()) attributes = wine::AttributesByName(name.c_str(), attributes);
  const std::wstring refusal = RefusalOfKind(attributes);
  return refusal.empty() ? RefusalOfOwner(folder.Get()) : refusal;
}

}  // namespace refhost
