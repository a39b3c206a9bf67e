#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "reference_host/configuration/MaintenanceWindow.h"
#include "tools/common/ServiceState.h"

/// When the service does what. Pure: time and chance come from the caller.
namespace service {

using Windows = std::vector<refhost::MaintenanceWindow>;

/// How often the service asks.
struct Pace {
  Time interval = 0;  ///< seconds from one run to the next, at the least
  Time spread = 0;    ///< up to so many more
};

/// A moment by the wall clock.
struct WallTime {
  int day = 0;     ///< 0 Monday to 6 Sunday
  int minute = 0;  ///< of the day
};
using WallClock = std::function<WallTime(Time)>;

/// @param random in, 0 to 1. @return when to run after a run that began then.
Time RunAfter(Time began, const Pace& pace, double random);

/// When to run after the service was started. A plan that holds still is kept, so that a fleet that
/// is started anew does not come all at once; what is overdue, or was planned before the clock was
/// set back, comes within the spread.
/// @param planned in, 0: nothing was. @param random in, 0 to 1.
Time FirstRun(Time planned, Time now, const Pace& pace, double random);

/// @return when a window opens, `now` when one is open; nothing when none does within a fortnight.
std::optional<Time> Opening(const Windows& windows, Time now, const WallClock& wall);

/// @param open in, a time at which a window is open. @return when none is any more; nothing when
/// there is always one.
std::optional<Time> Closing(const Windows& windows, Time open, const WallClock& wall);

/// When to begin in the window that opens next: not with the whole fleet in its first second.
/// @param random in, 0 to 1.
Time BeginIn(const Windows& windows, Time opening, const Pace& pace, const WallClock& wall,
             double random);

/// @return how long a title that has failed so often waits: `pause` seconds, four times as long for
/// each failure behind the first, a week at most.
Time PauseAfter(unsigned int failures, Time pause);

}  // namespace service
