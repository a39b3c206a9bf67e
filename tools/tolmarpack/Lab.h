#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

/// Where packages are tried: a device, the host program on it, and a simulator of the service.
struct Lab {
  std::shared_ptr<const TemporaryFolder> own;  ///< null: somebody else removes the folder
  std::filesystem::path folder;                ///< the trial's own, on the device, empty
  std::string folderOnDevice;                  ///< as the device names it
  std::vector<std::string> host;   ///< words that run tolmarctl; its arguments come behind
  std::vector<std::string> cloud;  ///< words that run the simulator; its arguments come behind
  std::string scheme;              ///< of the simulator's address
  Signer signer;                   ///< whom the device trusts; not named: it takes all
};

/// @return the lab that this program runs in. On Windows that is this PC: what is tried is
/// installed on it. @param simulator in, its program; empty: the one that belongs to the lab.
/// @throws std::runtime_error when there is none.
Lab FindLab(const std::string& simulator);

/// Runs this program once more inside of a lab that is made for it and gone behind it, where there
/// is such a thing, unless it is in one already.
/// @return its exit status; nothing when it is to go on here.
std::optional<int> RunInLab(int count, char** words);

}  // namespace tolmarpack
