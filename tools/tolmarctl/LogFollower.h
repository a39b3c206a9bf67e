#pragma once

#include <windows.h>

#include <thread>

#include "tools/common/Console.h"

/// Copies what this process writes to the logs to standard error, as it is written, from a thread
/// of its own. A rotation loses nothing, unless a second one follows within a fifth of a second.
class LogFollower {
 public:
  /// The configuration must have been named before.
  LogFollower();

  /// Copies what is still there.
  ~LogFollower();
  LogFollower(const LogFollower&) = delete;
  LogFollower& operator=(const LogFollower&) = delete;

 private:
  const Console _console;
  HANDLE _done;
  std::thread _thread;
};
