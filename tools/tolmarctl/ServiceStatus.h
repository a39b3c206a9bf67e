#pragma once

#include "tools/tolmarctl/Options.h"

/// Tells how the service is, and what it has kept of its runs. Starts neither host nor agent.
/// @return the program's exit status.
int ServiceStatus(const Options& options);

/// Has the service run now. Starts neither host nor agent.
/// @return the program's exit status.
int ServiceRun(const Options& options);
