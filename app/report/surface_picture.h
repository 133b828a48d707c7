// Decision values over two inputs: bands of values, lines where they are equal, and cases.
#ifndef APP_REPORT_SURFACE_PICTURE_H_
#define APP_REPORT_SURFACE_PICTURE_H_

#include <limits>
#include <string>
#include <vector>

#include "app/report/svg_picture.h"
#include "tools/report/explanation.h"

namespace svmscore::app {

struct SurfacePicture {
  std::string title;        // plain text
  std::string description;  // likewise
  std::string x_label;      // escaped
  std::string y_label;      // likewise
  const tools::DecisionSurface& surface;
  double threshold = std::numeric_limits<double>::quiet_NaN();  // NaN: none
  std::string above;  // what is above the threshold, escaped; empty for nothing
  std::string below;
};

// [any thread] Fails: std::bad_alloc.
std::string Draw(const SurfacePicture& what);

// A part of a line where a surface has that value: between two sides of a cell of the grid, in
// units of the grid.
struct Segment {
  Point from;
  Point to;
};
// Of the cells whose corners are the grid points; values[j * side + i]. Where opposite corners of a
// cell are above the level and the others are not, the lines part these from each other. [any
// thread] Fails: std::bad_alloc.
std::vector<Segment> ContourOf(const std::vector<double>& values, std::size_t side, double level);

}  // namespace svmscore::app

#endif  // APP_REPORT_SURFACE_PICTURE_H_
