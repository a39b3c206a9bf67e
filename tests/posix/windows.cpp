#include "tests/posix/windows.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace {

struct Event {
  bool manualReset;
  bool signalled;
};

// One lock and one condition for all events: a wait for any of several needs no more. Handles are
// numbers, so that a wait on a closed one fails as it does on Windows instead of touching freed
// memory.
struct Events {
  std::mutex mutex;
  std::condition_variable changed;
  std::map<HANDLE, Event> open;
  std::uintptr_t next = 4;
};

Events& AllEvents() {
  static Events& events = *new Events;  // never destroyed: static objects close events at the end
  return events;
}

BOOL Signal(HANDLE handle, bool signalled) {
  Events& events = AllEvents();
  const std::scoped_lock lock(events.mutex);
  const auto found = events.open.find(handle);
  if (found == events.open.end()) return FALSE;
  found->second.signalled = signalled;
  events.changed.notify_all();
  return TRUE;
}

/// @return the result of a wait that is over, or WAIT_TIMEOUT. The lock is held.
DWORD Test(Events& events, DWORD count, const HANDLE* handles) {
  for (DWORD i = 0; i < count; ++i) {
    if (!events.open.contains(handles[i])) return WAIT_FAILED;
  }
  for (DWORD i = 0; i < count; ++i) {
    Event& event = events.open.at(handles[i]);
    if (!event.signalled) continue;
    event.signalled = event.manualReset;
    return WAIT_OBJECT_0 + i;
  }
  return WAIT_TIMEOUT;
}

DWORD WaitForAny(DWORD count, const HANDLE* handles, BOOL, DWORD milliseconds) {
  Events& events = AllEvents();
  std::unique_lock lock(events.mutex);
  // The thread sanitizer knows the wait on the system clock, not the one on the steady clock.
  const auto deadline = std::chrono::system_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    const DWORD result = Test(events, count, handles);
    if (result != WAIT_TIMEOUT || milliseconds == 0) return result;
    if (milliseconds == INFINITE) {
      events.changed.wait(lock);
    } else if (events.changed.wait_until(lock, deadline) == std::cv_status::timeout) {
      return Test(events, count, handles);
    }
  }
}

DWORD WaitForOne(HANDLE event, DWORD milliseconds) {
  return WaitForAny(1, &event, FALSE, milliseconds);
}

void SleepFor(DWORD milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace

void (*__imp_Sleep)(DWORD) = SleepFor;
DWORD (*__imp_WaitForSingleObject)(HANDLE, DWORD) = WaitForOne;
DWORD (*__imp_WaitForMultipleObjects)(DWORD, const HANDLE*, BOOL, DWORD) = WaitForAny;

HANDLE CreateEventW(void*, BOOL manualReset, BOOL initialState, const wchar_t*) {
  Events& events = AllEvents();
  const std::scoped_lock lock(events.mutex);
  const HANDLE handle = reinterpret_cast<HANDLE>(events.next);
  events.next += 4;
  events.open[handle] = {manualReset != FALSE, initialState != FALSE};
  return handle;
}

BOOL SetEvent(HANDLE event) { return Signal(event, true); }

BOOL ResetEvent(HANDLE event) { return Signal(event, false); }

BOOL CloseHandle(HANDLE event) {
  Events& events = AllEvents();
  const std::scoped_lock lock(events.mutex);
  return events.open.erase(event) != 0 ? TRUE : FALSE;
}
