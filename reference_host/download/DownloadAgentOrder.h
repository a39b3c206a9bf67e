#pragma once

#include <string>

#include "host/common/DownloadAgent.h"

namespace refhost {

/// Judges what is asked for before any job is made: the download folder is one to trust, and every
/// file goes to a place of its own below it and comes over https or from this machine.
/// @param folder in, the download folder, without a trailing backslash.
/// @return what is wrong, naming the file (a phrase for a log line, without secrets), empty when
/// nothing is.
std::wstring RefusalOfFiles(const DownloadAgent::FileMap& files, const std::wstring& folder);

}  // namespace refhost
