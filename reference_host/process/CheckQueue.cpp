#include "reference_host/process/CheckQueue.h"

#include "reference_host/base/Handle.h"

namespace refhost {

bool CheckQueue::Enter(const Patience& patience) {
  const Handle turn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (!turn || patience.IsOver()) return false;
  if (TakeFreePlace(turn.Get())) return true;
  if (!Wait(turn.Get(), patience)) return false;
  if (!patience.IsOver()) return true;
  Leave();
  return false;
}

/// Without a free place the caller is one of those who wait.
bool CheckQueue::TakeFreePlace(HANDLE turn) {
  const std::lock_guard lock(_mutex);
  if (_free == 0) {
    _waiting.push_back(turn);
    return false;
  }
  --_free;
  return true;
}

bool CheckQueue::Wait(HANDLE turn, const Patience& patience) {
  if (patience.WaitFor(turn, std::chrono::milliseconds(INFINITE)) == WaitEnd::Signalled)
    return true;
  const std::lock_guard lock(_mutex);
  // Not among them any more: the turn has come after all, at the same moment.
  return std::erase(_waiting, turn) == 0;
}

void CheckQueue::Leave() {
  const std::lock_guard lock(_mutex);
  if (_waiting.empty()) {
    ++_free;
  } else {
    SetEvent(_waiting.front());
    _waiting.pop_front();
  }
}

}  // namespace refhost
