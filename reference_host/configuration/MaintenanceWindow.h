#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Export.h"

namespace refhost {

/// A time of the week that comes again every week, by the wall clock. It belongs to the day that it
/// begins on: one from 22:00 to 05:00 of Mondays ends on Tuesday.
struct MaintenanceWindow {
  unsigned int days = 0;  ///< bit 0: it begins on Mondays, … bit 6: on Sundays
  int begin = 0;          ///< minute of the day
  int end = 0;            ///< minute of the day, 1 to 1440; not above `begin`: of the next day
};

/// @param text in, as "Mon-Fri 22:00-05:00", "Sat,Sun 00:00-24:00" or "22:00-05:00" (every day).
/// @return nothing when it is no such text.
ZLT_API std::optional<MaintenanceWindow> ParseWindow(const std::string& text);

/// @return the text that `ParseWindow` takes, its days one by one.
std::string TextOfWindow(const MaintenanceWindow& window);

/// @param day in, 0 Monday to 6 Sunday. @param minute in, of that day. @return "Mon 22:05".
ZLT_API std::string TextOfTime(int day, int minute);

/// @param day in, @param minute in, as above.
/// @return true when one of the windows is open then; without any there is no time that is shut.
ZLT_API bool IsOpen(const std::vector<MaintenanceWindow>& windows, int day, int minute);

}  // namespace refhost
