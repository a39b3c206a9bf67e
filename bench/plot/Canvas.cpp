#include "bench/plot/Canvas.h"

#include <fstream>

Canvas::Canvas(int width, int height) {
  _svg << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )" << width << ' ' << height
       << R"(" font-family="sans-serif" font-size="12" fill="#333">)"
       << "\n";
  Box(0, 0, width, height, "#fff");
}

void Canvas::Text(double x, double y, const char* anchor, const std::string& text,
                  const std::string& style) {
  _svg << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\" " << style
       << '>' << text << "</text>\n";
}

void Canvas::Box(double x, double y, double width, double height, const char* colour) {
  _svg << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\"" << height
       << "\" fill=\"" << colour << "\"/>\n";
}

void Canvas::Level(double x1, double x2, double y, const char* style) {
  _svg << "<path d=\"M" << x1 << ' ' << y << 'H' << x2 << "\" " << style << "/>\n";
}

void Canvas::Line(const Points& points, const char* style) {
  _svg << "<path fill=\"none\" d=\"";
  for (std::size_t i = 0; i < points.size(); ++i) {
    _svg << (i == 0 ? 'M' : 'L') << points[i].first << ' ' << points[i].second;
  }
  _svg << "\" " << style << "/>\n";
}

void Canvas::Area(const std::string& path, const char* colour) {
  _svg << "<path fill=\"" << colour << "\" d=\"" << path << "\"/>\n";
}

bool Canvas::Write(const std::string& path) {
  _svg << "</svg>\n";
  std::ofstream file(path, std::ios::binary);
  file << _svg.str();
  file.close();
  return file.good();
}
