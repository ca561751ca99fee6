// A minimal SVG line plot: panels stacked vertically, a logarithmic frequency axis and a linear
// decibel axis, one polyline per curve with its legend. Enough for spectra and filter responses.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace demo {

struct Point {
  double hz;
  double db;
};

struct Curve {
  std::string label;
  std::string color;
  std::vector<Point> points;
};

struct Panel {
  std::string title;
  double minHz, maxHz;  // the logarithmic axis
  double minDb, maxDb;  // values outside are drawn at the edge
  std::vector<Curve> curves;
};

std::string RenderSvg(std::span<const Panel> panels);

}  // namespace demo
