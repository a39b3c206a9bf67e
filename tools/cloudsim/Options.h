#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/cloudsim/Platform.h"

namespace cloudsim {

struct Options {
  std::string catalogue;
  int port = 0;
  std::string portFile;
  TlsFiles tls;
  std::string realm = "demo";
  int jwtSeconds = 3600;
  int urlSeconds = 300;
  std::uint64_t fileRate = 0;
  int consolePort = -1;  ///< none of its own
};

/// Reads the command line. Prints help or the error itself.
/// @return the status to end with: 0 after help, 2 after an error; nothing: go on.
std::optional<int> ReadOptions(int argc, char** argv, Options& options);

}  // namespace cloudsim
