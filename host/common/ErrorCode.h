#pragma once

#include <cstdint>

namespace ZLT {

/// Outcome of an installation, as the suite counts its errors.
enum ErrorCode : std::uint32_t {
  Success = 0,
  InstallNotConfirmed = 47,  ///< the installer ran, the check does not find the module
  InstallFailed = 48,        ///< the package was refused or the installer did not start
};

}  // namespace ZLT
