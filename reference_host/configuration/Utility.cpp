#include "host/common/Utility.h"

#include <windows.h>

#include "reference_host/configuration/Folders.h"

namespace ZLT::utility {

bool InitLog(Log& log, const wchar_t* fileName, int level) { return log.Open(fileName, level); }

std::wstring GetZltKivDownloadPath() { return refhost::DownloadFolder(); }

std::wstring GetSystemDirectoryW() {
  wchar_t path[MAX_PATH];
  const UINT length = ::GetSystemDirectoryW(path, MAX_PATH);
  return {path, length < MAX_PATH ? length : 0};
}

}  // namespace ZLT::utility
