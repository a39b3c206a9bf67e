#pragma once

#include <map>
#include <string>

#include "host/Export.h"
#include "host/common/DownloadAgent.h"

namespace refhost {

/// Judges what is asked for before any job is made: the download folder is one to trust, and every
/// file goes to a place of its own below it and comes over https or from this machine.
/// @param folder in, the download folder, without a trailing backslash.
/// @return what is wrong, naming the file (a phrase for a log line, without secrets), empty when
/// nothing is.
std::wstring RefusalOfFiles(const DownloadAgent::FileMap& files, const std::wstring& folder);

/// The same for each file by itself; the folder, which need not be there, is not judged.
/// @return by the address of each refused file, what is wrong with it (a phrase as above).
ZLT_API std::map<std::wstring, std::wstring> RefusalsOfFiles(const DownloadAgent::FileMap& files,
                                                             const std::wstring& folder);

}  // namespace refhost
