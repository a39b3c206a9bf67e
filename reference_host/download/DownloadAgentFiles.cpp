#include "reference_host/download/DownloadAgentFiles.h"

#include <algorithm>

#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/download/BitsLimits.h"
#include "reference_host/download/DownloadEvents.h"

namespace refhost {

namespace {

/// How often one file may get a new address, so that a service that hands out bad ones for ever
/// does not keep a download alive for ever.
constexpr int MaxRenewals = 3;

using FilePlace::FailureOf;

}  // namespace

DownloadFileSet::DownloadFileSet(const DownloadAgent::FileMap& files) {
  for (const auto& [url, path] : files) {
    DownloadFile& file = _files.emplace_back();
    file.url = url;
    file.path = path;
    file.part = FilePlace::PartOf(path);
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

std::vector<BitsFile> DownloadFileSet::Readdressed(const std::vector<BitsFile>& jobsFiles) const {
  std::vector<BitsFile> readdressed;
  for (const DownloadFile& file : _files) {
    const bool differs =
        std::any_of(jobsFiles.begin(), jobsFiles.end(), [&file](const BitsFile& jobs) {
          return jobs.localPath == file.part && jobs.url != file.url;
        });
    if (differs && !file.finished) readdressed.push_back({file.url, file.part});
  }
  return readdressed;
}

void DownloadFileSet::BeginAnew() {
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

bool DownloadFileSet::IsNeedless(const std::wstring& part) const {
  return !part.empty() && std::none_of(_files.begin(), _files.end(),
                                       [&](const auto& file) { return file.part == part; });
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
  const AwakeClock::Time now = AwakeClock::Now();
  bool hasMore = false;
  for (DownloadFile& file : _files) {
    const auto found = std::find_if(progress.begin(), progress.end(), [&](const BitsProgress& one) {
      return one.localPath == file.part;
    });
    if (file.finished || found == progress.end()) continue;
    file.transferred = found->transferred;
    if (found->completed && !file.arrived) {
      file.took = now - _since;
      hasMore = true;
    }
    file.arrived = found->completed;
    file.jobsLength = found->total;
  }
  if (hasMore) _since = now;
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
    if (std::optional<BitsFailure> failure = FilePlace::Clear(file, wait)) return failure;
  }
  return std::nullopt;
}

std::optional<BitsFailure> DownloadFileSet::Place(const Wait& wait) {
  std::optional<BitsFailure> first;
  for (DownloadFile& file : _files) {
    if (file.finished || !file.arrived) continue;
    const std::optional<BitsFailure> failure = FilePlace::Fill(file, wait);
    file.finished = !failure;
    if (file.finished) TellDone(file);
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
  found->url = url;
  found->length.reset();
  return true;
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
