#include "app/report/bar_picture.h"

#include <algorithm>
#include <cmath>

#include "app/report/axes.h"
#include "app/report/svg_picture.h"

namespace svmscore::app {
namespace {

constexpr double kBarWidth = 340;
constexpr double kRow = 30;
constexpr double kBarTop = 17;
constexpr double kBar = 9;

}  // namespace

std::string Draw(const BarPicture& what) {
  double low = 0.0;
  double high = 0.0;
  for (const Bar& bar : what.bars) {
    low = std::min(low, bar.length - bar.spread);
    high = std::max(high, bar.length + bar.spread);
  }
  const bool has_sides = !what.left.empty() || !what.right.empty();
  const double top = has_sides ? 24 : 4;
  const double height = top + kRow * static_cast<double>(what.bars.size()) + 2;
  SvgPicture picture(kBarWidth, height, what.title, what.description);
  const Scale x(low, low == high ? low + 1.0 : high, 4, kBarWidth - 4);
  const double zero = x.At(0.0);
  if (!what.left.empty()) {
    picture.Rect(4, 5, 9, 9, "two");
    picture.Text({17, 13.5}, what.left, "direct");
  }
  if (!what.right.empty()) {
    picture.Text({kBarWidth - 17, 13.5}, what.right, "direct", Anchor::kEnd);
    picture.Rect(kBarWidth - 13, 5, 9, 9, "one");
  }
  double y = top;
  for (const Bar& bar : what.bars) {
    picture.Text({4, y + 11}, bar.name, "direct");
    picture.Text({kBarWidth - 4, y + 11}, bar.value, "value", Anchor::kEnd);
    const double end = x.At(bar.length);
    picture.Rect(4, y + kBarTop, kBarWidth - 8, kBar, "track");
    picture.Rect(std::min(zero, end), y + kBarTop, std::fabs(end - zero), kBar,
                 bar.length < 0.0 ? "two" : "one");
    if (bar.spread > 0.0) {
      const double middle = y + kBarTop + kBar / 2;
      picture.Line({x.At(bar.length - bar.spread), middle}, {x.At(bar.length + bar.spread), middle},
                   "whisker");
    }
    if (low < 0.0) {
      picture.Line({zero, y + kBarTop - 2}, {zero, y + kBarTop + kBar + 2}, "axis");
    }
    y += kRow;
  }
  return std::move(picture).Finish();
}

}  // namespace svmscore::app
