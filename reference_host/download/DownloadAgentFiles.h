#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/common/DownloadAgent.h"
#include "reference_host/download/BitsFailure.h"
#include "reference_host/download/BitsJob.h"
#include "reference_host/download/BitsProbe.h"
#include "reference_host/download/FilePlace.h"

namespace refhost {

/// The files of one download, across all the jobs that it takes. Not guarded: used by one thread at
/// a time.
class DownloadFileSet {
 public:
  using Wait = FilePlace::Wait;

  explicit DownloadFileSet(const DownloadAgent::FileMap& files);

  bool IsFinished() const;

  /// @return what a job still has to fetch.
  std::vector<BitsFile> Unfinished() const;

  /// @param jobsFiles in, with the addresses that a job has for them. @return the unfinished ones
  /// among them that have another address by now: a new one, or BITS was led elsewhere.
  std::vector<BitsFile> Readdressed(const std::vector<BitsFile>& jobsFiles) const;

  /// Takes note that a new job fetches what is unfinished, from the first byte on.
  void BeginAnew();

  /// @return the failure of a file that BITS takes no job for: its names are too long.
  std::optional<BitsFailure> FindBeyondBits() const;

  /// @return the file that a failure is about: the first unfinished one when the failure does not
  /// say. There is a file.
  DownloadFile& FailingFile(const BitsFailure& failure);

  /// @param part in, a file's place in a job, empty when it is not known. @return true when it is
  /// none of these files.
  bool IsNeedless(const std::wstring& part) const;

  /// Takes over what the server says about the files.
  /// @return the first refusal of an unfinished one.
  std::optional<BitsFailure> Learn(const BitsProbe& probe);

  /// @return why the server of an unfinished file was not reached.
  std::optional<BitsFailure> TransportFailure(const BitsProbe& probe) const;

  /// Takes note that bytes may come from now on.
  void BeginTransfer() { _since = AwakeClock::Now(); }

  /// Takes over a job's progress.
  void Update(const std::vector<BitsProgress>& progress);

  /// Once a job has all: what nobody has announced is as long as it is.
  void SettleLengths();

  /// @return the failure of a file that has grown past its announced length, or that is larger, by
  /// what has come or by what is announced, than any file may be.
  std::optional<BitsFailure> FindOversized() const;

  /// @return the failure when the disk does not take what is still to come of the known lengths.
  std::optional<BitsFailure> FindNoRoom() const;

  /// Removes what a process that died has left in the unfinished files' places.
  /// @return the failure when one of the places cannot be written to: better known before a
  /// transfer than behind it.
  std::optional<BitsFailure> ClearPlaces(const Wait& wait) const;

  /// Puts what has arrived into its place; the job that brought it is completed.
  /// @return the first failure: a file that was cut off, or that could not be put there.
  std::optional<BitsFailure> Place(const Wait& wait);

  /// Takes new addresses from file name to URL, for unfinished files only and for each a bounded
  /// number of times.
  /// @return true when every one of them was taken.
  bool Renew(const DownloadAgent::FileMap& addresses);

  /// @return the sum; its total of bytes is BG_SIZE_UNKNOWN while a length is not known.
  DownloadProgressDetail Total() const;
  std::vector<DownloadProgressDetail> Each() const;

  /// @return URL to local path of all files, with the addresses that they have now.
  DownloadAgent::FileMap Map() const;

 private:
  bool RenewOne(const std::wstring& name, const std::wstring& url);

  std::vector<DownloadFile> _files;
  AwakeClock::Time _since =
      AwakeClock::Now();  ///< the transfer's begin, or when a file was last seen to be there
};

}  // namespace refhost
