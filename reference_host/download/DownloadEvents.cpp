#include "reference_host/download/DownloadEvents.h"

#include <algorithm>

#include "host/common/FileSystem.h"
#include "reference_host/base/Url.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

/// @return null for a code that says no more than its context does.
const char* CauseOfCode(HRESULT code) {
  switch (code) {
    case OverlongFile:
    case OtherAnswer:
      return "download.content";
    case TooLargeFile:
      return "download.too-large";
    case FullDisk:
      return "device.disk-full";
    case NoBytesInTime:
      return "download.stalled";
    case TruncatedFile:
      return "download.network";
    case TooLongAName:
      return "download.address";
    case HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION):
    case HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION):
      return "device.file-in-use";
    default:
      return nullptr;
  }
}

}  // namespace

const char* CauseOf(const BitsFailure& failure) {
  if (HttpStatusOf(failure.code) != 0) return "download.refused";
  if (const char* cause = CauseOfCode(failure.code)) return cause;
  switch (failure.context) {
    case BG_ERROR_CONTEXT_LOCAL_FILE:
      return "device.folder";
    case BG_ERROR_CONTEXT_GENERAL_QUEUE_MANAGER:
      return "download.service";
    case BG_ERROR_CONTEXT_REMOTE_FILE:
      return "download.refused";
    default:
      return "download.network";
  }
}

void TellDone(const DownloadFile& file) {
  const std::int64_t ms = std::max<std::int64_t>(file.took.count(), 1);
  const auto bytes = static_cast<std::int64_t>(file.length.value_or(file.transferred));
  Event("file.done")
      .With("file", FileSystem::getFileName(file.path))
      .With("bytes", bytes)
      .With("ms", ms)
      .With("bytesPerSecond", bytes * 1000 / ms)
      .Write();
}

void TellFailure(const DownloadFile& file, const BitsFailure& failure,
                 std::optional<std::chrono::milliseconds> wait) {
  Event event("file.failed");
  event.With("file", FileSystem::getFileName(file.path))
      .With("address", WithoutQuery(file.url))
      .With("attempt", 1 + file.retries + file.renewals)
      .With("reason", failure.description)
      .With("context", static_cast<int>(failure.context))
      .With("code", static_cast<std::uint32_t>(failure.code))
      .With("cause", CauseOf(failure));
  if (const std::uint32_t status = HttpStatusOf(failure.code)) event.With("status", status);
  if (wait) event.With("waitMs", wait->count());
  event.Write();
}

}  // namespace refhost
