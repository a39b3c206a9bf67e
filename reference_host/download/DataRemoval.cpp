#include "reference_host/download/DataRemoval.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "host/common/FileSystem.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/download/BitsLeftovers.h"
#include "reference_host/download/FilePlace.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/ProgramData.h"

namespace refhost {

namespace {

std::vector<std::wstring> EntriesOf(const std::wstring& folder) {
  std::vector<std::wstring> entries;
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return entries;
  do {
    const std::wstring name = entry.cFileName;
    if (name != L"." && name != L"..") entries.push_back(folder + L"\\" + name);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  return entries;
}

/// @return true when it is one of the folders, or lies in one.
bool IsIn(const std::vector<std::wstring>& folders, const std::wstring& path) {
  return std::any_of(folders.begin(), folders.end(),
                     [&path](const std::wstring& folder) { return IsBelow(path + L"\\", folder); });
}

/// @return where the suite's things lie that are to go, the transfers' places first. Each is named
/// once: one that others hold is waited for.
std::vector<std::wstring> Belongings(bool logsToo) {
  std::vector<std::wstring> paths{FilePlace::ArrivalFolder(), WaitingFolder(), DownloadFolder()};
  if (logsToo) {
    paths.push_back(SuiteFolder());
    return paths;
  }
  for (const std::wstring& entry : EntriesOf(SuiteFolder())) {
    const bool hasLogs = IsIn({entry}, LogFolder()) || IsIn({entry}, DefaultLogFolder());
    if (!hasLogs && !IsIn(paths, entry)) paths.push_back(entry);
  }
  return paths;
}

}  // namespace

std::wstring RemoveData(bool logsToo) {
  const ComApartment apartment;
  BitsJob::Manager manager;
  HRESULT result = BitsJob::Connect(manager);
  if (SUCCEEDED(result)) result = CancelJobsInto(manager, FilePlace::ArrivalFolder());
  std::wstring left;
  if (FAILED(result)) left = L"transfers, if there are any: BITS does not answer";
  for (const std::wstring& path : Belongings(logsToo)) {
    if (FileSystem::deleteDirectoryOrFile(path, true)) continue;
    left += (left.empty() ? L"" : L"; ") + path;
  }
  return left;
}

}  // namespace refhost
