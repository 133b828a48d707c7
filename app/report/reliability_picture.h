// The reliability diagram: how often what has a probability is so.
#ifndef APP_REPORT_RELIABILITY_PICTURE_H_
#define APP_REPORT_RELIABILITY_PICTURE_H_

#include <array>
#include <string>

#include "tools/calibrate/figures.h"

namespace svmscore::app {

struct ReliabilityPicture {
  std::string title;        // plain text
  std::string description;  // likewise
  std::string x_label;      // escaped
  std::string y_label;      // likewise
  std::array<tools::Tenth, 10> tenths;
};

// The range of shares that k of n cases make likely: E. B. Wilson's interval (1927) of 95 %.
// REQUIRES: a case. [any thread] Fails: never.
struct ShareRange {
  double low;
  double high;
};
ShareRange LikelyShares(double share, std::size_t cases);

// [any thread] Fails: std::bad_alloc.
std::string Draw(const ReliabilityPicture& what);

}  // namespace svmscore::app

#endif  // APP_REPORT_RELIABILITY_PICTURE_H_
