#pragma once

#include "tools/tolmarctl/Options.h"

/// Packs what somebody needs who is to find out what went wrong on this device into the cabinet
/// `options.file`: logs, events, report, what the doctor says, the configuration
/// without its secrets.
/// @return the program's exit status.
int Bundle(const Options& options);
