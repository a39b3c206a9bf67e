#include "tools/tolmarhost/Serve.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "messages.h"
#include "reference_host/base/AwakeClock.h"
#include "reference_host/base/Handle.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "tools/tolmarhost/Host.h"
#include "tools/tolmarhost/StopBound.h"

namespace {

using refhost::AwakeClock;

constexpr DWORD TickMs = 1000;

refhost::Handle NewEvent() { return refhost::Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

/// What goes on on threads of its own, and may outlive who waits for it.
struct Work {
  Work(HANDLE stop, HANDLE run, const EventLog& log) : host(stop, run, log) {}

  Host host;
  const refhost::Handle hasRun = NewEvent();
  const refhost::Handle hasCleanedUp = NewEvent();
};

DWORD MillisecondsSince(AwakeClock::Time begin) {
  return static_cast<DWORD>((AwakeClock::Now() - begin).count());
}

/// @return true when all is done within the bound.
bool WaitForEnd(const Work& work, AwakeClock::Time begin,
                const std::function<void(DWORD)>& pending) {
  const DWORD bound = service::StopBoundMs(refhost::Settings());
  const HANDLE both[] = {work.hasRun.Get(), work.hasCleanedUp.Get()};
  while (WaitForMultipleObjects(2, both, TRUE, TickMs) == WAIT_TIMEOUT) {
    const DWORD passed = MillisecondsSince(begin);
    if (passed >= bound) return false;
    pending(bound - passed);
  }
  return true;
}

}  // namespace

bool Serve(HANDLE stop, HANDLE run, const EventLog& log,
           const std::function<void(DWORD)>& pending) {
  const auto work = std::make_shared<Work>(stop, run, log);
  // What it throws ends the process, which the service manager starts again.
  std::thread([work] {
    work->host.Run();
    SetEvent(work->hasRun.Get());
  }).detach();
  WaitForSingleObject(stop, INFINITE);
  const AwakeClock::Time begin = AwakeClock::Now();
  std::thread([work] {
    work->host.CleanUp();
    SetEvent(work->hasCleanedUp.Get());
  }).detach();
  const bool hasEnded = WaitForEnd(*work, begin, pending);
  log.Write(hasEnded ? MSG_STOPPED : MSG_STOP_CUT, {std::to_wstring(MillisecondsSince(begin))});
  return hasEnded && !work->host.IsStarting();
}

void EndHard() {
  std::fflush(nullptr);
  TerminateProcess(GetCurrentProcess(), 0);
  std::abort();
}
