#include <windows.h>

#include <string>

#include "bench/common/HostProgram.h"
#include "bench/common/OwnProcess.h"
#include "bench/common/Samples.h"
#include "bench/common/Time.h"

namespace {

/// Time for threads that end by themselves.
constexpr DWORD SettleMs = 500;
/// TolmarAgent::GetInstance, by the name that the compiler gives it.
constexpr const char* GetInstanceName = "_ZN11TolmarAgent11GetInstanceEv";

void PrintState(const std::string& name) {
  Sleep(SettleMs);
  const OwnProcess::Memory memory = OwnProcess::MemoryNow();
  PrintSample((name + "-resident").c_str(), memory.resident);
  PrintSample((name + "-own").c_str(), memory.ownPages);
  PrintSample((name + "-threads").c_str(), OwnProcess::ThreadCount());
}

/// Loaded at run time: a host without it is what the agent is compared with.
bool StartAgent() {
  const HMODULE library = LoadLibraryW(L"TolmarAgent.dll");
  if (library == nullptr) return false;
  const auto getInstance = reinterpret_cast<void* (*)()>(
      reinterpret_cast<void*>(GetProcAddress(library, GetInstanceName)));
  return getInstance != nullptr && getInstance() != nullptr;
}

int Measure() {
  HostProgram::Start();
  PrintState("host");
  bool started = false;
  PrintSample("start", MillisecondsOf([&] { started = StartAgent(); }));
  PrintState("agent");
  return started ? 0 : 1;
}

}  // namespace

/// A host that loads the agent and does nothing. Prints memory (MiB), threads and the time of the
/// start-up (ms).
int main() { HostProgram::End(HostProgram::Run("idle_host", Measure)); }
