#include "reference_host/files/LongPath.h"

#include <algorithm>

namespace refhost {

std::wstring LongPath(std::wstring path) {
  std::replace(path.begin(), path.end(), L'/', L'\\');
  const bool drive = path.size() > 2 && path[1] == L':' && path[2] == L'\\';
  if (drive) path.insert(0, L"\\\\?\\");
  while (path.size() > 1 && path.ends_with(L'\\')) path.pop_back();
  return path;
}

}  // namespace refhost
