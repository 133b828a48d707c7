#include "app/report/surface_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <fmt/format.h>

#include "app/report/axes.h"
#include "app/report/html_text.h"
#include "tools/report/histogram.h"

namespace svmscore::app {
namespace {

constexpr double kWidth = 340;
constexpr double kHeight = 362;
constexpr double kLeft = 48;
constexpr double kRight = 12;
constexpr double kTop = 8;
constexpr double kBottom = 78;  // the axis, and what the bands mean
constexpr int kBands = 3;       // on each side

// The bands that values are shown in: from -kBands to kBands.
class Bands {
 public:
  explicit Bands(const SurfacePicture& what) {
    const auto [low, high] =
        std::minmax_element(what.surface.values.begin(), what.surface.values.end());
    low_ = *low;
    high_ = *high;
    if (std::isnan(what.threshold)) {
      centre_ = low_ / 2 + high_ / 2;
      reach_ = high_ / 2 - low_ / 2;
    } else {
      centre_ = what.threshold;
      reach_ = std::max(std::fabs(low_ - centre_), std::fabs(high_ - centre_));
    }
    if (!(reach_ > 0.0)) reach_ = 1.0;
    has_threshold_ = !std::isnan(what.threshold);
  }

  double Low() const { return low_; }
  double High() const { return high_; }
  double Centre() const { return centre_; }
  double Reach() const { return reach_; }
  bool HasThreshold() const { return has_threshold_; }
  int Of(double value) const {
    const double band = (value - centre_) / reach_ * (kBands + 0.5);
    return static_cast<int>(std::clamp(std::round(band), -1.0 * kBands, 1.0 * kBands));
  }
  // The class of a band: two colours beside a threshold, one that grows without.
  std::string Kind(int band) const {
    if (!has_threshold_) return fmt::format("s{}", band + kBands);
    return band < 0 ? fmt::format("b{}", -band) : fmt::format("a{}", band);
  }

