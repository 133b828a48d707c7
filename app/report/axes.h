// Scales and axes of pictures. [any thread] Fails: std::bad_alloc.
#ifndef APP_REPORT_AXES_H_
#define APP_REPORT_AXES_H_

#include <string>
#include <string_view>
#include <vector>

#include "app/report/svg_picture.h"

namespace svmscore::app {

// Maps numbers to places. A range that is a point is widened.
class Scale {
 public:
  Scale(double low, double high, double from, double to);
  double At(double number) const;
  // The same for numbers beyond the range, which are shown at its ends.
  double Within(double number) const;
  double Low() const { return low_; }
  double High() const { return high_; }
  double From() const { return from_; }
  double To() const { return to_; }

 private:
  double low_;
  double high_;
  double from_;
  double to_;
};

// The ticks as texts with the same number of decimals, as few as tell them apart.
std::vector<std::string> TickTexts(const std::vector<double>& ticks);

// Where things are drawn: x from left to right, y upwards.
struct Plot {
  Scale x;
  Scale y;
};

// Labels are escaped already.
void DrawXAxis(SvgPicture& picture, const Plot& plot, std::string_view label,
               std::size_t wanted = 6);
// With a thin line across the plot for each tick. `whole`: whole numbers only, as for counts.
void DrawYAxis(SvgPicture& picture, const Plot& plot, std::string_view label, bool whole,
               std::size_t wanted = 4);

}  // namespace svmscore::app

#endif  // APP_REPORT_AXES_H_
