#include "reference_host/download/DownloadAgentFiles.h"

#include <algorithm>

#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "reference_host/base/Handle.h"
#include "reference_host/base/Patience.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/download/BitsLimits.h"

namespace refhost {

namespace {

/// How often one file may get a new address, so that a service that hands out bad ones for ever
/// does not keep a download alive for ever.
constexpr int MaxRenewals = 3;

HRESULT LastError() { return HRESULT_FROM_WIN32(GetLastError()); }

BitsFailure FailureOf(const DownloadFile& file, BG_ERROR_CONTEXT context, HRESULT code) {
  return FailureWith(context, code, file.part);
}

std::optional<std::uint64_t> SizeOnDisk(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

/// @return the failure when a file that has arrived is not what was announced.
std::optional<BitsFailure> CheckLength(const DownloadFile& file, std::uint64_t size) {
  if (!file.length || size == *file.length) return std::nullopt;
  // A reply that is whole by its own account is another one than the file: an error page, say.
  if (size == file.jobsLength) return FailureOf(file, BG_ERROR_CONTEXT_REMOTE_FILE, OtherAnswer);
  return FailureOf(file, BG_ERROR_CONTEXT_GENERAL_TRANSPORT,
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
std::optional<BitsFailure> FailureToUse(const DownloadFile& file, const DownloadFileSet::Wait& wait,
                                        const Attempt& attempt) {
  const HRESULT result = Patiently(DownloadFileSet::InUsePatience(), wait, attempt);
  if (SUCCEEDED(result)) return std::nullopt;
  return FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, result);
}

std::optional<BitsFailure> PlaceOne(const DownloadFile& file, const DownloadFileSet::Wait& wait) {
  const std::optional<std::uint64_t> size = SizeOnDisk(file.part);
  if (!size) return FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, LastError());
  if (std::optional<BitsFailure> failure = CheckLength(file, *size)) {
    DeleteFileW(file.part.c_str());
    return failure;
  }
  return FailureToUse(file, wait, [&file] { return Move(file); });
}

/// Names in folders below the download folder are flattened: there is one folder to arrive in.
std::wstring PartOf(const std::wstring& path) {
  const std::size_t folder = DownloadFolder().size();
  std::wstring name = path.substr(std::min(folder, path.size()));
  std::replace(name.begin(), name.end(), L'\\', L';');
  return ArrivalFolder() + L"\\" + name.substr(1) + L".part";
}

}  // namespace

std::wstring ArrivalFolder() { return DownloadFolder() + L".arriving"; }

std::chrono::milliseconds DownloadFileSet::InUsePatience() {
  return std::chrono::seconds(Settings().fileInUseSeconds);
}

DownloadFileSet::DownloadFileSet(const DownloadAgent::FileMap& files) {
  for (const auto& [url, path] : files) {
    DownloadFile& file = _files.emplace_back();
    file.url = url;
    file.path = path;
    file.part = PartOf(path);
  }
}

bool DownloadFileSet::IsFinished() const {
  return std::all_of(_files.begin(), _files.end(), [](const auto& file) { return file.finished; });
}

std::vector<BitsFile> DownloadFileSet::Unfinished() const {
  std::vector<BitsFile> unfinished;
  for (const DownloadFile& file : _files) {
    if (!file.finished) unfinished.push_back({file.url, file.part});
  }
  return unfinished;
}

std::vector<BitsFile> DownloadFileSet::Renewed() const {
  std::vector<BitsFile> renewed;
  for (const DownloadFile& file : _files) {
    if (file.renewed && !file.finished) renewed.push_back({file.url, file.part});
  }
  return renewed;
}

void DownloadFileSet::ForgetRenewed() {
  for (DownloadFile& file : _files) file.renewed = false;
}

void DownloadFileSet::TakeUp(const std::vector<BitsFile>& jobsFiles) {
  for (DownloadFile& file : _files) {
    file.renewed = std::any_of(jobsFiles.begin(), jobsFiles.end(), [&](const BitsFile& jobs) {
      return jobs.localPath == file.part && jobs.url != file.url;
    });
  }
}

void DownloadFileSet::BeginAnew() {
  ForgetRenewed();
  for (DownloadFile& file : _files) {
    if (!file.finished) file.transferred = 0;
  }
}

std::optional<BitsFailure> DownloadFileSet::FindBeyondBits() const {
  for (const DownloadFile& file : _files) {
    if (!IsPathForBits(file.part)) {
      return FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, TooLongAName);
    }
    if (!IsAddressForBits(file.url)) {
      return FailureOf(file, BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER, TooLongAName);
    }
  }
  return std::nullopt;
}

DownloadFile& DownloadFileSet::FailingFile(const BitsFailure& failure) {
  const auto named = std::find_if(_files.begin(), _files.end(), [&](const DownloadFile& file) {
    return !file.finished && file.part == failure.localPath;
  });
  if (named != _files.end()) return *named;
  const auto missing = std::find_if(_files.begin(), _files.end(),
                                    [](const DownloadFile& file) { return !file.finished; });
  return missing != _files.end() ? *missing : _files.front();
}

std::optional<BitsFailure> DownloadFileSet::Learn(const BitsProbe& probe) {
  std::optional<BitsFailure> first;
  for (DownloadFile& file : _files) {
    if (file.finished) continue;
    const ServerAnswer answer = probe.AnswerFor(file.url);
    file.length = answer.length;
    std::optional<BitsFailure> refusal = answer.Refusal();
    if (!refusal || first) continue;
    refusal->localPath = file.part;
    first = refusal;
  }
  return first;
}

std::optional<BitsFailure> DownloadFileSet::TransportFailure(const BitsProbe& probe) const {
  for (const DownloadFile& file : _files) {
    std::optional<BitsFailure> failure;
    if (!file.finished) failure = probe.AnswerFor(file.url).TransportFailure();
    if (!failure) continue;
    failure->localPath = file.part;
    return failure;
  }
  return std::nullopt;
}

void DownloadFileSet::Update(const std::vector<BitsProgress>& progress) {
  for (DownloadFile& file : _files) {
    const auto found = std::find_if(progress.begin(), progress.end(), [&](const BitsProgress& one) {
      return one.localPath == file.part;
    });
    if (file.finished || found == progress.end()) continue;
    file.transferred = found->transferred;
    file.arrived = found->completed;
    file.jobsLength = found->total;
  }
}

void DownloadFileSet::SettleLengths() {
  for (DownloadFile& file : _files) {
    if (!file.length) file.length = file.jobsLength.value_or(file.transferred);
  }
}

std::optional<BitsFailure> DownloadFileSet::FindOversized() const {
  const std::uint64_t most = Settings().maxFileBytes;
  for (const DownloadFile& file : _files) {
    if (std::max(file.transferred, file.length.value_or(0)) > most) {
      return FailureOf(file, BG_ERROR_CONTEXT_GENERAL_TRANSPORT, TooLargeFile);
    }
    if (file.transferred > file.length.value_or(most)) {
      return FailureOf(file, BG_ERROR_CONTEXT_GENERAL_TRANSPORT, OverlongFile);
    }
  }
  return std::nullopt;
}

std::optional<BitsFailure> DownloadFileSet::FindNoRoom() const {
  std::uint64_t needed = 0;
  for (const DownloadFile& file : _files) {
    const std::uint64_t length = file.finished ? 0 : file.length.value_or(0);
    needed += length - std::min(length, file.transferred);
    ULARGE_INTEGER room{};
    const std::wstring folder = file.path.substr(0, file.path.find_last_of(L'\\'));
    if (!GetDiskFreeSpaceExW(folder.c_str(), &room, nullptr, nullptr)) continue;
    if (needed > room.QuadPart) return FailureOf(file, BG_ERROR_CONTEXT_LOCAL_FILE, FullDisk);
  }
  return std::nullopt;
}

std::optional<BitsFailure> DownloadFileSet::ClearPlaces(const Wait& wait) const {
  for (const DownloadFile& file : _files) {
    if (file.finished) continue;
    const auto clear = [&file] {
      const HRESULT result = Remove(file.part);
      return FAILED(result) ? result : Replaceable(file.path);
    };
    if (std::optional<BitsFailure> failure = FailureToUse(file, wait, clear)) return failure;
  }
  return std::nullopt;
}

std::optional<BitsFailure> DownloadFileSet::FindHeld(const Wait& wait) const {
  for (const DownloadFile& file : _files) {
    if (file.finished || !file.arrived) continue;
    const auto look = [&file] { return Replaceable(file.part); };
    if (std::optional<BitsFailure> failure = FailureToUse(file, wait, look)) return failure;
  }
  return std::nullopt;
}

std::optional<BitsFailure> DownloadFileSet::Place(const Wait& wait) {
  std::optional<BitsFailure> first;
  for (DownloadFile& file : _files) {
    if (file.finished || !file.arrived) continue;
    const std::optional<BitsFailure> failure = PlaceOne(file, wait);
    file.finished = !failure;
    file.arrived = false;
    if (!first) first = failure;
  }
  return first;
}

bool DownloadFileSet::Renew(const DownloadAgent::FileMap& addresses) {
  return !addresses.empty() &&
         std::all_of(addresses.begin(), addresses.end(),
                     [this](const auto& entry) { return RenewOne(entry.first, entry.second); });
}

bool DownloadFileSet::RenewOne(const std::wstring& name, const std::wstring& url) {
  const auto found = std::find_if(_files.begin(), _files.end(), [&](const DownloadFile& file) {
    return !file.finished && FileSystem::getFileName(file.path) == name;
  });
  const wchar_t* refusal = nullptr;
  if (found == _files.end()) {
    refusal = L"no unfinished file has this name";
  } else if (!IsAllowedUrl(url)) {
    refusal = L"neither https nor a loopback address";
  } else if (!IsAddressForBits(url)) {
    refusal = L"BITS takes none that is so long";
  } else if (found->renewals >= MaxRenewals) {
    refusal = L"it had its share of new addresses";
  }
  if (refusal != nullptr) {
    ZLT::g_log.e(L"DownloadAgent: the new address %s of %s is refused: %s",
                 WithoutQuery(url).c_str(), name.c_str(), refusal);
    return false;
  }
  ++found->renewals;
  found->renewed = true;
  found->url = url;
  found->length.reset();
  return true;
}

void DownloadFileSet::RemoveParts() const {
  for (const DownloadFile& file : _files) {
    if (!file.finished) DeleteFileW(file.part.c_str());
  }
  RemoveDirectoryW(ArrivalFolder().c_str());
}

DownloadProgressDetail DownloadFileSet::Total() const {
  DownloadProgressDetail sum{};
  for (const DownloadProgressDetail& one : Each()) {
    const bool known = one.bytesTotal != BG_SIZE_UNKNOWN && sum.bytesTotal != BG_SIZE_UNKNOWN;
    sum.bytesTotal = known ? sum.bytesTotal + one.bytesTotal : BG_SIZE_UNKNOWN;
    sum.bytesTransferred += one.bytesTransferred;
    sum.filesTransferred += one.filesTransferred;
    sum.filesTotal += one.filesTotal;
  }
  return sum;
}

std::vector<DownloadProgressDetail> DownloadFileSet::Each() const {
  std::vector<DownloadProgressDetail> each;
  for (const DownloadFile& file : _files) {
    const std::optional<std::uint64_t> length = file.length ? file.length : file.jobsLength;
    each.push_back({file.transferred, length.value_or(BG_SIZE_UNKNOWN),
                    file.finished || file.arrived ? 1ull : 0ull, 1});
  }
  return each;
}

DownloadAgent::FileMap DownloadFileSet::Map() const {
  DownloadAgent::FileMap map;
  for (const DownloadFile& file : _files) map[file.url] = file.path;
  return map;
}

}  // namespace refhost
