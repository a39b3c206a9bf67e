#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bench/plot/Canvas.h"
#include "bench/plot/Table.h"

namespace {

constexpr int Width = 960, Margin = 24;
constexpr int RowHeight = 24, RatiosTop = 76, RatiosLeft = 520, RatiosRight = 930;
constexpr int PanelWidth = 270, PanelHeight = 130, PanelStepX = 310, PanelStepY = 200, Columns = 3;
constexpr double LeastRatio = 0.5, MostRatio = 32;
constexpr double Ratios[] = {0.5, 1, 2, 4, 8, 16, 32};
constexpr const char* Grid = R"(stroke="#ddd")";
constexpr const char* Measured = R"(stroke="#3b76b5" stroke-width="2")";
constexpr const char* Dashes = R"(stroke="#333" stroke-dasharray="4 3")";
constexpr const char* Title = R"(font-size="15" font-weight="bold")";

std::string Short(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", number);
  return text;
}

double RatioX(double ratio) {
  const double share = std::log(std::clamp(ratio, LeastRatio, MostRatio) / LeastRatio) /
                       std::log(MostRatio / LeastRatio);
  return RatiosLeft + (RatiosRight - RatiosLeft) * share;
}

void DrawRatios(Canvas& canvas, const std::vector<Ratio>& ratios) {
  const int bottom = RatiosTop + RowHeight * static_cast<int>(ratios.size());
  canvas.Text(Margin, 28, "start", "The agent against the parts under it", Title);
  canvas.Text(Margin, 48, "start",
              "ratio of the times (square: median of the pairs, line: all of them, mark: target)");
  for (const double ratio : Ratios) {
    canvas.Line({{RatioX(ratio), RatiosTop}, {RatioX(ratio), bottom}},
                ratio == 1 ? R"(stroke="#333")" : Grid);
    canvas.Text(RatioX(ratio), RatiosTop - 6, "middle", Short(ratio));
  }
  double y = RatiosTop + RowHeight / 2.0;
  for (const Ratio& ratio : ratios) {
    canvas.Text(RatiosLeft - 12, y + 4, "end", ratio.what);
    if (ratio.target > 0) {
      canvas.Line({{RatioX(ratio.target), y - 9}, {RatioX(ratio.target), y + 9}},
                  R"(stroke="#c33" stroke-width="2")");
    }
    canvas.Level(RatioX(ratio.least), RatioX(ratio.most), y, Measured);
    canvas.Box(RatioX(ratio.median) - 4, y - 4, 8, 8, "#3b76b5");
    y += RowHeight;
  }
}

void DrawCurve(Canvas& canvas, const Curve& curve, double left, double top) {
  const auto [lastX, lastY] = curve.points.back();
  double mostY = 0;
  for (const auto& point : curve.points) mostY = std::max(mostY, point.second);
  const double bottom = top + PanelHeight;
  Canvas::Points points;
  for (const auto& [x, y] : curve.points) {
    points.emplace_back(left + PanelWidth * x / lastX, bottom - PanelHeight * y / mostY);
    canvas.Text(points.back().first, bottom + 16, "middle", Short(x), R"(font-size="10")");
  }
  canvas.Text(left, top - 22, "start", curve.title, R"(font-weight="bold")");
  canvas.Text(left, top - 6, "start", Short(mostY) + " " + curve.unit, R"(font-size="10")");
  canvas.Level(left, left + PanelWidth, top, Grid);
  canvas.Level(left, left + PanelWidth, bottom, R"(stroke="#333")");
  canvas.Line({points.front(), points.back()}, Dashes);
  canvas.Line(points, Measured);
  for (const auto& [x, y] : points) canvas.Box(x - 3, y - 3, 6, 6, "#3b76b5");
}

}  // namespace

/// bench_plot ROWS CURVES PICTURE: draws what scripts/measure.sh has gathered.
int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::vector<Ratio> ratios = ReadRatios(argv[1]);
  const std::vector<Curve> curves = ReadCurves(argv[2]);
  const int rows = (static_cast<int>(curves.size()) + Columns - 1) / Columns;
  const int top = RatiosTop + RowHeight * static_cast<int>(ratios.size()) + 96;
  Canvas canvas(Width, top + rows * PanelStepY);
  DrawRatios(canvas, ratios);
  if (!curves.empty()) {
    canvas.Text(Margin, top - 48, "start",
                "Growth (dashed: straight from the first point to the last)", Title);
  }
  int place = 0;
  for (const Curve& curve : curves) {
    const int row = place / Columns;
    DrawCurve(canvas, curve, Margin + PanelStepX * (place % Columns), top + PanelStepY * row);
    ++place;
  }
  if (canvas.Write(argv[3])) return 0;
  std::fprintf(stderr, "error: cannot write %s\n", argv[3]);
  return 1;
}
