#include "reference_host/log/LogFile.h"

#include "reference_host/base/FileLock.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

/// Others may read, append, rename (rotation) and delete.
Handle OpenForAppending(const std::wstring& path) {
  return Handle(CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_DATA | FILE_READ_ATTRIBUTES,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool IsSameFile(HANDLE one, HANDLE other) {
  BY_HANDLE_FILE_INFORMATION a{}, b{};
  return GetFileInformationByHandle(one, &a) && GetFileInformationByHandle(other, &b) &&
         a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
         a.nFileIndexLow == b.nFileIndexLow;
}

}  // namespace

bool LogFile::Open(const std::wstring& path, std::uint64_t maxBytes) {
  Handle file = OpenForAppending(path);
  if (!file) return false;
  _path = path;
  _maxBytes = maxBytes;
  _file = std::move(file);
  return true;
}

void LogFile::Append(const std::string& record) {
  if (IsFull(record.size())) Rotate(record.size());
  const wine::AppendLock lock(_file.Get());
  DWORD written = 0;
  WriteFile(_file.Get(), record.data(), static_cast<DWORD>(record.size()), &written, nullptr);
}

bool LogFile::IsFull(std::size_t added) const {
  LARGE_INTEGER size{};
  return GetFileSizeEx(_file.Get(), &size) && size.QuadPart != 0 &&
         static_cast<std::uint64_t>(size.QuadPart) + added > _maxBytes;
}

void LogFile::Rotate(std::size_t added) {
  Reopen();  // another process may have begun a new file already
  if (!IsFull(added)) return;
  {
    const FileLock lock(_file.Get());
    if (!IsSameFile(_file.Get(), OpenForAppending(_path).Get())) return;
    const std::wstring older = _path + L".1";
    // First, since a file that another process still holds open can be deleted but not replaced.
    DeleteFileW(older.c_str());
    MoveFileExW(_path.c_str(), older.c_str(), MOVEFILE_REPLACE_EXISTING);
  }
  Reopen();  // where the full file could not be renamed it goes on: too long beats lost
}

void LogFile::Reopen() {
  if (Handle file = OpenForAppending(_path)) _file = std::move(file);
}

}  // namespace refhost
