#include "bench/herd/Plot.h"

#include <algorithm>
#include <sstream>

#include "bench/plot/Canvas.h"

namespace herd {
namespace {

constexpr int Width = 900, Left = 76, Right = 876, Top = 84, PanelHeight = 72, PanelStep = 104;
constexpr int BinSeconds = 10;
constexpr int Grids = 3;  ///< a panel ends at this many times the capacity
constexpr const char* Outage = "#eee";
constexpr const char* Refused = "#e8a06a";
constexpr const char* Served = "#3b76b5";
constexpr const char* Dashes = R"(stroke="#333" stroke-dasharray="4 3")";

/// @return the end of the time axis: nobody retries later, and the recovery is in the picture.
int Minutes(const Scenario& scenario) {
  const auto retries = static_cast<int>(LongestRetries() / 1000);
  const int end = std::max(scenario.arrivalSeconds + retries, scenario.outageSeconds + 600);
  return (end / 300 + 1) * 5;
}

/// One picture: the panels share both axes, so that they compare at a glance.
class Plot {
 public:
  Plot(const Scenario& scenario, const std::vector<Result>& results)
      : _scenario(scenario),
        _ceiling(Grids * scenario.capacity),
        _minutes(Minutes(scenario)),
        _bottom(Top + PanelStep * static_cast<int>(results.size()) - PanelStep + PanelHeight),
        _canvas(Width, _bottom + 52) {
    Legend();
    for (const Result& result : results) Panel(result);
    TimeAxis(_bottom);
    const int middle = (Top + _bottom) / 2;
    _canvas.Text(18, middle, "middle", "requests per second",
                 "transform=\"rotate(-90 18 " + std::to_string(middle) + ")\"");
  }

  bool Write(const std::string& path) { return _canvas.Write(path); }

 private:
  double X(double minutes) const { return Left + (Right - Left) * minutes / _minutes; }
  double Y(double requests) const {
    return _top + PanelHeight * (1 - std::min(requests / _ceiling, 1.0));
  }

  void Legend() {
    _canvas.Text(Left, 26, "start",
                 Grouped(_scenario.devices) + " devices meet an outage of " +
                     Grouped(_scenario.outageSeconds) + " s; the service answers " +
                     Grouped(_scenario.capacity) + " requests per second",
                 R"(font-size="15" font-weight="bold")");
    double x = Left;
    for (const auto& [colour, text] :
         {std::pair(Outage, "outage"), {Refused, "answered 503"}, {Served, "served"}}) {
      _canvas.Box(x, 40, 18, 12, colour);
      _canvas.Text(x + 24, 50, "start", text);
      x += 120;
    }
    _canvas.Level(x, x + 18, 46, Dashes);
    _canvas.Text(x + 24, 50, "start", "capacity");
    _canvas.Text(Right, 50, "end", "requests above " + Grouped(_ceiling) + " are cut off");
  }

  void Panel(const Result& result) {
    const Outcome& outcome = result.outcome;
    _canvas.Box(Left, _top, X(_scenario.outageSeconds / 60.0) - Left, PanelHeight, Outage);
    for (int level = 0; level <= _ceiling; level += _scenario.capacity) {
      _canvas.Level(Left, Right, Y(level), R"(stroke="#ddd")");
      _canvas.Text(Left - 8, Y(level) + 4, "end", Grouped(level), R"(font-size="10")");
    }
    Area(outcome.requests, Refused);
    Area(outcome.served, Served);
    _canvas.Level(Left, Right, Y(_scenario.capacity), Dashes);
    _canvas.Text(Left, _top - 7, "start", result.policy->name, R"(font-weight="bold")");
    _canvas.Text(
        Right, _top - 7, "end",
        "repeated requests: peak " + Grouped(outcome.peak) +
            "/s; served within the retries: " + Percent(_scenario, outcome.servedByRetries) + " %");
    _top += PanelStep;
  }

  /// @return the average of the bin that begins at `second`.
  static double Bin(const std::vector<std::uint32_t>& counts, std::size_t second) {
    double sum = 0;
    for (std::size_t i = second; i < std::min(second + BinSeconds, counts.size()); ++i) {
      sum += counts[i];
    }
    return sum / BinSeconds;
  }

  void Area(const std::vector<std::uint32_t>& counts, const char* colour) {
    std::ostringstream path;
    path << 'M' << X(0) << ' ' << Y(0);
    for (int second = 0; second < _minutes * 60; second += BinSeconds) {
      path << 'V' << Y(Bin(counts, static_cast<std::size_t>(second))) << 'H'
           << X((second + BinSeconds) / 60.0);
    }
    path << 'V' << Y(0) << 'Z';
    _canvas.Area(path.str(), colour);
  }

  void TimeAxis(double y) {
    _canvas.Level(Left, Right, y, R"(stroke="#333")");
    const int step = (_minutes / 60 + 1) * 5;
    for (int minute = 0; minute <= _minutes; minute += step) {
      _canvas.Text(X(minute), y + 18, "middle", std::to_string(minute));
    }
    _canvas.Text((Left + Right) / 2.0, y + 38, "middle", "minutes since the outage began");
  }

  const Scenario& _scenario;
  const int _ceiling;
  const int _minutes;
  int _top = Top;     ///< of the panel that is drawn next
  const int _bottom;  ///< of the last panel
  Canvas _canvas;
};

}  // namespace

std::string Grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string Percent(const Scenario& scenario, std::int64_t devices) {
  const std::int64_t tenths = devices * 1000 / scenario.devices;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

bool WritePlot(const std::string& path, const Scenario& scenario,
               const std::vector<Result>& results) {
  return Plot(scenario, results).Write(path);
}

}  // namespace herd
