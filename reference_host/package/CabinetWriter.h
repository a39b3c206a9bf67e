#pragma once

#include <string>
#include <vector>

#include "host/Export.h"

namespace refhost {

struct CabinetSource {
  std::string name;  ///< plain, ASCII
  std::string bytes;
};

/// @return a cabinet of these files, compressed, in memory; any thread.
/// @throws std::runtime_error when the system's packer does not make it.
ZLT_API std::string MakeCabinet(const std::vector<CabinetSource>& files);

}  // namespace refhost
