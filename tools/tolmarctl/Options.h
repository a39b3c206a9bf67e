#pragma once

#include <string>
#include <vector>

/// What the command line asks for.
struct Options {
  std::string config;   ///< path of the host's configuration; empty: the environment names it
  std::string command;  ///< one of the sub-commands; "config show" for one of a group
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  bool progressLines = false;  ///< `install` only
  bool preinstallOnly = false;
  unsigned int timeoutSeconds = 0;  ///< 0: none
  std::string l1FruPn;
  std::string moduleFruPn;
  bool asksChecks = true;  ///< `plan`: what is installed already
  std::string subject;     ///< what to explain
  std::string file;        ///< what to write
  bool removes = false;    ///< `config set-token`: the one that is kept

  /// @return true for a command that changes nothing on the device.
  bool IsReadOnly() const;
};

/// Reads the command line (UTF-8, without the program's name).
/// @param exitStatus out, when there is nothing to run: 0 after help or version, 2 after a usage
/// error (both printed).
/// @return true when `options` holds a command.
bool ReadOptions(std::vector<std::string> arguments, Options& options, int& exitStatus);
