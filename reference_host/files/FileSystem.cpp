#include "host/common/FileSystem.h"

#include <windows.h>

#include "host/common/Log.h"
#include "reference_host/base/FileInUse.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/files/FolderHolds.h"
#include "reference_host/files/HeldFolder.h"
#include "reference_host/files/InstallationLease.h"
#include "reference_host/files/LongPath.h"

namespace {

bool IsThere(DWORD attributes) { return attributes != INVALID_FILE_ATTRIBUTES; }
bool IsFolder(DWORD attributes) {
  return IsThere(attributes) && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
bool IsLink(DWORD attributes) {
  return IsThere(attributes) && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool IsPlainFolder(DWORD attributes) { return IsFolder(attributes) && !IsLink(attributes); }

/// @return S_OK when nothing of that name is left.
HRESULT Remove(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (IsThere(attributes) && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  }
  const BOOL removed =
      IsFolder(attributes) ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
  const DWORD error = removed ? ERROR_SUCCESS : GetLastError();
  const bool isGone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  return isGone ? S_OK : HRESULT_FROM_WIN32(error);
}

/// One deletion with all that belongs to it: what others hold is waited for, not anew for each
/// file.
class Deletion {
 public:
  /// @return true when nothing of that name is left.
  bool Delete(const std::wstring& path, bool recursive) {
    if (recursive && IsPlainFolder(GetFileAttributesW(path.c_str()))) Empty(path);
    return SUCCEEDED(refhost::Patiently(_patience, [&path] { return Remove(path); }));
  }

  /// @return true when nothing is left in the folder.
  bool Empty(const std::wstring& folder) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return false;
    bool empty = true;
    do {
      const std::wstring name = entry.cFileName;
      if (name != L"." && name != L".." && !Delete(folder + L"\\" + name, true)) empty = false;
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return empty;
  }

 private:
  refhost::SharedPatience _patience;
};

/// @param held in, the folder itself, since a link could take its place while it is being emptied;
/// out, let go of.
bool DeleteFolder(const std::wstring& name, refhost::HeldFolder& held) {
  refhost::ReleaseFolders(name, false);
  if (!Deletion().Empty(name)) return false;
  held.Leave();
  refhost::ReleaseFolders(name, true);
  const HRESULT result = Remove(name);
  // Another host may hold it, and finds nothing in it any more.
  return SUCCEEDED(result) || result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION);
}

bool DeleteJudged(const std::wstring& path, bool recursive) {
  const std::wstring name = refhost::LongPath(path);
  if (!recursive || !IsPlainFolder(GetFileAttributesW(name.c_str()))) {
    return Deletion().Delete(name, recursive);
  }
  refhost::HeldFolder held;
  if (const std::wstring refusal = held.Enter(name, nullptr); !refusal.empty()) {
    ZLT::g_log.e(L"FileSystem: %s is not deleted: %s", path.c_str(), refusal.c_str());
    return false;
  }
  return DeleteFolder(name, held);
}

}  // namespace

bool FileSystem::createDirectory(const std::wstring& path, bool restricted) {
  const std::wstring refusal = refhost::CreateFolder(path, restricted);
  if (!refusal.empty()) {
    ZLT::g_log.e(L"FileSystem: the folder %s is refused: %s", path.c_str(), refusal.c_str());
  }
  return refusal.empty();
}

/// What lies in the folder of another process's installation is that installation's alone.
bool FileSystem::fileExists(const std::wstring& path) {
  if (refhost::InstallationLease::OtherHolderOf(path)) return false;
  const std::wstring name = refhost::LongPath(path);
  const DWORD attributes = GetFileAttributesW(name.c_str());
  return IsThere(attributes) && !IsFolder(attributes) && refhost::CountsAsThere(name);
}

bool FileSystem::deleteDirectoryOrFile(const std::wstring& path, bool recursive) {
  if (path.empty()) return false;
  if (const auto other = refhost::InstallationLease::OtherHolderOf(path)) {
    ZLT::g_log.e(L"FileSystem: %s is not deleted: %s installs from it", path.c_str(),
                 refhost::InstallationLease::Description(*other).c_str());
    return false;
  }
  const bool deleted = DeleteJudged(path, recursive);
  refhost::InstallationLease::ReleaseWith(path);
  return deleted;
}

std::wstring FileSystem::getFileName(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/:") + 1);
}
