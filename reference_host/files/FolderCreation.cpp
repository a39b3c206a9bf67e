#include "reference_host/files/FolderCreation.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <sddl.h>

#include "reference_host/files/FolderOwner.h"
#include "reference_host/files/LongPath.h"

namespace refhost {

namespace {

/// Full access for administrators and SYSTEM, for nobody else; what is made inside inherits it, the
/// parent's rules do not come down.
class AdministratorsOnly {
 public:
  AdministratorsOnly() {
    ConvertStringSecurityDescriptorToSecurityDescriptorW(
        L"D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)", SDDL_REVISION_1, &_attributes.lpSecurityDescriptor,
        nullptr);
  }
  ~AdministratorsOnly() { LocalFree(_attributes.lpSecurityDescriptor); }
  AdministratorsOnly(const AdministratorsOnly&) = delete;
  AdministratorsOnly& operator=(const AdministratorsOnly&) = delete;

  bool IsUsable() const { return _attributes.lpSecurityDescriptor != nullptr; }
  SECURITY_ATTRIBUTES* Get() { return &_attributes; }

 private:
  SECURITY_ATTRIBUTES _attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

std::wstring ParentOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L'\\');
  return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

bool IsFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// @return why what is there cannot serve as the folder.
std::wstring RefusalOfExisting(const std::wstring& path, bool restricted) {
  if (restricted) return RefusalOfFolder(path);
  return IsFolder(GetFileAttributesW(path.c_str())) ? L"" : L"a file has its name";
}

/// @param rules in, of what is created; null: the parent's.
std::wstring Create(const std::wstring& path, SECURITY_ATTRIBUTES* rules) {
  const bool restricted = rules != nullptr;
  if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
    return RefusalOfExisting(path, restricted);
  }
  const std::wstring parent = ParentOf(path);
  const bool isDrive = parent.empty() || parent.ends_with(L':');
  if (!isDrive && !IsFolder(GetFileAttributesW(parent.c_str()))) {
    // The same rules: who may write into the parent may put another folder into this one's place.
    if (std::wstring refusal = Create(parent, rules); !refusal.empty()) return refusal;
  }
  if (CreateDirectoryW(path.c_str(), rules)) return {};
  const DWORD error = GetLastError();
  // Another thread, or somebody else, may have been quicker.
  if (error == ERROR_ALREADY_EXISTS) return RefusalOfExisting(path, restricted);
  return L"it cannot be created, error " + std::to_wstring(error);
}

}  // namespace

std::wstring CreateFolder(const std::wstring& path, bool restricted) {
  if (path.empty()) return L"it has no name";
  if (!restricted) return Create(LongPath(path), nullptr);
  AdministratorsOnly rules;
  return rules.IsUsable() ? Create(LongPath(path), rules.Get()) : L"its rules cannot be made";
}

}  // namespace refhost
