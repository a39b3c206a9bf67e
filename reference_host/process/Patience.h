#pragma once

#include <windows.h>

#include <chrono>
#include <optional>
#include <string>

namespace refhost {

enum class WaitEnd { Signalled, GivenUp, TimedOut };

/// How long a caller goes on with a program, in the queue and while it runs. One who calls before
/// the cancel event is signalled gives up as soon as it is. One who calls afterwards knows of it
/// and asks all the same, as after a cancelled installation: the event says no more, but the call
/// has a time of grace from its begin on.
class Patience {
 public:
  /// @param cancelHandle in, an event that outlives this object; null: there is no end of patience.
  Patience(HANDLE cancelHandle, std::chrono::milliseconds grace);

  bool IsOver() const;

  /// Blocks until `object` is signalled, the patience is over or `limit` has passed. An object that
  /// is signalled counts, also when the patience was over at the same moment.
  WaitEnd WaitFor(HANDLE object, std::chrono::milliseconds limit) const;

  /// @return in words what ends the patience.
  std::wstring Bound() const;

 private:
  std::chrono::milliseconds _grace;
  HANDLE _cancelHandle;  ///< null: not looked at
  std::optional<std::chrono::steady_clock::time_point> _deadline;
};

}  // namespace refhost
