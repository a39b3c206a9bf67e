#include "reference_host/files/SuiteFile.h"

#include <windows.h>

#include "reference_host/base/Handle.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/files/HeldFolder.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/ProgramData.h"
#include "reference_host/files/Trust.h"

namespace refhost {

namespace {

std::wstring FullPath(const std::wstring& name) {
  std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

std::wstring PathOf(const std::wstring& name) { return SuiteFolder() + L"\\" + name; }

std::wstring ErrorText(DWORD error) { return L"(error " + std::to_wstring(error) + L")"; }

/// With its bytes on the disk.
bool Write(const std::wstring& path, const std::string& bytes) {
  const Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD written = 0;
  return file &&
         WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
         FlushFileBuffers(file.Get());
}

}  // namespace

std::wstring ReadJudgedFile(const std::wstring& path, std::size_t mostBytes, std::string& bytes,
                            unsigned long* error) {
  const std::wstring full = FullPath(path);
  const bool isJudged = HasHighRights();
  const DWORD flags = isJudged ? FILE_FLAG_OPEN_REPARSE_POINT : FILE_ATTRIBUTE_NORMAL;
  const Handle file(CreateFileW(LongPath(full).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, flags,
                                nullptr));
  if (!file) {
    const DWORD reason = GetLastError();
    if (error != nullptr) *error = reason;
    return L": cannot be opened " + ErrorText(reason);
  }
  const std::wstring refusal = isJudged ? RefusalOfFile(file.Get(), full) : L"";
  if (!refusal.empty()) {
    return L": is not for a host with high rights, " + refusal +
           L" (docs/operations.md, \"Rights\", says how that is mended)";
  }
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart > static_cast<LONGLONG>(mostBytes)) {
    return L": is larger than it can be";
  }
  std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
  DWORD read = 0;
  if (!ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr)) {
    return L": cannot be read " + ErrorText(GetLastError());
  }
  text.resize(read);
  bytes = std::move(text);
  return {};
}

std::wstring ReadSuiteFile(const std::wstring& name, std::size_t mostBytes, std::string& bytes,
                           unsigned long* error) {
  bytes.clear();
  unsigned long reason = ERROR_SUCCESS;
  const std::wstring failure = ReadJudgedFile(PathOf(name), mostBytes, bytes, &reason);
  if (error != nullptr && reason != ERROR_SUCCESS) *error = reason;
  const bool isNone = reason == ERROR_FILE_NOT_FOUND || reason == ERROR_PATH_NOT_FOUND;
  return failure.empty() || isNone ? L"" : PathOf(name) + failure;
}

std::wstring WriteSuiteFile(const std::wstring& name, const std::string& bytes) {
  if (const std::wstring refusal = CreateFolder(SuiteFolder(), true); !refusal.empty()) {
    return SuiteFolder() + L" is refused: " + refusal;
  }
  const std::wstring path = PathOf(name);
  const std::wstring next = path + L".new";
  const bool done =
      Write(next, bytes) &&
      MoveFileExW(next.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  return done ? L"" : path + L" cannot be written " + ErrorText(GetLastError());
}

}  // namespace refhost
