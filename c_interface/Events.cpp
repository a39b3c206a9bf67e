#include "c_interface/Events.h"

#include <mutex>
#include <vector>

#include "c_interface/Call.h"

namespace c_interface {

namespace {

/// Events that hosts have given back. They stay open, since the agent may still look at one as the
/// newest handle, where a closed one would mean "stop".
struct Pool {
  std::mutex mutex;
  std::vector<HANDLE> idle;
  std::size_t made = 0;
};

Pool& ThePool() {
  static Pool pool;
  return pool;
}

HANDLE NewEvent() {
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (event == nullptr) throw Refusal{TOLMAR_NO_RESOURCES};
  return event;
}

}  // namespace

HANDLE StopEvent() {
  static const HANDLE event = NewEvent();
  return event;
}

}  // namespace c_interface

using namespace c_interface;

void* tolmar_event_create() {
  HANDLE event = nullptr;
  Guarded([&] {
    Pool& pool = ThePool();
    const std::scoped_lock lock(pool.mutex);
    if (!pool.idle.empty()) {
      event = pool.idle.back();
      pool.idle.pop_back();
      return TOLMAR_OK;
    }
    pool.idle.reserve(pool.made + 1);  // Room for each of them: giving one back cannot fail.
    event = NewEvent();
    ++pool.made;
    return TOLMAR_OK;
  });
  return event;
}

uint32_t tolmar_event_set(void* event) {
  return Guarded([&] { return SetEvent(Needed(event)) ? TOLMAR_OK : TOLMAR_HOST_FAULT; });
}

void tolmar_event_close(void* event) {
  if (event == nullptr) return;
  Guarded([&] {
    Pool& pool = ThePool();
    const std::scoped_lock lock(pool.mutex);
    ResetEvent(event);
    pool.idle.push_back(event);
    return TOLMAR_OK;
  });
}
