#include "reference_host/files/FolderCreation.h"

#include <windows.h>

#include "reference_host/files/FolderHolds.h"
#include "reference_host/files/LongPath.h"

namespace refhost {

namespace {

bool IsFolder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// With its parent's rules.
std::wstring Create(const std::wstring& path) {
  if (IsFolder(path)) return {};
  const std::wstring parent = FolderOf(path);
  const bool isDrive = parent.empty() || parent.ends_with(L':');
  if (!isDrive) {
    if (std::wstring refusal = Create(parent); !refusal.empty()) return refusal;
  }
  if (CreateDirectoryW(path.c_str(), nullptr)) return {};
  const DWORD error = GetLastError();
  // Another thread, or somebody else, may have been quicker.
  if (error == ERROR_ALREADY_EXISTS) return IsFolder(path) ? L"" : L"a file has its name";
  return L"it cannot be created, error " + std::to_wstring(error);
}

}  // namespace

std::wstring CreateFolder(const std::wstring& path, bool restricted) {
  if (path.empty()) return L"it has no name";
  return restricted ? HoldFolder(LongPath(path), true) : Create(LongPath(path));
}

}  // namespace refhost
