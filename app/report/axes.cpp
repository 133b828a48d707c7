#include "app/report/axes.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/report/html_text.h"
#include "tools/report/histogram.h"

namespace svmscore::app {

Scale::Scale(double low, double high, double from, double to)
    : low_(low), high_(high), from_(from), to_(to) {
  if (high_ > low_ && std::isfinite(low_) && std::isfinite(high_)) return;
  const double spare = std::isfinite(low_) && low_ != 0.0 ? std::fabs(low_) / 10.0 : 1.0;
  low_ = std::isfinite(low_) && std::fabs(low_) < 1e300 ? low_ - spare : -1.0;
  high_ = low_ + 2.0 * spare;
}

double Scale::At(double number) const {
  // Halves, so that the difference of the largest numbers is one too.
  return from_ + (number / 2 - low_ / 2) / (high_ / 2 - low_ / 2) * (to_ - from_);
}

double Scale::Within(double number) const {
  return At(std::clamp(number, low_, high_));
}

std::vector<std::string> TickTexts(const std::vector<double>& ticks) {
  double largest = 0.0;
  double step = 0.0;
  for (const double tick : ticks) largest = std::max(largest, std::fabs(tick));
  if (ticks.size() > 1) step = ticks[1] - ticks[0];
  std::vector<std::string> texts;
  const bool plain = largest < 1e6 && (step == 0.0 || step >= 1e-4) && largest > 0.0;
  const int decimals = plain && step > 0.0
                           ? static_cast<int>(std::max(0.0, std::ceil(-std::log10(step) - 1e-9)))
                           : 0;
  texts.reserve(ticks.size());
  for (const double tick : ticks) {
    texts.push_back(tick == 0.0         ? std::string("0")
                    : plain && step > 0 ? Fixed(tick, decimals)
                                        : Number(tick, 4));
  }
  return texts;
}

void DrawXAxis(SvgPicture& picture, const Plot& plot, std::string_view label, std::size_t wanted) {
  const double y = plot.y.From();
  picture.Line({plot.x.From(), y}, {plot.x.To(), y}, "axis");
  std::vector<double> ticks = tools::NiceTicks(plot.x.Low(), plot.x.High(), wanted);
  std::vector<std::string> texts = TickTexts(ticks);
  std::size_t longest = 0;
  for (const std::string& text : texts) longest = std::max(longest, text.size());
  // Long numbers get fewer ticks rather than texts that run into each other.
  const double room = (plot.x.To() - plot.x.From()) / static_cast<double>(ticks.size());
  if (wanted > 2 && static_cast<double>(longest) * 6.0 + 4.0 > room) {
    ticks = tools::NiceTicks(plot.x.Low(), plot.x.High(), wanted / 2);
    texts = TickTexts(ticks);
  }
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    const double x = plot.x.Within(ticks[i]);
    picture.Line({x, y}, {x, y + 4}, "axis");
    picture.Text({x, y + 15}, texts[i], "tick", Anchor::kMiddle);
  }
  picture.Text({(plot.x.From() + plot.x.To()) / 2, y + 31}, label, "label", Anchor::kMiddle);
}

void DrawYAxis(SvgPicture& picture, const Plot& plot, std::string_view label, bool whole,
               std::size_t wanted) {
  const std::vector<double> ticks = tools::NiceTicks(plot.y.Low(), plot.y.High(), wanted);
  const std::vector<std::string> texts = TickTexts(ticks);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    if (whole && ticks[i] != std::floor(ticks[i])) continue;
    const double y = plot.y.Within(ticks[i]);
    picture.Line({plot.x.From(), y}, {plot.x.To(), y}, "grid");
    picture.Text({plot.x.From() - 5, y + 3.5}, texts[i], "tick", Anchor::kEnd);
  }
  picture.TurnedText({10, (plot.y.From() + plot.y.To()) / 2}, -90, label, "label");
}

}  // namespace svmscore::app
