// A histogram with up to three kinds of cases on top of each other.
#ifndef APP_REPORT_HISTOGRAM_PICTURE_H_
#define APP_REPORT_HISTOGRAM_PICTURE_H_

#include <limits>
#include <string>
#include <vector>

#include "tools/report/histogram.h"

namespace svmscore::app {

struct HistogramPicture {
  std::string title;        // plain text
  std::string description;  // likewise
  std::string label;        // of the horizontal axis; escaped
  tools::Histogram histogram;
  // The class of each group of the histogram, from the bottom of a bar to its top.
  std::vector<std::string> kinds;
  // What lies on both sides of the mark, escaped; empty for nothing.
  std::string left;
  std::string right;
  std::string left_kind;
  std::string right_kind;
  double mark = std::numeric_limits<double>::quiet_NaN();  // a line there; NaN: none
  std::string mark_label;                                  // escaped
};

// [any thread] Fails: std::bad_alloc.
std::string Draw(const HistogramPicture& what);

}  // namespace svmscore::app

#endif  // APP_REPORT_HISTOGRAM_PICTURE_H_
