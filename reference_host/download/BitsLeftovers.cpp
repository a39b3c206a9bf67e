#include "reference_host/download/BitsLeftovers.h"

#include <algorithm>
#include <functional>

#include "reference_host/base/ThisUser.h"
#include "reference_host/base/Url.h"
#include "reference_host/download/FilePlace.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

std::wstring NameOf(IBackgroundCopyJob& job) {
  ComText name;
  job.GetDisplayName(name.Out());
  return name.Text();
}

bool IsOfThisUser(IBackgroundCopyJob& job) {
  ComText owner;
  const HRESULT result = job.GetOwner(owner.Out());
  if (wine::KnowsNoOwner(result)) return true;
  return SUCCEEDED(result) && !owner.Text().empty() && owner.Text() == SidOfThisUser();
}

/// @return false for a job that is over, which BITS may list for a while.
bool IsAlive(IBackgroundCopyJob& job) {
  BG_JOB_STATE state = BG_JOB_STATE_CANCELLED;
  job.GetState(&state);
  return state != BG_JOB_STATE_CANCELLED && state != BG_JOB_STATE_ACKNOWLEDGED;
}

/// @return whether every file of the job that goes where the order's go is of the order, and one
/// is.
bool Fits(const BitsJob& job, const BitsOrder& order) {
  bool hasOne = false;
  for (const BitsFile& file : job.Files()) {
    const auto wanted = std::find_if(order.files.begin(), order.files.end(), [&](const auto& one) {
      return one.localPath == file.localPath;
    });
    const bool isWanted = wanted != order.files.end();
    if (isWanted ? WithoutQuery(wanted->url) != WithoutQuery(file.url)
                 : !IsBelow(file.localPath, FilePlace::ArrivalFolder())) {
      return false;
    }
    hasOne |= isWanted;
  }
  return hasOne;
}

/// Calls `act` with each job of this account. @return S_OK or BITS's error.
HRESULT ForEachJob(const BitsJob::Manager& manager,
                   const std::function<void(const ComPtr<IBackgroundCopyJob>&)>& act) {
  ComPtr<IEnumBackgroundCopyJobs> jobs;
  HRESULT result = manager->EnumJobs(0, &jobs);
  if (FAILED(result)) return result;
  ComPtr<IBackgroundCopyJob> job;
  while ((result = jobs->Next(1, job.ReleaseAndGetAddressOf(), nullptr)) == S_OK) {
    AllowImpersonation(job);
    act(job);
  }
  return SUCCEEDED(result) ? S_OK : result;
}

/// @return where the job's first file goes, empty when it has none.
std::wstring FirstLocalNameOf(IBackgroundCopyJob& job) {
  ComPtr<IEnumBackgroundCopyFiles> files;
  ComPtr<IBackgroundCopyFile> file;
  if (FAILED(job.EnumFiles(&files)) || files->Next(1, &file, nullptr) != S_OK) return {};
  AllowImpersonation(file);
  ComText name;
  file->GetLocalName(name.Out());
  return name.Text();
}

bool FetchesInto(const std::wstring& folder, IBackgroundCopyJob& job) {
  return IsAlive(job) && IsBelow(FirstLocalNameOf(job), folder);
}

}  // namespace

HRESULT CountJobsInto(const BitsJob::Manager& manager, const std::wstring& folder,
                      unsigned long& count) {
  return ForEachJob(manager, [&](const ComPtr<IBackgroundCopyJob>& job) {
    if (FetchesInto(folder, *job.Get())) ++count;
  });
}

HRESULT CancelJobsInto(const BitsJob::Manager& manager, const std::wstring& folder) {
  return ForEachJob(manager, [&](const ComPtr<IBackgroundCopyJob>& job) {
    if (FetchesInto(folder, *job.Get())) CancelJob(job);
  });
}

std::unique_ptr<BitsJob> TakeUpLeftovers(const BitsJob::Manager& manager, const BitsOrder& order,
                                         HRESULT& result) {
  std::unique_ptr<BitsJob> fitting;
  result = ForEachJob(manager, [&](const ComPtr<IBackgroundCopyJob>& job) {
    if (NameOf(*job.Get()) != order.name || !IsOfThisUser(*job.Get()) || !IsAlive(*job.Get())) {
      return;
    }
    std::unique_ptr<BitsJob> taken = BitsJob::Take(job);
    if (!taken) CancelJob(job);
    // What is not kept here is cancelled where it goes out of scope.
    if (taken && !fitting && Fits(*taken, order)) fitting = std::move(taken);
  });
  return fitting;
}

}  // namespace refhost
