#include <windows.h>

#include <cstdio>
#include <string>

#include "bench/delivery/Samples.h"
#include "host/common/Text.h"
#include "host/session/Tessary.h"
#include "reference_host/Startup.h"

namespace {

/// Time for threads that end by themselves.
constexpr DWORD SettleMs = 500;
/// TolmarAgent::GetInstance, by the name that the compiler gives it.
constexpr const char* GetInstanceName = "_ZN11TolmarAgent11GetInstanceEv";

void PrintState(const std::string& name) {
  Sleep(SettleMs);
  const Memory memory = MemoryNow();
  PrintSample((name + "-resident").c_str(), memory.resident);
  PrintSample((name + "-own").c_str(), memory.ownPages);
  PrintSample((name + "-threads").c_str(), ThreadCount());
}

/// Loaded at run time: a host without it is what the agent is compared with.
bool StartAgent() {
  const HMODULE library = LoadLibraryW(L"TolmarAgent.dll");
  if (library == nullptr) return false;
  const auto getInstance = reinterpret_cast<void* (*)()>(
      reinterpret_cast<void*>(GetProcAddress(library, GetInstanceName)));
  return getInstance != nullptr && getInstance() != nullptr;
}

}  // namespace

/// A host that loads the agent and does nothing. Prints memory (MiB), threads and the time of the
/// start-up (ms).
int main() {
  std::wstring error;
  if (!refhost::Start(error)) {
    std::fprintf(stderr, "idle_host: %s\n", ZLT::String::UTF16ToUTF8(error).c_str());
    return 1;
  }
  PrintState("host");
  bool started = false;
  PrintSample("start", MillisecondsOf([&] { started = StartAgent(); }));
  PrintState("agent");
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), started ? 0 : 1);
  return 1;
}
