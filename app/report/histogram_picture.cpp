#include "app/report/histogram_picture.h"

#include <algorithm>
#include <cmath>

#include "app/report/axes.h"
#include "app/report/svg_picture.h"

namespace svmscore::app {
namespace {

constexpr double kHistogramWidth = 340;
constexpr double kPlotHeight = 140;
constexpr double kHistogramLeft = 42;
constexpr double kHistogramRight = 14;
constexpr double kHistogramBottom = 38;

std::size_t HighestBar(const tools::Histogram& histogram) {
  std::size_t highest = 1;
  for (std::size_t b = 0; b < histogram.Bins(); ++b) {
    std::size_t sum = 0;
    for (const auto& counts : histogram.counts) sum += counts[b];
    highest = std::max(highest, sum);
  }
  return highest;
}

void DrawBars(SvgPicture& picture, const Plot& plot, const HistogramPicture& what) {
  const tools::Histogram& histogram = what.histogram;
  for (std::size_t b = 0; b < histogram.Bins(); ++b) {
    const double low = histogram.low + static_cast<double>(b) * histogram.width;
    const double left = plot.x.At(low) + 0.75;
    const double right = plot.x.At(low + histogram.width) - 0.75;
    std::size_t below = 0;
    for (std::size_t g = 0; g < histogram.counts.size(); ++g) {
      const std::size_t count = histogram.counts[g][b];
      if (count == 0) continue;
      const double bottom = plot.y.At(static_cast<double>(below));
      const double top = plot.y.At(static_cast<double>(below + count));
      picture.Rect(left, top, std::max(0.5, right - left), std::max(0.5, bottom - top),
                   what.kinds[g]);
      below += count;
    }
  }
}

void DrawSides(SvgPicture& picture, const Plot& plot, const HistogramPicture& what) {
  if (!what.left.empty()) {
    picture.Rect(plot.x.From(), 5, 9, 9, what.left_kind);
    picture.Text({plot.x.From() + 13, 13.5}, what.left, "direct");
  }
  if (!what.right.empty()) {
    picture.Text({plot.x.To() - 13, 13.5}, what.right, "direct", Anchor::kEnd);
    picture.Rect(plot.x.To() - 9, 5, 9, 9, what.right_kind);
  }
}

}  // namespace

std::string Draw(const HistogramPicture& what) {
  const bool has_sides = !what.left.empty() || !what.right.empty();
  const double top = (has_sides ? 22 : 8) + (std::isfinite(what.mark) ? 18 : 0);
  SvgPicture picture(kHistogramWidth, top + kPlotHeight + kHistogramBottom, what.title,
                     what.description);
  double low = what.histogram.low;
  double high = what.histogram.High();
  if (std::isfinite(what.mark)) {
    low = std::min(low, what.mark);
    high = std::max(high, what.mark);
  }
  const double highest = static_cast<double>(HighestBar(what.histogram));
  const Plot plot{Scale(low, high, kHistogramLeft, kHistogramWidth - kHistogramRight),
                  Scale(0.0, highest, top + kPlotHeight, top)};
  DrawYAxis(picture, plot, "cases", true);
  DrawBars(picture, plot, what);
  if (std::isfinite(what.mark)) {
    const double x = plot.x.At(what.mark);
    picture.Line({x, top - 8}, {x, plot.y.From()}, "mark");
    const double room = 3.4 * static_cast<double>(what.mark_label.size());
    picture.Text(
        {std::clamp(x, kHistogramLeft + room, kHistogramWidth - kHistogramRight - room), top - 12},
        what.mark_label, "tick", Anchor::kMiddle);
  }
  DrawSides(picture, plot, what);
  DrawXAxis(picture, plot, what.label);
  return std::move(picture).Finish();
}

}  // namespace svmscore::app
