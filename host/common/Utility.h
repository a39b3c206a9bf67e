#pragma once

#include <string>

#include "host/Export.h"
#include "host/common/Log.h"

namespace ZLT::utility {

/// Opens `log` as `fileName` in the suite's log folder.
/// @param level in, 1 (errors only) to 4 (everything).
/// @return false when the file cannot be opened.
ZLT_API bool InitLog(Log& log, const wchar_t* fileName, int level);

/// @return the folder that downloaded packages and scripts go to, without a trailing backslash. The
/// folder need not exist. Any thread.
ZLT_API std::wstring GetZltKivDownloadPath();

/// @return the system directory (as "C:\Windows\system32"), without a trailing backslash. Any
/// thread.
ZLT_API std::wstring GetSystemDirectoryW();

}  // namespace ZLT::utility
