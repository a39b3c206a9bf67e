#pragma once

#include "reference_host/process/ProcessStart.h"
#include "reference_host/process/UserSession.h"

namespace refhost {

/// Starts an installer, which its host's end leaves alone: in the user's session with a token for
/// it, without one or when Windows refuses, in this process's own. A refusal is logged.
/// @param order in, without job and token.
/// @return the process, nothing (and the last error) when it does not start.
Handle StartInstaller(ProcessOrder order, const SessionToken& user);

}  // namespace refhost
