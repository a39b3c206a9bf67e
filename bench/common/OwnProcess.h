#pragma once

/// What this process has used and holds.
namespace OwnProcess {

/// @return CPU time so far, in seconds.
double CpuSeconds();

/// In MiB.
struct Memory {
  double resident;      ///< now
  double peakResident;  ///< at most so far
  double ownPages;      ///< of `resident`, what is shared with no file
};
Memory MemoryNow();

int ThreadCount();

}  // namespace OwnProcess
