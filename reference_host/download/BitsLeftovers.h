#pragma once

#include <memory>

#include "reference_host/download/BitsJob.h"

namespace refhost {

/// Looks through the jobs of this account that earlier downloads have left: a host's death, a
/// restart of the machine, a stop. Takes up one that fetches a file of the order, from the address
/// of the order (the queries may differ) to the place of the order, and cancels the others of the
/// order's name. What it fetches besides has a place of its own in `FilePlace::ArrivalFolder`: a
/// file that was missing then and has come another way since. Jobs of other accounts are let alone.
/// @param result out, S_OK or BITS's error. @return the job, in whatever state; null for none.
std::unique_ptr<BitsJob> TakeUpLeftovers(const BitsJob::Manager& manager, const BitsOrder& order,
                                         HRESULT& result);

/// Counts the jobs of this account that fetch into a folder.
/// @param count out. @return S_OK or BITS's error.
HRESULT CountJobsInto(const BitsJob::Manager& manager, const std::wstring& folder,
                      unsigned long& count);

/// Cancels the jobs of this account that fetch into a folder. @return S_OK or BITS's error.
HRESULT CancelJobsInto(const BitsJob::Manager& manager, const std::wstring& folder);

}  // namespace refhost
