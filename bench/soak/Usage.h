#pragma once

#include <cstddef>

/// What this process holds.
struct Usage {
  std::size_t handles = 0;
  std::size_t processHandles = 0;  ///< those of the handles that are for processes
  int threads = 0;
  std::size_t bytes = 0;      ///< of memory of its own, else (where the system does not tell) all
  std::size_t heapBytes = 0;  ///< of what the programs' heaps have given out
};

Usage MeasureUsage();
