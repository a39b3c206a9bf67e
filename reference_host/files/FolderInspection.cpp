#include "reference_host/files/FolderInspection.h"

#include <windows.h>

#include "reference_host/base/Handle.h"
#include "reference_host/files/FolderOwner.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/ProgramData.h"

namespace refhost {

namespace {

/// @return the name to ask the system by; a drive's root needs its backslash.
std::wstring NameOf(const std::wstring& path) {
  return path.ends_with(L':') ? path + L"\\" : LongPath(path);
}

/// @return the folder when something stands there, else its nearest parent where something does;
/// empty when there is not even its drive.
std::wstring NearestOf(std::wstring path) {
  while (GetFileAttributesW(NameOf(path).c_str()) == INVALID_FILE_ATTRIBUTES) {
    const std::size_t end = path.find_last_of(L'\\');
    if (end == std::wstring::npos) return {};
    path.resize(end);
  }
  return path;
}

std::wstring RefusalToWrite(const std::wstring& folder) {
  const Handle opened(CreateFileW(NameOf(folder).c_str(), FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (opened) return {};
  return L"this user cannot write to " + folder + L", error " + std::to_wstring(GetLastError());
}

}  // namespace

std::wstring RefusalToUseFolder(const std::wstring& folder) {
  const std::wstring nearest = NearestOf(folder);
  if (nearest.empty()) return L"its drive is not there";
  // The drive's root and ProgramData are the system's.
  const bool isSystems =
      nearest.ends_with(L':') || IsBelow(LongPath(ProgramDataFolder()) + L"\\", LongPath(nearest));
  const std::wstring refusal = isSystems ? L"" : RefusalOfFolder(nearest);
  if (refusal.empty()) return RefusalToWrite(nearest);
  return nearest == folder ? refusal : nearest + L": " + refusal;
}

std::optional<std::uint64_t> FreeBytesFor(const std::wstring& folder) {
  ULARGE_INTEGER bytes{};
  const std::wstring nearest = NearestOf(folder);
  if (nearest.empty() || !GetDiskFreeSpaceExW(NameOf(nearest).c_str(), &bytes, nullptr, nullptr)) {
    return std::nullopt;
  }
  return bytes.QuadPart;
}

}  // namespace refhost
