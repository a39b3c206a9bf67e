#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "reference_host/base/AwakeClock.h"
#include "reference_host/download/BitsFailure.h"

namespace refhost {

/// One file of a download and how far it is.
struct DownloadFile {
  std::wstring url;
  std::wstring path;
  std::wstring part;  ///< where the job puts it: its name appears only once it is known to be whole
  std::optional<std::uint64_t> length;      ///< as announced before the transfer, in bytes
  std::optional<std::uint64_t> jobsLength;  ///< as the transfer's own reply has announced it
  std::uint64_t transferred = 0;
  AwakeClock::Time took{0};  ///< until it had arrived: as the looks at the job tell, or less
  bool arrived = false;      ///< the job has it, its length is still to be checked
  bool finished = false;     ///< whole and in its place
  int retries = 0;
  int renewals = 0;
};

/// Where files come to, and what others that have them open do to that.
namespace FilePlace {

/// Waits so many milliseconds. @return false when the download is to stop.
using Wait = std::function<bool(DWORD)>;

/// @return the folder that jobs put files into, beside the download folder: that one is deleted
/// when a download has been stopped, while the job and its bytes may stay for the next. No trailing
/// backslash.
std::wstring ArrivalFolder();

/// @return where in that folder a job puts the file whose later place is `path`.
std::wstring PartOf(const std::wstring& path);

BitsFailure FailureOf(const DownloadFile& file, BG_ERROR_CONTEXT context, HRESULT code);

/// Removes what a process that died has left where a job puts the file.
/// @return the failure when that, or what is in the file's later place, cannot be replaced.
std::optional<BitsFailure> Clear(const DownloadFile& file, const Wait& wait);

/// Moves a file that has arrived to its place, when it is as long as announced.
std::optional<BitsFailure> Fill(const DownloadFile& file, const Wait& wait);

}  // namespace FilePlace

}  // namespace refhost
