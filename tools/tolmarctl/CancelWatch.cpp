#include "tools/tolmarctl/CancelWatch.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<HANDLE> cancelEvent{nullptr};

BOOL WINAPI OnConsoleControl(DWORD) {
  HANDLE event = cancelEvent.exchange(nullptr);
  // The first Ctrl-C cancels in order; at the second the system ends the process.
  return event != nullptr && SetEvent(event) ? TRUE : FALSE;
}

}  // namespace

CancelWatch::CancelWatch(unsigned int timeoutSeconds, std::function<void()> onCancel)
    : _cancel(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      _done(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  cancelEvent = _cancel;
  SetConsoleCtrlHandler(OnConsoleControl, TRUE);
  _thread = std::thread(
      [this, timeoutSeconds, onCancel = std::move(onCancel)] { Watch(timeoutSeconds, onCancel); });
}

CancelWatch::~CancelWatch() {
  SetConsoleCtrlHandler(OnConsoleControl, FALSE);
  cancelEvent = nullptr;
  SetEvent(_done);
  _thread.join();
  CloseHandle(_done);
  CloseHandle(_cancel);
}

void CancelWatch::Watch(unsigned int timeoutSeconds, const std::function<void()>& onCancel) {
  const HANDLE handles[] = {_done, _cancel};
  const DWORD timeout = timeoutSeconds == 0 ? INFINITE : timeoutSeconds * 1000;
  if (WaitForMultipleObjects(2, handles, FALSE, timeout) == WAIT_OBJECT_0) return;
  SetEvent(_cancel);
  onCancel();
}
