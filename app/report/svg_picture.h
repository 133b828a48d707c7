// A picture of a page as inline SVG: shapes by their classes, which the page's style sheet colours.
// [one thread] for each object. Fails: std::bad_alloc.
#ifndef APP_REPORT_SVG_PICTURE_H_
#define APP_REPORT_SVG_PICTURE_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace svmscore::app {

enum class Anchor { kStart, kMiddle, kEnd };

struct Point {
  double x;
  double y;
};

// Lengths are in units of the view box: pixels where the picture is shown in its own size.
class SvgPicture {
 public:
  // `title` names the picture, `description` says what it shows to whoever does not see it: both
  // plain texts.
  SvgPicture(double width, double height, std::string_view title, std::string_view description);

  // `kind` is the class; texts are escaped already.
  void Rect(double x, double y, double width, double height, std::string_view kind);
  void Line(Point from, Point to, std::string_view kind);
  void Circle(Point centre, double radius, std::string_view kind);
  // A mark of the same area with another outline, so that it is told apart without colour.
  void Diamond(Point centre, double radius, std::string_view kind);
  void Path(const std::vector<Point>& points, std::string_view kind);
  void Text(Point at, std::string_view text, std::string_view kind, Anchor anchor = Anchor::kStart);
  void TurnedText(Point at, double degrees, std::string_view text, std::string_view kind);

  std::string Finish() &&;

 private:
  std::string text_;
};

// The same for every locale, with one digit after the point at most.
std::string Length(double length);

}  // namespace svmscore::app

#endif  // APP_REPORT_SVG_PICTURE_H_
