#include "reference_host/files/FolderOwner.h"

#include "reference_host/files/FolderHolds.h"
#include "reference_host/files/HeldFolder.h"
#include "reference_host/files/LongPath.h"

namespace refhost {

std::wstring RefusalOfFolder(const std::wstring& path) {
  const std::wstring name = LongPath(path);
  const std::wstring refusal = HeldFolder().Enter(name, nullptr);
  return refusal.empty() ? RefusalOfHold(name) : refusal;
}

}  // namespace refhost
