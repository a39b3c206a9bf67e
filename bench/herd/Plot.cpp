#include "bench/herd/Plot.h"

#include <algorithm>
#include <fstream>
#include <sstream>

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
  explicit Plot(const Scenario& scenario)
      : _scenario(scenario), _ceiling(Grids * scenario.capacity), _minutes(Minutes(scenario)) {}

  std::string Draw(const std::vector<Result>& results) {
    const int bottom = Top + PanelStep * static_cast<int>(results.size()) - PanelStep + PanelHeight;
    _svg << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )" << Width << ' '
         << bottom + 52 << R"(" font-family="sans-serif" font-size="12" fill="#333">)"
         << "\n";
    Box(0, 0, Width, bottom + 52, "#fff");
    Legend();
    for (const Result& result : results) Panel(result);
    TimeAxis(bottom);
    const int middle = (Top + bottom) / 2;
    Text(18, middle, "middle", "requests per second",
         "transform=\"rotate(-90 18 " + std::to_string(middle) + ")\"");
    _svg << "</svg>\n";
    return _svg.str();
  }

 private:
  double X(double minutes) const { return Left + (Right - Left) * minutes / _minutes; }
  double Y(double requests) const {
    return _top + PanelHeight * (1 - std::min(requests / _ceiling, 1.0));
  }

  void Text(double x, double y, const char* anchor, const std::string& text,
            const std::string& more = "") {
    _svg << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\" " << more
         << '>' << text << "</text>\n";
  }

  void Box(double x, double y, double width, double height, const char* colour) {
    _svg << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\""
         << height << "\" fill=\"" << colour << "\"/>\n";
  }

  void Level(double x1, double x2, double y, const char* style) {
    _svg << "<path d=\"M" << x1 << ' ' << y << 'H' << x2 << "\" " << style << "/>\n";
  }

  void Legend() {
    Text(Left, 26, "start",
         Grouped(_scenario.devices) + " devices meet an outage of " +
             Grouped(_scenario.outageSeconds) + " s; the service answers " +
             Grouped(_scenario.capacity) + " requests per second",
         R"(font-size="15" font-weight="bold")");
    double x = Left;
    for (const auto& [colour, text] :
         {std::pair(Outage, "outage"), {Refused, "answered 503"}, {Served, "served"}}) {
      Box(x, 40, 18, 12, colour);
      Text(x + 24, 50, "start", text);
      x += 120;
    }
    Level(x, x + 18, 46, Dashes);
    Text(x + 24, 50, "start", "capacity");
    Text(Right, 50, "end", "requests above " + Grouped(_ceiling) + " are cut off");
  }

  void Panel(const Result& result) {
    const Outcome& outcome = result.outcome;
    Box(Left, _top, X(_scenario.outageSeconds / 60.0) - Left, PanelHeight, Outage);
    for (int level = 0; level <= _ceiling; level += _scenario.capacity) {
      Level(Left, Right, Y(level), R"(stroke="#ddd")");
      Text(Left - 8, Y(level) + 4, "end", Grouped(level), R"(font-size="10")");
    }
    Area(outcome.requests, Refused);
    Area(outcome.served, Served);
    Level(Left, Right, Y(_scenario.capacity), Dashes);
    Text(Left, _top - 7, "start", result.policy->name, R"(font-weight="bold")");
    Text(Right, _top - 7, "end",
         "repeated requests: peak " + Grouped(outcome.peak) + "/s; served within the retries: " +
             Percent(_scenario, outcome.servedByRetries) + " %");
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
    _svg << "<path fill=\"" << colour << "\" d=\"M" << X(0) << ' ' << Y(0);
    for (int second = 0; second < _minutes * 60; second += BinSeconds) {
      _svg << 'V' << Y(Bin(counts, static_cast<std::size_t>(second))) << 'H'
           << X((second + BinSeconds) / 60.0);
    }
    _svg << 'V' << Y(0) << "Z\"/>\n";
  }

  void TimeAxis(double y) {
    Level(Left, Right, y, R"(stroke="#333")");
    const int step = (_minutes / 60 + 1) * 5;
    for (int minute = 0; minute <= _minutes; minute += step) {
      Text(X(minute), y + 18, "middle", std::to_string(minute));
    }
    Text((Left + Right) / 2.0, y + 38, "middle", "minutes since the outage began");
  }

  const Scenario& _scenario;
  const int _ceiling;
  const int _minutes;
  int _top = Top;  ///< of the panel that is drawn next
  std::ostringstream _svg;
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
  std::ofstream file(path, std::ios::binary);
  file << Plot(scenario).Draw(results);
  file.close();
  return file.good();
}

}  // namespace herd