 private:
  double low_;
  double high_;
  double centre_;
  double reach_;
  bool has_threshold_;
};

// Neighbours in a row that are in one band become one rectangle.
void DrawCells(SvgPicture& picture, const Plot& plot, const SurfacePicture& what,
               const Bands& bands) {
  const tools::DecisionSurface& surface = what.surface;
  const std::size_t cells = surface.side - 1;
  const double width = (plot.x.To() - plot.x.From()) / static_cast<double>(cells);
  const double height = (plot.y.From() - plot.y.To()) / static_cast<double>(cells);
  const auto band = [&](std::size_t i, std::size_t j) {
    const double* corner = surface.values.data() + j * surface.side + i;
    return bands.Of(corner[0] / 4 + corner[1] / 4 + corner[surface.side] / 4 +
                    corner[surface.side + 1] / 4);
  };
  for (std::size_t j = 0; j < cells; ++j) {
    for (std::size_t i = 0; i < cells;) {
      std::size_t end = i + 1;
      while (end < cells && band(end, j) == band(i, j)) ++end;
      // A little wider, so that no seams show between them.
      picture.Rect(plot.x.From() + width * static_cast<double>(i),
                   plot.y.From() - height * static_cast<double>(j + 1),
                   width * static_cast<double>(end - i) + (end < cells ? 0.6 : 0.0),
                   height + (j > 0 ? 0.6 : 0.0), bands.Kind(band(i, j)));
      i = end;
    }
  }
}

// Draws the lines of a level, and its number where there is room for it.
void DrawLevel(SvgPicture& picture, const Plot& plot, const SurfacePicture& what, double level,
               const std::string& text, std::string_view kind, std::vector<Point>& taken) {
  const auto last = static_cast<double>(what.surface.side - 1);
  const auto at = [&](Point point) {
    return Point{plot.x.From() + (plot.x.To() - plot.x.From()) * point.x / last,
                 plot.y.From() + (plot.y.To() - plot.y.From()) * point.y / last};
  };
  const std::vector<Segment> segments = ContourOf(what.surface.values, what.surface.side, level);
  for (const Segment& segment : segments) picture.Path({at(segment.from), at(segment.to)}, kind);
  const double middle_x = (plot.x.From() + plot.x.To()) / 2;
  const double middle_y = (plot.y.From() + plot.y.To()) / 2;
  double closest = std::numeric_limits<double>::infinity();
  Point best{};
  for (const Segment& segment : segments) {
    const Point place = at(segment.from);
    const bool inside = place.x > plot.x.From() + 26 && place.x < plot.x.To() - 26 &&
                        place.y > plot.y.To() + 14 && place.y < plot.y.From() - 10;
    const bool free = std::none_of(taken.begin(), taken.end(), [&place](const Point& other) {
      return std::fabs(other.x - place.x) < 56 && std::fabs(other.y - place.y) < 16;
    });
    const double distance = std::hypot(place.x - middle_x, place.y - middle_y);
    if (!inside || !free || distance >= closest) continue;
    closest = distance;
    best = place;
  }
  if (!std::isfinite(closest)) return;
  taken.push_back(best);
  picture.Text({best.x, best.y + 4}, text, "tick halo", Anchor::kMiddle);
}

// The name of a side, where the surface is farthest on it.
void DrawRegion(SvgPicture& picture, const Plot& plot, const SurfacePicture& what, bool above,
                std::vector<Point>& taken) {
  const std::string& name = above ? what.above : what.below;
  const auto& values = what.surface.values;
  const auto at = above ? std::max_element(values.begin(), values.end())
                        : std::min_element(values.begin(), values.end());
  const bool is_there = above ? *at > what.threshold : *at < what.threshold;
  if (name.empty() || !is_there) return;
  const auto place = static_cast<std::size_t>(at - values.begin());
  const auto last = static_cast<double>(what.surface.side - 1);
  const std::size_t row = place / what.surface.side;
  const double x = static_cast<double>(place % what.surface.side) / last;
  const double y = static_cast<double>(row) / last;
  const double left = plot.x.From() + 58;
  const double right = plot.x.To() - 58;
  Point text{std::clamp(plot.x.From() + (plot.x.To() - plot.x.From()) * x, left, right),
             std::clamp(plot.y.From() + (plot.y.To() - plot.y.From()) * y, plot.y.To() + 16,
                        plot.y.From() - 8)};
  for (const Point& other : taken) {
    if (std::fabs(other.y - text.y) < 18 && std::fabs(other.x - text.x) < 120) {
      text.y += text.y > (plot.y.From() + plot.y.To()) / 2 ? -20 : 20;
    }
  }
  taken.push_back(text);
  picture.Text(text, name, "region", Anchor::kMiddle);
}

// What the bands mean: a strip with the numbers at its ends and its middle.
void DrawKey(SvgPicture& picture, const Plot& plot, const Bands& bands) {
  const double y = kHeight - 30;
  const double width = (plot.x.To() - plot.x.From()) / (2 * kBands + 1);
  for (int band = -kBands; band <= kBands; ++band) {
    picture.Rect(plot.x.From() + width * (band + kBands), y, width, 9, bands.Kind(band));
  }
  picture.Text({plot.x.From(), y + 22}, Number(bands.Centre() - bands.Reach(), 3), "tick");
  picture.Text({(plot.x.From() + plot.x.To()) / 2, y + 22},
               "decision value " + Number(bands.Centre(), 3), "tick", Anchor::kMiddle);
  picture.Text({plot.x.To(), y + 22}, Number(bands.Centre() + bands.Reach(), 3), "tick",
               Anchor::kEnd);
}

}  // namespace

std::vector<Segment> ContourOf(const std::vector<double>& values, std::size_t side, double level) {
  std::vector<Segment> segments;
  for (std::size_t j = 0; j + 1 < side; ++j) {
    for (std::size_t i = 0; i + 1 < side; ++i) {
      const auto x = static_cast<double>(i);
      const auto y = static_cast<double>(j);
      // The corners in turn, and where the level is crossed on the way from each to the next.
      const std::array<Point, 4> corners = {{{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}}};
      const std::array<double, 4> at = {values[j * side + i], values[j * side + i + 1],
                                        values[(j + 1) * side + i + 1], values[(j + 1) * side + i]};
      std::vector<Point> crossings;
      for (std::size_t c = 0; c < 4; ++c) {
        const std::size_t next = (c + 1) % 4;
        if ((at[c] > level) == (at[next] > level)) continue;
        const double share =
            std::clamp((level / 2 - at[c] / 2) / (at[next] / 2 - at[c] / 2), 0.0, 1.0);
        crossings.push_back({corners[c].x + share * (corners[next].x - corners[c].x),
                             corners[c].y + share * (corners[next].y - corners[c].y)});
      }
      for (std::size_t k = 0; k + 1 < crossings.size(); k += 2) {
        segments.push_back({crossings[k], crossings[k + 1]});
      }
    }
  }
  return segments;
}

std::string Draw(const SurfacePicture& what) {
  SvgPicture picture(kWidth, kHeight, what.title, what.description);
  const tools::DecisionSurface& surface = what.surface;
  const Plot plot{Scale(surface.x_low, surface.x_high, kLeft, kWidth - kRight),
                  Scale(surface.y_low, surface.y_high, kHeight - kBottom, kTop)};
  const Bands bands(what);
  DrawYAxis(picture, plot, what.y_label, false, 5);
  DrawCells(picture, plot, what, bands);
  for (const tools::CasePlace& place : surface.cases) {
    const Point at{plot.x.Within(place.x), plot.y.Within(place.y)};
    if (place.is_below) {
      picture.Diamond(at, 2, "dot on second");
    } else {
      picture.Circle(at, 2, "dot on");
    }
  }
  std::vector<Point> taken;
  if (bands.HasThreshold()) {
    DrawLevel(picture, plot, what, what.threshold, "threshold", "curve strong", taken);
    DrawRegion(picture, plot, what, true, taken);
    DrawRegion(picture, plot, what, false, taken);
  } else {
    const std::vector<double> levels = tools::NiceTicks(bands.Low(), bands.High(), 5);
    const std::vector<std::string> texts = TickTexts(levels);
    for (std::size_t i = 0; i < levels.size(); ++i) {
      DrawLevel(picture, plot, what, levels[i], texts[i], "curve thin", taken);
    }
  }
  DrawXAxis(picture, plot, what.x_label);
  DrawKey(picture, plot, bands);
  return std::move(picture).Finish();
}

}  // namespace svmscore::app
