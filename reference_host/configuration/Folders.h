#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// Where downloads and logs go on a machine that configures nothing else: "Tolmar\Downloads" and
/// "Tolmar\Logs" below the machine's ProgramData folder. No trailing backslash.
std::wstring DefaultDownloadFolder();
std::wstring DefaultLogFolder();

/// Where they go on this machine: the configured folders, without a configuration the default ones.
std::wstring DownloadFolder();
ZLT_API std::wstring LogFolder();

/// Where the service keeps packages that it has fetched before their time: beside the download
/// folder, which is deleted behind each title. No trailing backslash.
ZLT_API std::wstring WaitingFolder();

}  // namespace refhost
