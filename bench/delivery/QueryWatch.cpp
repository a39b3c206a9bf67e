#include "bench/delivery/QueryWatch.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>

#include "bench/common/OwnProcess.h"
#include "reference_host/base/Handle.h"

namespace {

constexpr DWORD WatchMs = 50;

/// In MiB; 0 for a process that has just ended.
double MemoryOf(DWORD id) {
  const refhost::Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
  PROCESS_MEMORY_COUNTERS counters{};
  if (!process || !GetProcessMemoryInfo(process.Get(), &counters, sizeof counters)) return 0;
  return static_cast<double>(counters.PagefileUsage) / (1 << 20);
}

}  // namespace

QueryWatch::QueryWatch()
    : _thread([this] {
        while (!_ended) {
          Look();
          Sleep(WatchMs);
        }
      }) {}

QueryWatch::Most QueryWatch::End() {
  _ended = true;
  _thread.join();
  return _most;
}

void QueryWatch::Look() {
  const refhost::Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof entry;
  int scripts = 0;
  double memory = 0;
  for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
       more = Process32NextW(snapshot.Get(), &entry)) {
    if (lstrcmpiW(entry.szExeFile, L"powershell.exe") != 0) continue;
    ++scripts;
    memory += MemoryOf(entry.th32ProcessID);
  }
  // Without the thread that looks.
  _most.threads = std::max(_most.threads, OwnProcess::ThreadCount() - 1);
  _most.scripts = std::max(_most.scripts, scripts);
  _most.scriptMemory = std::max(_most.scriptMemory, memory);
}
