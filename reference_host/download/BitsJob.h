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
};

struct BitsProgress {
  std::wstring localPath;
  std::uint64_t transferred = 0;
  std::optional<std::uint64_t> total;  ///< nothing when BITS does not know it
  bool completed = false;
};

/// One download job of the Background Intelligent Transfer Service. Used by threads that have a
/// `ComApartment`; the calls go to another process and take a moment each. A job that has not been
/// completed is cancelled when the object goes; it may take longer to end than the object.
class BitsJob {
 public:
  using Manager = ComPtr<IBackgroundCopyManager>;

  /// Finds BITS. One connection is to serve a whole download: more are needless, and one that is
  /// made while another thread lets go of its objects can silence Wine's BITS for good.
  /// @param manager out, null on failure. @return S_OK or BITS's error.
  static HRESULT Connect(Manager& manager);

  /// Cancels this user's jobs of a name: what a process that died has left would keep the queue
  /// busy.
  /// @return S_OK or BITS's error.
  static HRESULT CancelAll(const Manager& manager, const std::wstring& name);

  /// Counts this user's jobs that fetch into a folder or below it.
  /// @param count out. @return S_OK or BITS's error.
  static HRESULT CountInto(const Manager& manager, const std::wstring& folder,
                           unsigned long& count);

  /// Makes a job; `Resume` sets it going.
  /// @param result out, S_OK or BITS's error. @return null on failure; nothing is left then.
  static std::unique_ptr<BitsJob> Make(const Manager& manager, const BitsOrder& order,
                                       HRESULT& result);

  ~BitsJob();
  BitsJob(const BitsJob&) = delete;
  BitsJob& operator=(const BitsJob&) = delete;

  GUID Id() const;

  /// @return the job's state; `BG_JOB_STATE_CANCELLED` when BITS knows it no more.
  BG_JOB_STATE State() const;

  /// @return each file's progress, in the order of the job.
  std::vector<BitsProgress> Progress() const;

  /// @return why the job is in an error state.
  BitsFailure Failure() const;

  /// Gives files of a job that does not run new addresses.
  /// @return false where the platform cannot do that; the job is then good for `Complete` only.
  bool Redirect(const std::vector<BitsFile>& files);

  /// Sets a job that is new or has stopped with an error going. @return false when it cannot.
  bool Resume();

  /// Ends the job and leaves its completed files, no others, under their names.
  void Complete();

 private:
  explicit BitsJob(ComPtr<IBackgroundCopyJob> job) : _job(std::move(job)) {}

  HRESULT Set(const BitsOrder& order);
  HRESULT Add(const BitsOrder& order);
  bool Rename(const BitsFile& file);

  /// What does not change is kept: asking takes a message to another process.
  struct File {
    ComPtr<IBackgroundCopyFile> object;
    std::wstring localPath;
  };

  ComPtr<IBackgroundCopyJob> _job;
  std::vector<File> _files;
  bool _completed = false;
};

}  // namespace refhost
