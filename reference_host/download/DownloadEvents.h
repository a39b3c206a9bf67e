#pragma once

#include <optional>

#include "reference_host/download/DownloadAgentFiles.h"
#include "reference_host/log/Event.h"

namespace refhost {

/// @return the identifier of what a failure is caused by, see Causes.h. Pure.
const char* CauseOf(const BitsFailure& failure);

/// Tells of a file that is in its place, whole.
void TellDone(const DownloadFile& file);

/// Tells of a try that has failed. @param wait in, after which the next one comes; nothing: none
/// does, unless the owner has a new address.
void TellFailure(const DownloadFile& file, const BitsFailure& failure,
                 std::optional<std::chrono::milliseconds> wait);

}  // namespace refhost
