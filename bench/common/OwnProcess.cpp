#include "bench/common/OwnProcess.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>

#include "reference_host/base/Handle.h"

namespace {

double Seconds(const FILETIME& time) {
  return 1e-7 * static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

double Mebibytes(SIZE_T bytes) { return static_cast<double>(bytes) / (1 << 20); }

}  // namespace

double OwnProcess::CpuSeconds() {
  FILETIME created{}, ended{}, kernel{}, user{};
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  return Seconds(kernel) + Seconds(user);
}

OwnProcess::Memory OwnProcess::MemoryNow() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return {Mebibytes(counters.WorkingSetSize), Mebibytes(counters.PeakWorkingSetSize),
          Mebibytes(counters.PagefileUsage)};
}

int OwnProcess::ThreadCount() {
  const refhost::Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
       more = Process32NextW(snapshot.Get(), &entry)) {
    if (entry.th32ProcessID == GetCurrentProcessId()) count = static_cast<int>(entry.cntThreads);
  }
  return count;
}
