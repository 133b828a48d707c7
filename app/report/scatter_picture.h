// Cases as points, with a line through them.
#ifndef APP_REPORT_SCATTER_PICTURE_H_
#define APP_REPORT_SCATTER_PICTURE_H_

#include <limits>
#include <string>
#include <vector>

#include "app/report/svg_picture.h"

namespace svmscore::app {

struct ScatterPicture {
  std::string title;            // plain text
  std::string description;      // likewise
  std::string x_label;          // escaped
  std::string y_label;          // likewise
  std::vector<Point> points;    // in the numbers of the axes; finite
  std::vector<bool> is_second;  // drawn as a diamond; empty: none is
  std::vector<Point> curve;     // likewise
  bool diagonal = false;        // a line where both are equal, and the same range on both axes
  double level = std::numeric_limits<double>::quiet_NaN();  // a horizontal line; NaN: none
  std::string level_label;                                  // escaped
};

// [any thread] Fails: std::bad_alloc.
std::string Draw(const ScatterPicture& what);

}  // namespace svmscore::app

#endif  // APP_REPORT_SCATTER_PICTURE_H_
