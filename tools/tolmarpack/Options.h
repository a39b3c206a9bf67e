#pragma once

#include <string>
#include <vector>

#include "tools/tolmarpack/Signature.h"

namespace tolmarpack {

/// What the command line asks for. Names of files are UTF-8.
struct Options {
  std::string command;  ///< one of the sub-commands
  bool json = false;
  std::vector<std::string> paths;    ///< folders or packages
  std::string output;                ///< `build`, `sign`
  std::string catalogue;             ///< `publish`
  std::string configuration;         ///< `lint`, `verify`: the devices'; empty: not known
  std::string roots;                 ///< `lint`, `verify`: what devices trust, PEM
  std::vector<std::string> allowed;  ///< `lint`: rules that are not applied
  std::string simulator;             ///< `test`: the simulator; empty: the one beside this program
  unsigned int timeoutSeconds = 1800;  ///< `test`: for each installation
  Signer signer;
};

/// Reads the command line, without the program's name.
/// @param exitStatus out, when there is nothing to run: 0 after help or version, 2 after a usage
/// error (both printed).
/// @return true when `options` holds a command.
bool ReadOptions(std::vector<std::string> arguments, Options& options, int& exitStatus);

}  // namespace tolmarpack
