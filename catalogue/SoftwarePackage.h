#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "catalogue/Export.h"
#include "catalogue/SoftwareModule.h"

/// One entitled software title. A value; a moved-from package is empty and can be used again, but
/// keeps `preinstallSw` and `progress`.
class TOLMAR_API SoftwarePackage {
 public:
  SoftwarePackage();
  SoftwarePackage(const SoftwarePackage&);
  SoftwarePackage(SoftwarePackage&&);
  SoftwarePackage& operator=(const SoftwarePackage&);
  SoftwarePackage& operator=(SoftwarePackage&&);
  ~SoftwarePackage();

  std::wstring l1FruPn;               ///< the title's part number, its identifier
  std::wstring name;                  ///< display name; the agent leaves it empty
  bool preinstallSw;                  ///< to be installed when the device is set up
  std::list<SoftwareModule> modules;  ///< in the order received
  std::wstring
      status;  ///< "downloading", "downloaded", "installing", "installed" or "not installed"
  std::int32_t progress;  ///< percent
};
