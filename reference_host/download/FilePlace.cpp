#include "reference_host/download/FilePlace.h"

#include <algorithm>

#include "reference_host/base/FileInUse.h"
#include "reference_host/base/Handle.h"
#include "reference_host/configuration/Folders.h"

namespace refhost {

namespace {

HRESULT LastError() { return HRESULT_FROM_WIN32(GetLastError()); }

std::optional<std::uint64_t> SizeOnDisk(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

/// @return the failure when a file that has arrived is not what was announced.
std::optional<BitsFailure> CheckLength(const DownloadFile& file, std::uint64_t size) {
  if (!file.length || size == *file.length) return std::nullopt;
  // A reply that is whole by its own account is another one than the file: an error page, say.
  if (size == file.jobsLength)
    return FilePlace::FailureOf(file, BG_ERROR_CONTEXT_REMOTE_FILE, OtherAnswer);
  return FilePlace::FailureOf(file, BG_ERROR_CONTEXT_GENERAL_TRANSPORT,
                              size < *file.length ? TruncatedFile : OverlongFile);
}

HRESULT Remove(const std::wstring& path) {
  if (!DeleteFileW(path.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) return LastError();
  // Somebody may have it open still and let it be deleted: the name goes only with the last handle.
  return SizeOnDisk(path) ? HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION) : S_OK;
}

/// @return S_OK when another file can take the place of what is there, if anything is.
HRESULT Replaceable(const std::wstring& path) {
  constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const Handle older(
      CreateFileW(path.c_str(), DELETE, Sharing, nullptr, OPEN_EXISTING, 0, nullptr));
  return older || GetLastError() == ERROR_FILE_NOT_FOUND ? S_OK : LastError();
}

HRESULT Move(const DownloadFile& file) {
  constexpr DWORD Flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return MoveFileExW(file.part.c_str(), file.path.c_str(), Flags) ? S_OK : LastError();
}

/// @return the failure when `attempt` fails for the file, also while others may have it open.
template <typename Attempt>
std::optional<BitsFailure> FailureToUse(const DownloadFile& file, const FilePlace::Wait& wait,
                                        const Attempt& attempt) {
  const HRESULT result = Patiently(wait, attempt);
  if (SUCCEEDED(result)) return std::nullopt;
  return FilePlace::FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, result);
}

}  // namespace

std::wstring FilePlace::ArrivalFolder() { return DownloadFolder() + L".arriving"; }

/// Names in folders below the download folder are flattened: there is one folder to arrive in.
std::wstring FilePlace::PartOf(const std::wstring& path) {
  const std::size_t folder = DownloadFolder().size();
  std::wstring name = path.substr(std::min(folder, path.size()));
  std::replace(name.begin(), name.end(), L'\\', L';');
  return ArrivalFolder() + L"\\" + name.substr(1) + L".part";
}

BitsFailure FilePlace::FailureOf(const DownloadFile& file, BG_ERROR_CONTEXT context, HRESULT code) {
  return FailureWith(context, code, file.part);
}

std::optional<BitsFailure> FilePlace::Clear(const DownloadFile& file, const Wait& wait) {
  return FailureToUse(file, wait, [&file] {
    const HRESULT result = Remove(file.part);
    return FAILED(result) ? result : Replaceable(file.path);
  });
}

std::optional<BitsFailure> FilePlace::Fill(const DownloadFile& file, const Wait& wait) {
  const std::optional<std::uint64_t> size = SizeOnDisk(file.part);
  if (!size) return FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, LastError());
  if (std::optional<BitsFailure> failure = CheckLength(file, *size)) {
    DeleteFileW(file.part.c_str());
    return failure;
  }
  return FailureToUse(file, wait, [&file] { return Move(file); });
}

}  // namespace refhost
