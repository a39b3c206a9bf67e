#include <windows.h>

#include <atomic>

#include "host/common/FileSystem.h"
#include "host/common/HttpRequest.h"
#include "host/common/Log.h"
#include "reference_host/common/Handle.h"
#include "reference_host/common/HttpExchange.h"
#include "reference_host/common/Url.h"

namespace {

/// A body without an announced length ends somewhere.
constexpr std::uint64_t MaxFileBytes = std::uint64_t{4} << 30;

/// Such a path is what it looks like: no "..", no device, no stream, no trailing dot. Names within
/// come from the cloud.
bool IsPlainFullPath(const std::wstring& path) {
  if (path.size() < 4 || path[1] != L':' || path[2] != L'\\') return false;
  std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full == path && path.find_first_of(L":*?\"<>|", 2) == std::wstring::npos;
}

/// A file beside its later place; gone again unless it was put there.
class PartialFile {
 public:
  explicit PartialFile(const std::wstring& target) : _target(target), _path(NameFor(target)) {
    _file = refhost::Handle(CreateFileW(_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
  }
  ~PartialFile() {
    _file = refhost::Handle();
    if (!_placed) DeleteFileW(_path.c_str());
  }
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  bool IsOpen() const { return static_cast<bool>(_file); }

  unsigned long Write(const char* bytes, std::size_t count) {
    DWORD written = 0;
    const BOOL done = WriteFile(_file.Get(), bytes, static_cast<DWORD>(count), &written, nullptr);
    return done ? ERROR_SUCCESS : GetLastError();
  }

  unsigned long Place() {
    _file = refhost::Handle();
    _placed = MoveFileExW(_path.c_str(), _target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    return _placed ? ERROR_SUCCESS : GetLastError();
  }

 private:
  /// Threads and processes may fetch a file of the same name at the same time.
  static std::wstring NameFor(const std::wstring& target) {
    static std::atomic<unsigned int> number{0};
    return target + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++number) + L".part";
  }

  std::wstring _target;
  std::wstring _path;
  refhost::Handle _file;
  bool _placed = false;
};

/// @return 0, or why the file is not there: an HTTP status, WinHTTP's or the system's error number.
unsigned long Fetch(const std::wstring& url, const std::wstring& localPath,
                    const std::wstring& headers) {
  if (!IsPlainFullPath(localPath)) return ERROR_BAD_PATHNAME;
  refhost::HttpExchange exchange;
  if (const auto error = exchange.Send({.url = url, .headers = headers})) return error;
  if (exchange.Status() != HTTP_STATUS_OK) return exchange.Status();
  PartialFile file(localPath);
  if (!file.IsOpen()) return GetLastError();
  const unsigned long error = exchange.ReadBody(
      {MaxFileBytes},
      [&file](const char* bytes, std::size_t count) { return file.Write(bytes, count); });
  return error != 0 ? error : file.Place();
}

}  // namespace

namespace ZLT {

bool HttpRequest::DownloadFile(const std::wstring& url, const std::wstring& localPath,
                               const std::wstring& headers) {
  const unsigned long failure = Fetch(url, localPath, headers);
  if (failure != 0) {
    g_log.e(L"HttpRequest: %s was not fetched from %s, status or error %lu",
            FileSystem::getFileName(localPath).c_str(), refhost::WithoutQuery(url).c_str(),
            failure);
  }
  return failure == 0;
}

}  // namespace ZLT
