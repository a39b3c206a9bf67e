#include "tools/tolmarhost/Schedule.h"

#include <algorithm>

namespace service {

namespace {

constexpr Time Minute = 60;
constexpr Time Week = Time{7} * 24 * 60 * Minute;

Time Share(Time whole, double random) {
  return static_cast<Time>(static_cast<double>(whole) * std::clamp(random, 0.0, 1.0));
}

bool IsOpenAt(const Windows& windows, Time time, const WallClock& wall) {
  const WallTime local = wall(time);
  return refhost::IsOpen(windows, local.day, local.minute);
}

/// The wall clock goes forward and back where summer time begins and ends, so each minute is asked.
/// @return the first begin of a minute behind `from` at which it is so.
std::optional<Time> FirstMinute(const Windows& windows, Time from, const WallClock& wall,
                                bool isOpen) {
  for (Time time = from - from % Minute + Minute; time <= from + 2 * Week; time += Minute) {
    if (IsOpenAt(windows, time, wall) == isOpen) return time;
  }
  return std::nullopt;
}

}  // namespace

Time RunAfter(Time began, const Pace& pace, double random) {
  return began + pace.interval + Share(pace.spread, random);
}

Time FirstRun(Time planned, Time now, const Pace& pace, double random) {
  const bool holds = planned > now && planned <= now + pace.interval + pace.spread;
  return holds ? planned : now + Share(pace.spread, random);
}

std::optional<Time> Opening(const Windows& windows, Time now, const WallClock& wall) {
  if (IsOpenAt(windows, now, wall)) return now;
  return FirstMinute(windows, now, wall, true);
}

std::optional<Time> Closing(const Windows& windows, Time open, const WallClock& wall) {
  if (windows.empty()) return std::nullopt;
  return FirstMinute(windows, open, wall, false);
}

Time BeginIn(const Windows& windows, Time opening, const Pace& pace, const WallClock& wall,
             double random) {
  const Time closing = Closing(windows, opening, wall).value_or(opening + pace.spread);
  return opening + Share(std::min(pace.spread, (closing - opening) / 2), random);
}

Time PauseAfter(unsigned int failures, Time pause) {
  for (unsigned int i = 1; i < failures && pause < Week; ++i) pause *= 4;
  return std::min(pause, Week);
}

}  // namespace service
