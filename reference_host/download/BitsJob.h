#pragma once

#include <windows.h>
// Behind windows.h, whose types they need.
#include <bits.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/base/Com.h"
#include "reference_host/download/BitsFailure.h"

namespace refhost {

struct BitsFile {
  std::wstring url;
  std::wstring localPath;
};

struct BitsOrder {
  std::wstring name;
  std::wstring headers;  ///< lines separated by CR LF, sent with every file
  BG_JOB_PRIORITY priority;
  std::vector<BitsFile> files;
  std::wstring proxy{};  ///< host and port; empty: what the machine has for the account
};

struct BitsProgress {
  std::wstring localPath;
  std::uint64_t transferred = 0;
  std::optional<std::uint64_t> total;  ///< nothing when BITS does not know it
  bool completed = false;
};

/// One download job of the Background Intelligent Transfer Service. Used by threads that have a
/// `ComApartment`; the calls go to another process and take a moment each. A job that has been
/// neither completed nor kept is cancelled when the object goes; it may take longer to end than the
/// object.
class BitsJob {
 public:
  using Manager = ComPtr<IBackgroundCopyManager>;

  /// Finds BITS. One connection is to serve a whole download: more are needless, and one that is
  /// made while another thread lets go of its objects can silence Wine's BITS for good.
  /// @param manager out, null on failure. @return S_OK or BITS's error.
  static HRESULT Connect(Manager& manager);

  /// Makes a job; `Resume` sets it going.
  /// @param result out, S_OK or BITS's error. @return null on failure; nothing is left then.
  static std::unique_ptr<BitsJob> Make(const Manager& manager, const BitsOrder& order,
                                       HRESULT& result);

  /// Takes over a job that is there.
  /// @return null when BITS does not tell its files; the job is left as it is then.
  static std::unique_ptr<BitsJob> Take(const ComPtr<IBackgroundCopyJob>& job);

  ~BitsJob();
  BitsJob(const BitsJob&) = delete;
  BitsJob& operator=(const BitsJob&) = delete;

  GUID Id() const;

  /// @param state out, `BG_JOB_STATE_CANCELLED` on failure. @return S_OK or BITS's error.
  HRESULT State(BG_JOB_STATE& state) const;

  /// @return the files with the addresses that the job has for them.
  std::vector<BitsFile> Files() const;

  /// @param all out, each file's progress, in the order of the job. @return S_OK or BITS's error.
  HRESULT Progress(std::vector<BitsProgress>& all) const;

  /// @return why the job is in an error state.
  BitsFailure Failure() const;

  /// Gives a job that goes or has stopped new headers, and files of it new addresses; `Resume` sets
  /// it going again.
  /// @return false where the platform cannot do that; the job is then good for `Complete` only, or
  /// goes on as it was.
  bool Redirect(const BitsOrder& order, const std::vector<BitsFile>& files);

  /// Sets a job that is new or has stopped with an error going. @return false when it cannot.
  bool Resume();

  /// Ends the job and leaves its completed files, no others, under their names.
  /// @return S_OK, or BITS's error: the job is as it was then, and may be tried again.
  HRESULT Complete();

  /// Lets the job rest where it is, without the headers, which hold a secret, so that a later
  /// download can take it over. @return false when BITS cannot; the job is as it was then.
  bool Keep();

 private:
  explicit BitsJob(ComPtr<IBackgroundCopyJob> job) : _job(std::move(job)) {}

  HRESULT Set(const BitsOrder& order);
  HRESULT SetHttp(const wchar_t* headers);
  HRESULT Add(const BitsOrder& order);
  HRESULT LookUpFiles();
  bool Rename(const BitsFile& file);

  /// What does not change is kept: asking takes a message to another process.
  struct File {
    ComPtr<IBackgroundCopyFile> object;
    std::wstring localPath;
  };

  ComPtr<IBackgroundCopyJob> _job;
  std::vector<File> _files;
  bool _over = false;  ///< completed or kept
};

/// Ends a job, whosever; it may take longer to end than the call.
void CancelJob(const ComPtr<IBackgroundCopyJob>& job);

}  // namespace refhost
