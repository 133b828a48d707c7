#include "app/report/svg_picture.h"

#include <cmath>

#include <fmt/format.h>

#include "app/report/html_text.h"

namespace svmscore::app {
namespace {

const char* NameOf(Anchor anchor) {
  switch (anchor) {
    case Anchor::kStart:
      return "";
    case Anchor::kMiddle:
      return " text-anchor=\"middle\"";
    case Anchor::kEnd:
      return " text-anchor=\"end\"";
  }
  return "";
}

}  // namespace

std::string Length(double length) {
  std::string text = fmt::format("{:.1f}", std::isfinite(length) ? length : 0.0);
  if (text.ends_with(".0")) text.resize(text.size() - 2);
  return text == "-0" ? "0" : text;
}

SvgPicture::SvgPicture(double width, double height, std::string_view title,
                       std::string_view description)
    : text_(fmt::format("<svg viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}. {}\">"
                        "<title>{}</title><desc>{}</desc>\n",
                        Length(width), Length(height), Escaped(title), Escaped(description),
                        Escaped(title), Escaped(description))) {}

void SvgPicture::Rect(double x, double y, double width, double height, std::string_view kind) {
  text_ += fmt::format("<rect class=\"{}\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"/>\n", kind,
                       Length(x), Length(y), Length(width), Length(height));
}

void SvgPicture::Line(Point from, Point to, std::string_view kind) {
  text_ += fmt::format("<line class=\"{}\" x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\"/>\n", kind,
                       Length(from.x), Length(from.y), Length(to.x), Length(to.y));
}

void SvgPicture::Circle(Point centre, double radius, std::string_view kind) {
  text_ += fmt::format("<circle class=\"{}\" cx=\"{}\" cy=\"{}\" r=\"{}\"/>\n", kind,
                       Length(centre.x), Length(centre.y), Length(radius));
}

void SvgPicture::Diamond(Point centre, double radius, std::string_view kind) {
  const std::string side = Length(1.25 * radius);
  text_ += fmt::format("<path class=\"{}\" d=\"M{} {}l{} {}l{} -{}l-{} -{}z\"/>\n", kind,
                       Length(centre.x - 1.25 * radius), Length(centre.y), side, side, side, side,
                       side, side);
}

void SvgPicture::Path(const std::vector<Point>& points, std::string_view kind) {
  if (points.empty()) return;
  text_ += fmt::format("<path class=\"{}\" d=\"", kind);
  char command = 'M';
  for (const Point& point : points) {
    text_ += fmt::format("{}{} {}", command, Length(point.x), Length(point.y));
    command = 'L';
  }
  text_ += "\"/>\n";
}

void SvgPicture::Text(Point at, std::string_view text, std::string_view kind, Anchor anchor) {
  text_ += fmt::format("<text class=\"{}\" x=\"{}\" y=\"{}\"{}>{}</text>\n", kind, Length(at.x),
                       Length(at.y), NameOf(anchor), text);
}

void SvgPicture::TurnedText(Point at, double degrees, std::string_view text,
                            std::string_view kind) {
  text_ += fmt::format(
      "<text class=\"{}\" text-anchor=\"middle\" transform=\"translate({} {}) rotate({})\">{}"
      "</text>\n",
      kind, Length(at.x), Length(at.y), Length(degrees), text);
}

std::string SvgPicture::Finish() && {
  text_ += "</svg>\n";
  return std::move(text_);
}

}  // namespace svmscore::app
