#include "reference_host/configuration/MaintenanceWindow.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace refhost {

namespace {

constexpr int MinutesOfDay = 24 * 60;
constexpr unsigned int EveryDay = 0x7F;
constexpr std::array<std::string_view, 7> Days{"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};

/// Takes a text apart from its begin on.
class Scanner {
 public:
  explicit Scanner(std::string_view rest) : _rest(rest) {}

  bool IsAtEnd() const { return _rest.empty(); }

  bool Take(char sign) {
    if (!_rest.starts_with(sign)) return false;
    _rest.remove_prefix(1);
    return true;
  }

  std::optional<unsigned int> TakeDay() {
    for (unsigned int day = 0; day < Days.size(); ++day) {
      if (!_rest.starts_with(Days[day])) continue;
      _rest.remove_prefix(Days[day].size());
      return day;
    }
    return std::nullopt;
  }

  /// "HH:MM", up to 24:00. @return the minute of the day.
  std::optional<int> TakeTime() {
    const std::optional<int> hour = TakeTwoDigits();
    const bool hasColon = Take(':');
    const std::optional<int> minute = TakeTwoDigits();
    if (!hour || !hasColon || !minute || *minute > 59) return std::nullopt;
    const int time = *hour * 60 + *minute;
    return time <= MinutesOfDay ? std::optional(time) : std::nullopt;
  }

 private:
  std::optional<int> TakeTwoDigits() {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (_rest.size() < 2 || !isDigit(_rest[0]) || !isDigit(_rest[1])) return std::nullopt;
    const int number = (_rest[0] - '0') * 10 + (_rest[1] - '0');
    _rest.remove_prefix(2);
    return number;
  }

  std::string_view _rest;
};

/// "Mon", "Mon-Fri", "Sat,Sun", "Fri-Mon". @return no day when it is none of that.
unsigned int TakeDays(Scanner& scanner) {
  unsigned int days = 0;
  do {
    const std::optional<unsigned int> first = scanner.TakeDay();
    const std::optional<unsigned int> last = first && scanner.Take('-') ? scanner.TakeDay() : first;
    if (!first || !last) return 0;
    for (unsigned int day = *first;; day = (day + 1) % 7) {
      days |= 1u << day;
      if (day == *last) break;
    }
  } while (scanner.Take(','));
  return days;
}

/// @return "22:05".
std::string TextOfMinute(int minute) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d:%02d", minute / 60, minute % 60);
  return text;
}

bool IsOpen(const MaintenanceWindow& window, int day, int minute) {
  const auto beginsOn = [&window](int which) { return (window.days >> which & 1u) != 0; };
  const bool isOverMidnight = window.end <= window.begin;
  if (beginsOn(day) && minute >= window.begin && (isOverMidnight || minute < window.end)) {
    return true;
  }
  return isOverMidnight && beginsOn((day + 6) % 7) && minute < window.end;
}

}  // namespace

std::optional<MaintenanceWindow> ParseWindow(const std::string& text) {
  Scanner scanner(text);
  MaintenanceWindow window{EveryDay, 0, 0};
  const bool namesDays = !text.empty() && text[0] >= 'A';
  if (namesDays) window.days = TakeDays(scanner);
  if (window.days == 0 || (namesDays && !scanner.Take(' '))) return std::nullopt;
  const std::optional<int> begin = scanner.TakeTime();
  const bool hasDash = scanner.Take('-');
  const std::optional<int> end = scanner.TakeTime();
  if (!begin || !hasDash || !end || !scanner.IsAtEnd()) return std::nullopt;
  if (*begin == MinutesOfDay || *end == 0 || *begin == *end) return std::nullopt;
  window.begin = *begin;
  window.end = *end;
  return window;
}

std::string TextOfWindow(const MaintenanceWindow& window) {
  std::string days;
  for (unsigned int day = 0; window.days != EveryDay && day < Days.size(); ++day) {
    if ((window.days >> day & 1u) == 0) continue;
    if (!days.empty()) days += ',';
    days += Days[day];
  }
  const std::string times = TextOfMinute(window.begin) + "-" + TextOfMinute(window.end);
  return days.empty() ? times : days + " " + times;
}

std::string TextOfTime(int day, int minute) {
  return std::string(Days[static_cast<std::size_t>(day)]) + " " + TextOfMinute(minute);
}

bool IsOpen(const std::vector<MaintenanceWindow>& windows, int day, int minute) {
  return windows.empty() ||
         std::any_of(windows.begin(), windows.end(),
                     [day, minute](const auto& window) { return IsOpen(window, day, minute); });
}

}  // namespace refhost
