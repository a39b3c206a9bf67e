#include "reference_host/process/Patience.h"

#include <algorithm>

namespace refhost {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

bool IsSignalled(HANDLE event) {
  return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

milliseconds Until(Clock::time_point deadline) {
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(deadline - Clock::now()));
}

}  // namespace

Patience::Patience(HANDLE cancelHandle, milliseconds grace)
    : _grace(grace), _cancelHandle(cancelHandle) {
  if (!IsSignalled(cancelHandle)) return;
  _cancelHandle = nullptr;
  _deadline = Clock::now() + grace;
}

bool Patience::IsOver() const {
  return _deadline ? Clock::now() >= *_deadline : IsSignalled(_cancelHandle);
}

WaitEnd Patience::WaitFor(HANDLE object, milliseconds limit) const {
  const HANDLE handles[] = {object, _cancelHandle};
  const milliseconds left = _deadline ? Until(*_deadline) : milliseconds::max();
  const auto wait = static_cast<DWORD>(std::min(left, limit).count());
  const DWORD result =
      WaitForMultipleObjects(_cancelHandle != nullptr ? 2 : 1, handles, FALSE, wait);
  if (result == WAIT_OBJECT_0) return WaitEnd::Signalled;
  const bool givenUp = result == WAIT_OBJECT_0 + 1 || (result == WAIT_TIMEOUT && left < limit);
  return givenUp ? WaitEnd::GivenUp : WaitEnd::TimedOut;
}

std::wstring Patience::Bound() const {
  if (!_deadline) return L"the cancel event";
  return L"its grace of " + std::to_wstring(_grace.count()) + L" ms after the cancel event";
}

}  // namespace refhost
