#pragma once

#include "reference_host/configuration/Configuration.h"

namespace service {

/// @return milliseconds that a stop takes at the most, by the table "What a stop waits for" of
/// docs/operations.md: a request that is under way and a report behind it, each with the four steps
/// that its answer has in all, the check after a cancelled installation, the end of its processes,
/// and the pause before the download folder's second deletion.
unsigned int StopBoundMs(const refhost::Configuration& settings);

}  // namespace service
