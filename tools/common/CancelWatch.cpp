#include "tools/common/CancelWatch.h"

#include <utility>

namespace {

/// Windows gives a program some 5 s after its console was closed (SPI_GETHUNGAPPTIMEOUT).
constexpr DWORD ClosePatienceMs = 4000;

std::atomic<HANDLE> cancelEvent{nullptr};
std::atomic<HANDLE> endEvent{nullptr};

/// The first Ctrl-C cancels in order; at the second the system ends the process. When the console
/// is closed it does so as soon as this returns.
BOOL WINAPI OnConsoleControl(DWORD control) {
  const HANDLE event = cancelEvent.exchange(nullptr);
  const bool first = event != nullptr && SetEvent(event);
  const bool isEnding = control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT;
  if (isEnding) WaitForSingleObject(endEvent, ClosePatienceMs);
  return first ? TRUE : FALSE;
}

}  // namespace

CancelWatch::CancelWatch(unsigned int timeoutSeconds)
    : _cancel(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      _done(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  cancelEvent = _cancel;
  if (endEvent == nullptr) endEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(OnConsoleControl, TRUE);
  _thread = std::thread([this, timeoutSeconds] { Watch(timeoutSeconds); });
}

CancelWatch::~CancelWatch() {
  cancelEvent = nullptr;
  SetEvent(_done);
  _thread.join();
  SetEvent(endEvent);
  SetConsoleCtrlHandler(OnConsoleControl, FALSE);
  CloseHandle(_done);
  CloseHandle(_cancel);
}

void CancelWatch::OnCancel(std::function<void()> onCancel) {
  const std::scoped_lock lock(_mutex);
  _onCancel = std::move(onCancel);
  if (_onCancel && _cause != Cause::None) _onCancel();
}

void CancelWatch::Watch(unsigned int timeoutSeconds) {
  const HANDLE handles[] = {_done, _cancel};
  const DWORD timeout = timeoutSeconds == 0 ? INFINITE : timeoutSeconds * 1000;
  const DWORD result = WaitForMultipleObjects(2, handles, FALSE, timeout);
  if (result == WAIT_OBJECT_0) return;
  _cause = result == WAIT_TIMEOUT ? Cause::Time : Cause::Console;
  SetEvent(_cancel);
  const std::scoped_lock lock(_mutex);
  if (_onCancel) _onCancel();
}
