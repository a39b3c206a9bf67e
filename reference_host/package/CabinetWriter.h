#pragma once

#include <string>
#include <vector>

#include "host/Export.h"

namespace refhost {

struct CabinetSource {
  std::string name;  ///< UTF-8, relative
  std::string bytes;
  std::wstring file{};  ///< not empty: the bytes are this file's, read while it is packed
};

/// Which time stamps the members have.
enum class CabinetTime {
  Now,
  None,  ///< the first that a cabinet can hold: the same files make the same cabinet
};

/// @return a cabinet of these files, compressed, in memory; any thread.
/// @throws std::runtime_error when the system's packer does not make it.
ZLT_API std::string MakeCabinet(const std::vector<CabinetSource>& files,
                                CabinetTime time = CabinetTime::Now);

}  // namespace refhost
