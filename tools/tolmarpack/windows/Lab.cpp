#include "tools/tolmarpack/Lab.h"

#include <stdexcept>

#include "host/common/Text.h"
#include "tools/tolmarpack/Program.h"

namespace fs = std::filesystem;

namespace tolmarpack {

/// The service speaks plain HTTP, which the host takes from this machine alone.
Lab FindLab(const std::string& simulator) {
  const fs::path programs = OwnProgram().parent_path();
  const fs::path cloudsim = simulator.empty() ? programs / "cloudsim.exe" : PathOf(simulator);
  if (!fs::exists(cloudsim)) {
    throw std::runtime_error("the simulator is not there: --cloudsim tells where it is");
  }
  Lab lab;
  lab.own = std::make_shared<TemporaryFolder>();
  lab.folder = lab.own->Path();
  lab.folderOnDevice = ZLT::String::UTF16ToUTF8(lab.folder.wstring());
  lab.host = {TextOf(programs / "tolmarctl.exe")};
  lab.cloud = {TextOf(cloudsim)};
  lab.scheme = "http";
  return lab;
}

std::optional<int> RunInLab(int, char**) { return {}; }

}  // namespace tolmarpack
