#pragma once

#include <string>

#include "tools/tolmarctl/Options.h"

/// Examines the device and prints a line for each check, or one JSON object of them. Neither the
/// agent nor the host is started for it.
/// @return the program's exit status: `Failure` when a check has failed.
int Doctor(const Options& options);

/// Examines the device. @return a line for each check.
std::string DoctorsLines();
