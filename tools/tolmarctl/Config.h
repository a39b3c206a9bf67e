#pragma once

#include "tools/tolmarctl/Options.h"

/// Shows the host's configuration, examines it, or keeps the session token. Starts no host.
/// @return the program's exit status.
int Config(const Options& options);
