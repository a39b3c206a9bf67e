#include "bench/soak/KillLoop.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "bench/common/Time.h"
#include "bench/soak/Phases.h"
#include "bench/soak/Traces.h"
#include "bench/soak/VisitExit.h"

namespace {

constexpr DWORD VisitLimitMs = 120000;
/// About as many as an undisturbed visit to run.sh's titles writes to the agent's log.
/// Fixed, so that a seed stands for the same moments in every run.
constexpr unsigned int MostRecords = 190;
constexpr DWORD MostDelayMs = 150;
constexpr unsigned int MostKillsInARow = 3;

void Add(Device::Faults& faults, const Device::Faults& more) {
  faults.insert(faults.end(), more.begin(), more.end());
}

std::string Joined(const Device::Faults& texts, const char* between) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : between) + text;
  return joined;
}

unsigned int Draw(std::mt19937& generator, unsigned int from, unsigned int to) {
  return std::uniform_int_distribution<unsigned int>(from, to)(generator);
}

}  // namespace

/// One case: kills, then a visit that is left in peace.
struct KillLoop::Case {
  unsigned int seed = 0;
  std::vector<std::string> phases{};   ///< in which the kills fell
  std::vector<std::string> moments{};  ///< the same with the moments
  unsigned long recoveryMs = 0;
  bool transferLeft = false;  ///< the last kill has left a transfer, with bytes
  Device::Faults faults{};
};

KillLoop::KillLoop(const std::wstring& folder, unsigned int seed)
    : _folder(folder), _device(folder), _seed(seed) {}

bool KillLoop::Run(unsigned int kills) {
  if (!Rehearse()) return false;
  bool right = true;
  while (_kills < kills && !_blocked) right = RunCase(_seed++, kills - _kills) && right;
  PrintTable();
  return right;
}

/// An undisturbed visit tells how long one is, and that all is right without a kill.
bool KillLoop::Rehearse() {
  _device.Reset();
  HostProcess host(_folder, false);
  const Stopwatch watch;
  DWORD exitCode = 0;
  const bool ended = host.RunToEnd(VisitLimitMs, exitCode) && exitCode == VisitExit::Installed;
  const auto duration = static_cast<unsigned long>(watch.Milliseconds());
  const std::string faults = ended ? Joined(_device.FinalFaults(), "; ") : "it did not succeed";
  std::printf("undisturbed visit: %lu ms, %u records%s%s\n", duration, RecordsIn(host.Log()),
              faults.empty() ? "" : ": ", faults.c_str());
  return faults.empty();
}

bool KillLoop::RunCase(unsigned int seed, unsigned int most) {
  Case one{seed};
  std::mt19937 generator(seed);
  _device.Reset();
  const unsigned int kills = Draw(generator, 1, MostKillsInARow);
  for (unsigned int i = 0; i < kills && one.phases.size() < most; ++i) {
    const unsigned int record = Draw(generator, 0, MostRecords);
    const unsigned int delay = Draw(generator, 0, MostDelayMs);
    if (!Kill(one, {record, delay})) break;
  }
  Recover(one);
  Account(one);
  std::printf("seed %u: killed at %s; to the end %lu ms: %s\n", seed,
              Joined(one.moments, ", ").c_str(), one.recoveryMs,
              one.faults.empty() ? "right" : Joined(one.faults, "; ").c_str());
  std::fflush(stdout);
  return one.faults.empty();
}

/// @return false when the visit has ended before its moment.
bool KillLoop::Kill(Case& one, Moment moment) {
  const Device::Before before = _device.Look();
  HostProcess host(_folder, false);
  const bool killed = host.KillAt(moment, VisitLimitMs);
  if (killed) {
    one.transferLeft = FindDownloadJobs().withBytes > 0;
    Add(one.faults, _device.WatchKilledHostsChecks());
    _survivors += static_cast<unsigned int>(FindRunningScripts().installers);
    one.phases.push_back(PhaseOf(host.Log()));
    one.moments.push_back(std::to_string(moment.record) + "+" + std::to_string(moment.delayMs) +
                          " ms (" + one.phases.back() + ")");
  }
  Add(one.faults, _device.DoubleInstallations(before));
  return killed;
}

void KillLoop::Recover(Case& one) {
  const Device::Before before = _device.Look();
  const unsigned int takenUp = _device.TakenUp();
  HostProcess host(_folder, false);
  const Stopwatch watch;
  DWORD exitCode = 0;
  if (!host.RunToEnd(VisitLimitMs, exitCode)) {
    one.faults.push_back("the next visit does not end, in " + PhaseOf(host.Log()));
    _blocked = true;
    return;
  }
  one.recoveryMs = static_cast<unsigned long>(watch.Milliseconds());
  if (exitCode == VisitExit::Failed) one.faults.push_back("the next visit fails");
  Add(one.faults, _device.DoubleInstallations(before));
  if (one.transferLeft) {
    ++_transfers;
    if (_device.TakenUp() == takenUp) one.faults.push_back("the killed host's transfer is lost");
  }
  if (exitCode == VisitExit::NothingToInstall && !_device.Leftovers().empty()) InstallAgain(one);
  Add(one.faults, _device.FinalFaults());
}

/// The download folder is emptied behind an installation only: where nothing was left to install,
/// what the killed visit has left lies there until something is.
void KillLoop::InstallAgain(Case& one) {
  ++_leftovers;
  DWORD exitCode = 0;
  if (!HostProcess(_folder, true).RunToEnd(VisitLimitMs, exitCode) ||
      exitCode != VisitExit::Installed) {
    one.faults.push_back("the next installation fails");
  }
}

void KillLoop::Account(const Case& one) {
  for (const std::string& phase : one.phases) {
    Tally& tally = _tallies[phase];
    ++tally.kills;
    ++_kills;
    if (one.faults.empty()) ++tally.recovered;
  }
  if (one.phases.empty()) return;
  Tally& last = _tallies[one.phases.back()];
  last.worstMs = std::max(last.worstMs, one.recoveryMs);
}

void KillLoop::PrintTable() const {
  std::printf("\n| phase | kills | recovered | worst time to recover, s |\n|---|--:|--:|--:|\n");
  Tally all;
  const auto print = [](const char* phase, const Tally& tally) {
    std::printf("| %s | %u | %u | %.1f |\n", phase, tally.kills, tally.recovered,
                tally.worstMs / 1000.0);
  };
  for (const std::string& phase : PhaseNames()) {
    const auto found = _tallies.find(phase);
    const Tally tally = found == _tallies.end() ? Tally() : found->second;
    print(phase.c_str(), tally);
    all.kills += tally.kills;
    all.recovered += tally.recovered;
    all.worstMs = std::max(all.worstMs, tally.worstMs);
  }
  print("all", all);
  std::printf("\ninstallers that ran on when their host was dead: %u\n", _survivors);
  std::printf("transfers under way when the host before died, all taken up: %u\n", _transfers);
  std::printf("cases whose leftovers waited for the next installation: %u\n\n", _leftovers);
}
