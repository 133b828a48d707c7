#include "app/report/scatter_picture.h"

#include <algorithm>
#include <cmath>

#include "app/report/axes.h"

namespace svmscore::app {
namespace {

constexpr double kScatterWidth = 340;
constexpr double kScatterLeft = 48;
constexpr double kScatterTop = 12;
constexpr double kScatterBottom = 38;

struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  void Add(double number) {
    low = std::min(low, number);
    high = std::max(high, number);
  }
  // With some room beside the outermost points.
  void Widen() {
    const double room = (high - low) * 0.03;
    low -= room;
    high += room;
  }
};

}  // namespace

std::string Draw(const ScatterPicture& what) {
  const double height = what.diagonal ? 336 : 236;
  SvgPicture picture(kScatterWidth, height, what.title, what.description);
  Range x;
  Range y;
  for (const auto* points : {&what.points, &what.curve}) {
    for (const Point& point : *points) {
      x.Add(point.x);
      y.Add(point.y);
    }
  }
  if (std::isfinite(what.level)) y.Add(what.level);
  if (what.diagonal) {
    x.Add(y.low);
    x.Add(y.high);
    y = x;
  }
  x.Widen();
  y.Widen();
  const Plot plot{Scale(x.low, x.high, kScatterLeft, kScatterWidth - 10),
                  Scale(y.low, y.high, height - kScatterBottom, kScatterTop)};
  DrawYAxis(picture, plot, what.y_label, false, 5);
  DrawXAxis(picture, plot, what.x_label);
  if (what.diagonal) {
    picture.Line({plot.x.From(), plot.y.From()}, {plot.x.To(), plot.y.To()}, "mark");
  }
  if (std::isfinite(what.level)) {
    const double at = plot.y.At(what.level);
    picture.Line({plot.x.From(), at}, {plot.x.To(), at}, "mark");
    // At the end where the curve is farther away.
    const bool at_left = !what.curve.empty() && std::fabs(what.curve.front().y - what.level) >
                                                    std::fabs(what.curve.back().y - what.level);
    picture.Text({at_left ? plot.x.From() + 3 : plot.x.To(), at - 4}, what.level_label, "tick halo",
                 at_left ? Anchor::kStart : Anchor::kEnd);
  }
  for (std::size_t i = 0; i < what.points.size(); ++i) {
    const Point at{plot.x.At(what.points[i].x), plot.y.At(what.points[i].y)};
    if (!what.is_second.empty() && what.is_second[i]) {
      picture.Diamond(at, 2.6, "dot second");
    } else {
      picture.Circle(at, 2.6, "dot");
    }
  }
  std::vector<Point> curve;
  for (const Point& point : what.curve) curve.push_back({plot.x.At(point.x), plot.y.At(point.y)});
  picture.Path(curve, "curve strong");
  return std::move(picture).Finish();
}

}  // namespace svmscore::app
