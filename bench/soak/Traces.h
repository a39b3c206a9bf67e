#pragma once

#include <windows.h>

#include <cstddef>

/// How many PowerShell scripts run on the machine: installers, and the others (checks).
struct RunningScripts {
  std::size_t installers = 0;
  std::size_t checks = 0;
};
RunningScripts FindRunningScripts();
void EndRunningScripts();

/// @return how many jobs the download service has that are not over; -1 when it cannot be asked.
int CountDownloadJobs();

/// @return the registry's word on whether the device is entitled: 1 or 0; -1 for none.
int ReadEntitledValue();
void DeleteEntitledValue();
