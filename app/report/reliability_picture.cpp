#include "app/report/reliability_picture.h"

#include <algorithm>
#include <cmath>

#include "app/report/axes.h"
#include "app/report/html_text.h"
#include "app/report/svg_picture.h"

namespace svmscore::app {
namespace {

constexpr double kReliabilityWidth = 340;
constexpr double kReliabilityHeight = 392;
constexpr double kReliabilityLeft = 42;
constexpr double kSide = 288;  // of the square
constexpr double kStrip = 34;  // of the counts below it

void DrawPoints(SvgPicture& picture, const Plot& plot, const ReliabilityPicture& what) {
  std::vector<Point> points;
  for (const tools::Tenth& tenth : what.tenths) {
    if (tenth.cases == 0) continue;
    const double x = plot.x.At(tenth.mean);
    const ShareRange range = LikelyShares(tenth.share, tenth.cases);
    picture.Line({x, plot.y.At(range.low)}, {x, plot.y.At(range.high)}, "whisker");
    points.push_back({x, plot.y.At(tenth.share)});
  }
  picture.Path(points, "curve");
  for (const Point& point : points) picture.Circle(point, 4, "one");
}

void DrawCounts(SvgPicture& picture, const Plot& plot, const ReliabilityPicture& what) {
  std::size_t most = 1;
  for (const tools::Tenth& tenth : what.tenths) most = std::max(most, tenth.cases);
  const double bottom = kReliabilityHeight - 4;
  picture.Line({plot.x.From(), bottom}, {plot.x.To(), bottom}, "axis");
  picture.TurnedText({10, bottom - kStrip / 2 - 2}, -90, "cases", "label");
  for (std::size_t t = 0; t < what.tenths.size(); ++t) {
    const std::size_t cases = what.tenths[t].cases;
    const double left = plot.x.At(static_cast<double>(t) / 10.0);
    const double height = kStrip * static_cast<double>(cases) / static_cast<double>(most);
    const double width = plot.x.At(0.1) - plot.x.At(0.0);
    if (cases > 0) picture.Rect(left + 1, bottom - height, width - 2, height, "one");
    picture.Text({left + width / 2, bottom - height - 3}, ShortCount(cases), "tick",
                 Anchor::kMiddle);
  }
}

}  // namespace

ShareRange LikelyShares(double share, std::size_t cases) {
  constexpr double kZ = 1.959963984540054;
  const auto n = static_cast<double>(cases);
  const double scale = 1.0 + kZ * kZ / n;
  const double centre = (share + kZ * kZ / (2.0 * n)) / scale;
  const double half = kZ * std::sqrt(share * (1.0 - share) / n + kZ * kZ / (4.0 * n * n)) / scale;
  return {std::max(0.0, centre - half), std::min(1.0, centre + half)};
}

std::string Draw(const ReliabilityPicture& what) {
  SvgPicture picture(kReliabilityWidth, kReliabilityHeight, what.title, what.description);
  const Plot plot{Scale(0, 1, kReliabilityLeft, kReliabilityLeft + kSide),
                  Scale(0, 1, 10 + kSide, 10)};
  DrawYAxis(picture, plot, what.y_label, false, 5);
  picture.Line({plot.x.At(0), plot.y.At(0)}, {plot.x.At(1), plot.y.At(1)}, "mark");
  picture.TurnedText({plot.x.At(0.2) - 5, plot.y.At(0.2) - 5}, -45, "as stated", "tick halo");
  DrawXAxis(picture, plot, what.x_label, 5);
  DrawPoints(picture, plot, what);
  DrawCounts(picture, plot, what);
  return std::move(picture).Finish();
}

}  // namespace svmscore::app
