#include "bench/soak/Usage.h"

#include <windows.h>
// Behind windows.h, whose types they need.
#include <psapi.h>
#include <winternl.h>

#include <vector>

#include "bench/common/OwnProcess.h"

namespace {

/// The system's list of all handles, which its headers leave out. (The system's count of a
/// process's handles is always 0 under Wine.)
constexpr ULONG AllHandles = 64;
using Question = NTSTATUS(NTAPI*)(ULONG what, void* answer, ULONG size, ULONG* length);
struct HandleEntry {
  void* object;
  ULONG_PTR processId;
  ULONG_PTR handle;
  ULONG access;
  USHORT traceIndex;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};
struct HandleList {
  ULONG_PTR count;
  ULONG_PTR reserved;
  HandleEntry first[1];
};
constexpr std::size_t ListBytes = 8 << 20;

/// Counts them; those of the kind that `sample` is of, separately.
void CountHandles(HANDLE sample, Usage& usage) {
  static std::vector<std::byte> memory(ListBytes);  // once, so that it disturbs no measurement
  // A number that is none of the headers' does not fit their type.
  const auto ask = reinterpret_cast<Question>(reinterpret_cast<void*>(&NtQuerySystemInformation));
  if (ask(AllHandles, memory.data(), ListBytes, nullptr) != 0) return;
  const auto* list = reinterpret_cast<const HandleList*>(memory.data());
  std::vector<std::size_t> ofType(256);
  USHORT wanted = 0;
  for (const HandleEntry* entry = list->first; entry != list->first + list->count; ++entry) {
    if (entry->processId != GetCurrentProcessId()) continue;
    ++usage.handles;
    ++ofType.at(entry->type);
    if (entry->handle == reinterpret_cast<ULONG_PTR>(sample)) wanted = entry->type;
  }
  usage.processHandles = ofType.at(wanted);
}

std::size_t CountBytes() {
  PROCESS_MEMORY_COUNTERS_EX memory{};
  GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                       sizeof memory);
  return memory.PrivateUsage != 0 ? memory.PrivateUsage : memory.WorkingSetSize;
}

std::size_t CountHeapBytes() {
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  std::size_t bytes = 0;
  for (DWORD i = 0; i < count && i < 64; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry)) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    }
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

}  // namespace

Usage MeasureUsage() {
  static const HANDLE self = OpenProcess(SYNCHRONIZE, FALSE, GetCurrentProcessId());
  Usage usage;
  CountHandles(self, usage);
  usage.threads = OwnProcess::ThreadCount();
  usage.bytes = CountBytes();
  usage.heapBytes = CountHeapBytes();
  return usage;
}
