// Bars below each other, each with its name and its value in words.
#ifndef APP_REPORT_BAR_PICTURE_H_
#define APP_REPORT_BAR_PICTURE_H_

#include <string>
#include <vector>

namespace svmscore::app {

struct Bar {
  std::string name;   // escaped
  std::string value;  // likewise, as it is shown
  double length = 0.0;
  double spread = 0.0;  // a thin line from length - spread to length + spread; 0: none
};

struct BarPicture {
  std::string title;        // plain text
  std::string description;  // likewise
  std::vector<Bar> bars;
  std::string left;   // what negative lengths mean, escaped; empty where there are none
  std::string right;  // what positive ones mean
};

// Bars of negative lengths lie to the left of the zero and are hatched. [any thread] Fails:
// std::bad_alloc.
std::string Draw(const BarPicture& what);

}  // namespace svmscore::app

#endif  // APP_REPORT_BAR_PICTURE_H_
