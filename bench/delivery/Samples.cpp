#include "bench/delivery/Samples.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <psapi.h>
#include <tlhelp32.h>

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace {

double Seconds(const FILETIME& time) {
  return 1e-7 * static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

double Mebibytes(SIZE_T bytes) { return static_cast<double>(bytes) / (1 << 20); }

}  // namespace

void PrintSample(const char* name, double value) {
  std::printf("%s %.4f\n", name, value);
  std::fflush(stdout);
}

double MillisecondsOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  return elapsed.count();
}

double CpuSeconds() {
  FILETIME created{}, ended{}, kernel{}, user{};
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  return Seconds(kernel) + Seconds(user);
}

Memory MemoryNow() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return {Mebibytes(counters.WorkingSetSize), Mebibytes(counters.PeakWorkingSetSize),
          Mebibytes(counters.PagefileUsage)};
}

int ThreadCount() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Process32FirstW(snapshot, &entry); more;
       more = Process32NextW(snapshot, &entry)) {
    if (entry.th32ProcessID == GetCurrentProcessId()) count = static_cast<int>(entry.cntThreads);
  }
  CloseHandle(snapshot);
  return count;
}

void Compare(const Rounds& rounds, const Side& agent, const Side& floor) {
  for (int round = rounds.first; round < rounds.first + rounds.count; ++round) {
    if (round % 2 == 0) PrintSample("agent", agent());
    if (floor) PrintSample("floor", floor());
    if (round % 2 != 0) PrintSample("agent", agent());
  }
}
