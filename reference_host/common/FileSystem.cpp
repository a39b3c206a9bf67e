#include "host/common/FileSystem.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <sddl.h>

#include <algorithm>

namespace {

bool IsThere(DWORD attributes) { return attributes != INVALID_FILE_ATTRIBUTES; }
bool IsFolder(DWORD attributes) {
  return IsThere(attributes) && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
bool IsLink(DWORD attributes) {
  return IsThere(attributes) && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// @return `path` in the notation that takes more than 260 characters: a package may nest deeply.
std::wstring LongPath(std::wstring path) {
  std::replace(path.begin(), path.end(), L'/', L'\\');
  const bool drive = path.size() > 2 && path[1] == L':' && path[2] == L'\\';
  return drive ? L"\\\\?\\" + path : path;
}

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

/// The folder has its rules from its first moment on.
bool CreateFolder(const std::wstring& path, bool restricted) {
  if (!restricted) return CreateDirectoryW(path.c_str(), nullptr) != 0;
  AdministratorsOnly rules;
  return rules.IsUsable() && CreateDirectoryW(path.c_str(), rules.Get()) != 0;
}

std::wstring ParentOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L'\\');
  return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

/// @param path in, a long path without a trailing backslash.
bool CreateWithParents(const std::wstring& path, bool restricted) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  // A link in the place of a restricted folder leads to where somebody else makes the rules.
  if (IsThere(attributes)) return IsFolder(attributes) && !(restricted && IsLink(attributes));
  const std::wstring parent = ParentOf(path);
  if (parent.size() < path.size() && !parent.empty() && !parent.ends_with(L':')) {
    if (!CreateWithParents(parent, false)) return false;
  }
  // A second thread may have been quicker.
  return CreateFolder(path, restricted) ||
         (GetLastError() == ERROR_ALREADY_EXISTS && IsFolder(GetFileAttributesW(path.c_str())));
}

bool Delete(const std::wstring& path, bool recursive);

void DeleteContents(const std::wstring& folder) {
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    const std::wstring name = entry.cFileName;
    if (name != L"." && name != L"..") Delete(folder + L"\\" + name, true);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
}

bool Delete(const std::wstring& path, bool recursive) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (IsThere(attributes) && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesW(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
  }
  if (recursive && IsFolder(attributes) && !IsLink(attributes)) DeleteContents(path);
  const BOOL deleted =
      IsFolder(attributes) ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
  const DWORD error = deleted ? ERROR_SUCCESS : GetLastError();
  return deleted || error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::wstring WithoutTrailingBackslash(std::wstring path) {
  while (path.size() > 1 && path.ends_with(L'\\')) path.pop_back();
  return path;
}

}  // namespace

bool FileSystem::createDirectory(const std::wstring& path, bool restricted) {
  return !path.empty() && CreateWithParents(WithoutTrailingBackslash(LongPath(path)), restricted);
}

bool FileSystem::fileExists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(LongPath(path).c_str());
  return IsThere(attributes) && !IsFolder(attributes);
}

bool FileSystem::deleteDirectoryOrFile(const std::wstring& path, bool recursive) {
  return !path.empty() && Delete(WithoutTrailingBackslash(LongPath(path)), recursive);
}

std::wstring FileSystem::getFileName(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/:") + 1);
}
