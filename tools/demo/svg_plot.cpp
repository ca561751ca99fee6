#include "svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace demo {
namespace {

constexpr double kWidth = 900, kPanelHeight = 320;
constexpr double kLeft = 70, kRight = 20, kTop = 40, kBottom = 45;

std::string Format(const char* format, double a, double b = 0, double c = 0, double d = 0) {
  char text[160];
  std::snprintf(text, sizeof text, format, a, b, c, d);
  return text;
}

class PanelFrame {
 public:
  PanelFrame(const Panel& panel, double top) : panel_(panel), top_(top) {}

  double X(double hz) const {
    const double span = std::log10(panel_.maxHz / panel_.minHz);
    return kLeft + (kWidth - kLeft - kRight) * std::log10(hz / panel_.minHz) / span;
  }
  double Y(double db) const {
    const double clamped = std::clamp(db, panel_.minDb, panel_.maxDb);
    const double height = kPanelHeight - kTop - kBottom;
    return top_ + kTop + height * (panel_.maxDb - clamped) / (panel_.maxDb - panel_.minDb);
  }

  std::string Axes() const {
    std::string svg = Format(R"(<text x="%g" y="%g" font-size="15">)", kLeft, top_ + 24) +
                      panel_.title + "</text>\n";
    for (double decade = std::pow(10, std::ceil(std::log10(panel_.minHz))); decade <= panel_.maxHz;
         decade *= 10) {
      svg += Format(R"(<line x1="%g" y1="%g" x2="%g" y2="%g" stroke="#ddd"/>)", X(decade),
                    Y(panel_.maxDb), X(decade), Y(panel_.minDb));
      svg += Format(R"(<text x="%g" y="%g" font-size="11" text-anchor="middle">%g Hz</text>)",
                    X(decade), Y(panel_.minDb) + 16, decade) +
             "\n";
    }
    const double step = (panel_.maxDb - panel_.minDb) > 60 ? 20 : 10;
    for (double db = std::ceil(panel_.minDb / step) * step; db <= panel_.maxDb; db += step) {
      svg += Format(R"(<line x1="%g" y1="%g" x2="%g" y2="%g" stroke="#ddd"/>)", kLeft, Y(db),
                    kWidth - kRight, Y(db));
      svg += Format(R"(<text x="%g" y="%g" font-size="11" text-anchor="end">%g dB</text>)",
                    kLeft - 6, Y(db) + 4, db) +
             "\n";
    }
    return svg;
  }

  std::string Line(const Curve& curve, int index) const {
    std::string svg =
        R"(<polyline fill="none" stroke-width="1.2" stroke=")" + curve.color + R"(" points=")";
    for (const Point& point : curve.points) {
      if (point.hz < panel_.minHz || point.hz > panel_.maxHz) continue;
      svg += Format("%.1f,%.1f ", X(point.hz), Y(point.db));
    }
    svg += "\"/>\n";
    const double legendY = top_ + kTop + 14 + 16 * index;
    svg += Format(R"(<line x1="%g" y1="%g" x2="%g" y2="%g" stroke-width="3" stroke=")",
                  kWidth - 230, legendY - 4, kWidth - 210, legendY - 4) +
           curve.color + "\"/>";
    svg += Format(R"(<text x="%g" y="%g" font-size="12">)", kWidth - 204, legendY) + curve.label +
           "</text>\n";
    return svg;
  }

 private:
  const Panel& panel_;
  double top_;
};

}  // namespace

std::string RenderSvg(std::span<const Panel> panels) {
  const double height = kPanelHeight * static_cast<double>(panels.size());
  std::string svg =
      Format(R"(<svg xmlns="http://www.w3.org/2000/svg" width="%g" height="%g" )", kWidth, height) +
      R"(font-family="sans-serif"><rect width="100%" height="100%" fill="white"/>)" + "\n";
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const PanelFrame frame(panels[i], kPanelHeight * static_cast<double>(i));
    svg += frame.Axes();
    for (std::size_t c = 0; c < panels[i].curves.size(); ++c) {
      svg += frame.Line(panels[i].curves[c], static_cast<int>(c));
    }
  }
  return svg + "</svg>\n";
}

}  // namespace demo
