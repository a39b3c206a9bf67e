#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/Export.h"

/// How far a download is.
struct DownloadProgressDetail {
  std::uint64_t bytesTransferred;  ///< bytes that have arrived
  std::uint64_t bytesTotal;        ///< bytes that there are
  std::uint64_t filesTransferred;  ///< files that are whole
  std::uint64_t filesTotal;        ///< files that there are
};

/// Why a file of a download failed.
struct ErrorDetails {
  std::int32_t errorContext;  ///< BITS's BG_ERROR_CONTEXT: 5 remote file, 7 remote application, ...
  std::int32_t errorCode;     ///< an HRESULT; HTTP statuses as 0x80190000 + status
  std::wstring errorDescription;  ///< for people, in the system's language
};

/// The suite's download service: background jobs that carry on by themselves and report through
/// callbacks. All operations may be called from any thread; none throws. A callback runs on a
/// thread of the service, while `DownloadFiles` of its job blocks; what a callback throws is logged
/// and dropped (progress: the job goes on; error: not resumed).
class ZLT_API DownloadAgent {
 public:
  /// Pairs of texts, one a file; the operations say which.
  using FileMap = std::map<std::wstring, std::wstring>;

  /// Once, when the job has ended: job name, job id, success, the job's files.
  using CompleteCallback = std::function<void(std::wstring, GUID, bool, FileMap&)>;
  /// On every step: job name, the whole job, each file; false asks the service to cancel the job.
  using ProgressCallback = std::function<bool(std::wstring, DownloadProgressDetail&,
                                              std::vector<DownloadProgressDetail>&)>;
  /// When a file fails: the failing files (URL to local path), the cause, and out: whether the
  /// callback has resumed the job through `ResumeDownload`. When it has not, the job fails.
  using ErrorCallback = std::function<void(FileMap&, ErrorDetails&, bool&)>;

  /// @param jobName in, the name that the caller's jobs have.
  /// @param onComplete in, see there. @param onProgress in, see there. @param onError in, see
  /// there.
  /// @return the service for jobs named `jobName`; the same object for the same name, for which the
  /// newest callbacks hold from the next download on. Their DLL stays loaded until others replace
  /// them or `CleanUp`. Never null; lives as long as the process.
  static DownloadAgent* GetInstance(std::wstring jobName, CompleteCallback onComplete,
                                    ProgressCallback onProgress, ErrorCallback onError);

  /// Downloads files; blocks until the job has ended.
  /// @param jobName in, the name that `GetInstance` was given.
  /// @param uploads in, false: a download (uploads are not offered).
  /// @param files in, URL to full local path; each path lies below the download folder.
  /// @param headers in, header lines separated by CR LF, sent with every file.
  /// @param jobId out, the job's identifier; untouched when no job could be made.
  /// @param cancelHandle in, an event; once signalled the job is cancelled and false is returned
  /// (what has come may be kept for a later job of the same files). May be null.
  /// @param priority in, 0 foreground, 1 high, 2 normal, 3 low.
  /// @return true when every file is in its place, whole.
  bool DownloadFiles(std::wstring jobName, bool uploads, FileMap files, std::wstring headers,
                     GUID& jobId, HANDLE cancelHandle, long priority);

  /// Carries on the job whose error callback is running, with new addresses.
  /// @param jobName in, the name that `GetInstance` was given.
  /// @param files in, file name (last component of the local path) to new URL.
  /// @return true when the job goes on.
  bool ResumeDownload(std::wstring jobName, FileMap files);

  /// Cancels what is running; a blocked `DownloadFiles` returns false soon, later calls return
  /// false at once, until the DLL of the callbacks is unloaded and one loaded anew asks for the
  /// service. A package that is being unpacked is given up too.
  void CleanUp();

 private:
  DownloadAgent();
  ~DownloadAgent();
  DownloadAgent(const DownloadAgent&) = delete;
  DownloadAgent& operator=(const DownloadAgent&) = delete;

  struct State;
  State* m_pState;
};
