#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// An SVG picture on white ground, drawn piece by piece. Lengths in pixels, from the upper left.
/// Styles are SVG attributes.
class Canvas {
 public:
  using Points = std::vector<std::pair<double, double>>;

  Canvas(int width, int height);

  /// @param anchor in, "start", "middle" or "end". @param text in, without markup.
  void Text(double x, double y, const char* anchor, const std::string& text,
            const std::string& style = "");
  void Box(double x, double y, double width, double height, const char* colour);
  void Level(double x1, double x2, double y, const char* style);
  void Line(const Points& points, const char* style);
  /// @param path in, SVG path data.
  void Area(const std::string& path, const char* colour);

  /// Ends the picture and writes it. @return false when the file cannot be written.
  bool Write(const std::string& path);

 private:
  std::ostringstream _svg;
};
