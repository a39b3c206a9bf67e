#pragma once

#include <map>
#include <random>
#include <string>

#include "bench/soak/Device.h"
#include "bench/soak/HostProcess.h"

/// Kills hosts in the middle of their visits and looks whether the next visit puts all right.
class KillLoop {
 public:
  /// @param folder in, the device's.
  /// @param seed in, of the first case; each further one has the next. A case draws the moments of
  /// one to three kills in a row, so that the visit that recovers is killed as well.
  KillLoop(const std::wstring& folder, unsigned int seed);

  /// Runs cases until so many kills have fallen; prints a line a case and the table.
  /// @return false when anything was not as it must be.
  bool Run(unsigned int kills);

 private:
  struct Case;
  /// What came of the kills in one phase.
  struct Tally {
    unsigned int kills = 0;
    unsigned int recovered = 0;
    unsigned long worstMs = 0;  ///< of the recoveries straight after such a kill; 0: none
  };

  bool Rehearse();
  bool RunCase(unsigned int seed, unsigned int most);
  bool Kill(Case& one, Moment moment);
  void Recover(Case& one);
  void InstallAgain(Case& one);
  void Account(const Case& one);
  void PrintTable() const;

  const std::wstring _folder;
  const Device _device;
  unsigned int _seed;
  unsigned int _kills = 0;
  bool _blocked = false;  ///< a visit did not end: the machine is no good for further cases
  unsigned int _transfers =
      0;  ///< that were left behind by the kill before the visit that recovers
  unsigned int _survivors = 0;  ///< installers that ran on when their host was dead
  unsigned int _leftovers = 0;  ///< cases whose leftovers waited for the next installation
  std::map<std::string, Tally> _tallies;
};
