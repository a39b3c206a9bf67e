#include "reference_host/http/HttpFile.h"

#include <windows.h>

#include <atomic>

#include "reference_host/base/FileInUse.h"
#include "reference_host/base/Handle.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/files/FolderOwner.h"
#include "reference_host/http/HttpExchange.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

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
    _file = Handle(CreateFileW(_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
  }
  ~PartialFile() {
    _file = Handle();
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

  HRESULT Place() {
    _file = Handle();
    const HRESULT moved = Patiently(SharedPatience(), [this] { return Move(); });
    _placed = SUCCEEDED(moved);
    return moved;
  }

 private:
  HRESULT Move() const {
    const BOOL moved = MoveFileExW(_path.c_str(), _target.c_str(), MOVEFILE_REPLACE_EXISTING);
    return moved ? S_OK : HRESULT_FROM_WIN32(GetLastError());
  }

  /// Threads and processes may fetch a file of the same name at the same time.
  static std::wstring NameFor(const std::wstring& target) {
    static std::atomic<unsigned int> number{0};
    return target + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++number) + L".part";
  }

  std::wstring _target;
  std::wstring _path;
  Handle _file;
  bool _placed = false;
};

/// The file must not be waited for longer than any other download.
ZLT::HttpTimeouts Timeouts() {
  ZLT::HttpTimeouts timeouts = ZLT::HttpTimeouts::DEFAULT;
  timeouts.receive = static_cast<int>(1000 * Settings().downloadStallSeconds);
  return timeouts;
}

/// @return S_OK, or why the file is not there.
HRESULT Fetch(const std::wstring& url, const std::wstring& localPath, const std::wstring& headers) {
  HttpExchange exchange;
  const unsigned long failure =
      exchange.Send({.url = url, .headers = headers, .timeouts = Timeouts()});
  if (failure != 0) return HRESULT_FROM_WIN32(failure);
  if (exchange.Status() != HTTP_STATUS_OK) return HttpCode(exchange.Status());
  PartialFile file(localPath);
  if (!file.IsOpen()) return HRESULT_FROM_WIN32(GetLastError());
  // What is fetched so is a script: it may take as long to come as it may run.
  const std::chrono::seconds limit(Settings().processTimeoutSeconds);
  const unsigned long error = exchange.ReadBody(
      {Settings().maxFileBytes, limit},
      [&file](const char* bytes, std::size_t count) { return file.Write(bytes, count); });
  return error != 0 ? HRESULT_FROM_WIN32(error) : file.Place();
}

}  // namespace

std::wstring FetchFile(const std::wstring& url, const std::wstring& localPath,
                       const std::wstring& headers) {
  if (!IsPlainFullPath(localPath)) return L"its place is no plain full path";
  const std::wstring folder = localPath.substr(0, localPath.find_last_of(L'\\'));
  const std::wstring refusal = RefusalOfFolder(folder);
  if (!refusal.empty()) return L"its folder cannot be used: " + refusal;
  const HRESULT code = Fetch(url, localPath, headers);
  return FAILED(code) ? DescriptionWithCode(code) : std::wstring();
}

}  // namespace refhost
