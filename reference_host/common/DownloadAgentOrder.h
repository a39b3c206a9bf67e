#pragma once

#include <string>

#include "host/common/DownloadAgent.h"

namespace refhost {

/// Judges what is asked for before any job is made: every file goes to a place of its own below the
/// download folder, and comes over https or from this machine.
/// @param folder in, the download folder, without a trailing backslash.
/// @return what is wrong, naming the file (a phrase for a log line, without secrets), empty when
/// nothing is.
std::wstring RefusalOfFiles(const DownloadAgent::FileMap& files, const std::wstring& folder);

}  // namespace refhost
