#include "tools/tolmarpack/Cabinet.h"

#include <algorithm>

#include "reference_host/package/CabinetWriter.h"
#include "reference_host/package/PackageLook.h"
#include "tools/tolmarpack/Files.h"

namespace tolmarpack {

void WriteCabinet(const std::vector<SourceFile>& files, const std::filesystem::path& cabinet) {
  std::vector<refhost::CabinetSource> sources;
  for (const SourceFile& file : files) {
    std::string name = file.name;
    std::replace(name.begin(), name.end(), '/', '\\');
    sources.push_back({name, {}, file.path.wstring()});
  }
  WriteFile(cabinet, refhost::MakeCabinet(sources, refhost::CabinetTime::None));
}

std::vector<refhost::CabinetMember> ListCabinet(const std::filesystem::path& cabinet) {
  return refhost::LookAtMembers(cabinet.wstring());
}

void UnpackCabinet(const std::filesystem::path& cabinet, const std::filesystem::path& folder) {
  refhost::UnpackForALook(cabinet.wstring(), folder.wstring());
}

}  // namespace tolmarpack
