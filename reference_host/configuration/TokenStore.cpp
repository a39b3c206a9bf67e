#include "reference_host/configuration/TokenStore.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <dpapi.h>

#include "reference_host/files/ProgramData.h"
#include "reference_host/files/SuiteFile.h"

namespace refhost {

namespace {

constexpr const wchar_t* FileName = L"session.token";
constexpr std::size_t MaxFileBytes = 1 << 20;

std::wstring Path() { return SuiteFolder() + L"\\" + FileName; }

/// What Windows gives back, wiped and freed at the end.
struct Blob : DATA_BLOB {
  Blob() : DATA_BLOB{0, nullptr} {}
  ~Blob() {
    if (pbData == nullptr) return;
    SecureZeroMemory(pbData, cbData);
    LocalFree(pbData);
  }
  Blob(const Blob&) = delete;
  Blob& operator=(const Blob&) = delete;

  std::string Bytes() const { return {reinterpret_cast<const char*>(pbData), cbData}; }
};

DATA_BLOB InputOf(const std::string& bytes) {
  // Neither call changes its input.
  return {static_cast<DWORD>(bytes.size()),
          reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

std::wstring Failure(const wchar_t* what) {
  return what + std::wstring(L", error ") + std::to_wstring(GetLastError());
}

}  // namespace

std::wstring KeepToken(const std::string& token) {
  DATA_BLOB plain = InputOf(token);
  Blob sealed;
  constexpr DWORD Flags = CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN;
  if (!CryptProtectData(&plain, L"Tolmar session token", nullptr, nullptr, nullptr, Flags,
                        &sealed)) {
    return Failure(L"Windows does not protect it");
  }
  return WriteSuiteFile(FileName, sealed.Bytes());
}

std::wstring ForgetToken() {
  if (DeleteFileW(Path().c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND ||
      GetLastError() == ERROR_PATH_NOT_FOUND) {
    return {};
  }
  return Failure((Path() + L" is not deleted").c_str());
}

std::wstring ReadKeptToken(std::string& token) {
  std::string bytes;
  unsigned long error = 0;
  std::wstring failure = ReadSuiteFile(FileName, MaxFileBytes, bytes, &error);
  // A host without high rights has no part in it.
  if (error == ERROR_ACCESS_DENIED) return {};
  if (error != ERROR_SUCCESS || !failure.empty()) return failure;
  DATA_BLOB sealed = InputOf(bytes);
  Blob plain;
  if (!CryptUnprotectData(&sealed, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                          &plain)) {
    return Path() + Failure(L": is not of this machine, or damaged: set the token anew");
  }
  token = plain.Bytes();
  return {};
}

}  // namespace refhost
