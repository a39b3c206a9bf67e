#include "reference_host/package/PackageLook.h"

#include "reference_host/files/LongPath.h"
#include "reference_host/package/CabinetReader.h"
#include "reference_host/package/CabinetSignature.h"

namespace refhost {

SignatureFindings LookAtSignature(const std::wstring& package) {
  return InspectSignature(CabinetFile(package));
}

std::vector<CabinetMember> LookAtMembers(const std::wstring& package) {
  return ListMembers(CabinetFile(package));
}

void UnpackForALook(const std::wstring& package, const std::wstring& folder) {
  UnpackMembers(CabinetFile(package), LongPath(folder));
}

}  // namespace refhost
