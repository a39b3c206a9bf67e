#include "reference_host/files/LongPath.h"

#include <windows.h>

#include <algorithm>

namespace refhost {

std::wstring LongPath(std::wstring path) {
  std::replace(path.begin(), path.end(), L'/', L'\\');
  const bool drive = path.size() > 2 && path[1] == L':' && path[2] == L'\\';
  if (drive) path.insert(0, L"\\\\?\\");
  while (path.size() > 1 && path.ends_with(L'\\')) path.pop_back();
  return path;
}

std::wstring FolderOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L'\\');
  return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  const int length = static_cast<int>(folder.size());
  return path.size() > folder.size() && path[folder.size()] == L'\\' &&
         CompareStringOrdinal(path.c_str(), length, folder.c_str(), length, TRUE) == CSTR_EQUAL;
}

}  // namespace refhost
