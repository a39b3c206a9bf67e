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

/// The download service's jobs that are not over.
struct DownloadJobs {
  int count = -1;     ///< -1: it cannot be asked
  int withBytes = 0;  ///< those of which something has arrived
};
DownloadJobs FindDownloadJobs();

/// @return the registry's word on whether the device is entitled: 1 or 0; -1 for none.
int ReadEntitledValue();
void DeleteEntitledValue();
