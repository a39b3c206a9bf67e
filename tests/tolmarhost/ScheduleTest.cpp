#include "tools/tolmarhost/Schedule.h"

#include <gtest/gtest.h>

#include "tools/tolmarhost/StopBound.h"

namespace {

using namespace service;

constexpr Time Monday = 1925424000;  ///< 2031-01-06 00:00 UTC
constexpr Time Minute = 60, Hour = 60 * Minute, Day = 24 * Hour;

WallTime Utc(Time time) {
  const Time minutes = time / Minute;
  return {static_cast<int>((minutes / 1440 + 3) % 7), static_cast<int>(minutes % 1440)};
}

/// At 02:00 of Monday the clock goes to 03:00.
WallTime SummerBegins(Time time) { return Utc(time >= Monday + 2 * Hour ? time + Hour : time); }

Windows Of(const char* text) { return {*refhost::ParseWindow(text)}; }

}  // namespace

TEST(Schedule, APlanThatHoldsIsKeptAndWhatIsOverdueIsSpread) {
  const Pace pace{4 * Hour, Hour / 2};
  const struct {
    Time planned;
    double random;
    Time expected;
  } rows[] = {{Monday + Hour, 0.5, Monday + Hour},
              {0, 0.5, Monday + Hour / 4},
              {Monday - 1, 0, Monday},
              {Monday - 5 * Day, 1, Monday + Hour / 2},
              {Monday + 9 * Day, 0.5, Monday + Hour / 4},
              {Monday + 4 * Hour, 0, Monday + 4 * Hour}};
  for (const auto& row : rows) {
    EXPECT_EQ(FirstRun(row.planned, Monday, pace, row.random), row.expected) << row.planned;
  }
  EXPECT_EQ(RunAfter(Monday, pace, 0), Monday + 4 * Hour);
  EXPECT_EQ(RunAfter(Monday, pace, 1), Monday + 4 * Hour + Hour / 2);
}

TEST(Schedule, WindowsOpenAndCloseByTheWallClock) {
  const Windows night = Of("Tue 22:00-01:00");
  EXPECT_EQ(Opening(night, Monday + 30, Utc), Monday + Day + 22 * Hour);
  EXPECT_EQ(Opening(night, Monday + 2 * Day + 30, Utc), Monday + 2 * Day + 30);
  EXPECT_EQ(Closing(night, Monday + 2 * Day + 30, Utc), Monday + 2 * Day + Hour);
  EXPECT_EQ(Opening({}, Monday, Utc), Monday);
  EXPECT_FALSE(Closing({}, Monday, Utc));
  EXPECT_FALSE(Closing(Of("00:00-24:00"), Monday, Utc));
  // The hour that the clock leaves out has no window, the day after has.
  EXPECT_EQ(Opening(Of("02:00-03:00"), Monday, SummerBegins), Monday + Day + Hour);
  EXPECT_EQ(Closing(Of("01:00-04:00"), Monday + Hour, SummerBegins), Monday + 3 * Hour);
  // Half of the window is left for the work itself.
  const Pace pace{4 * Hour, 2 * Hour};
  const Time opening = Monday + Day + 22 * Hour;
  EXPECT_EQ(BeginIn(night, opening, pace, Utc, 0), opening);
  EXPECT_EQ(BeginIn(night, opening, pace, Utc, 1), opening + 3 * Hour / 2);
}

TEST(Schedule, PausesGrowUpToAWeek) {
  EXPECT_EQ(PauseAfter(1, Hour), Hour);
  EXPECT_EQ(PauseAfter(2, Hour), 4 * Hour);
  EXPECT_EQ(PauseAfter(90, Hour), 7 * Day);
  EXPECT_EQ(PauseAfter(90, 0), 0);
}

TEST(StopBound, FollowsTheTableOfStops) {
  refhost::Configuration settings;
  EXPECT_EQ(StopBoundMs(settings), 200000U);  // 2 * (15 + 15 + 30 + 30) + 10 + 5 + 1 + 4
  settings.requestTimeoutSeconds = 1;
  settings.cancelledCheckGraceSeconds = 0;
  EXPECT_EQ(StopBoundMs(settings), 18000U);
}
