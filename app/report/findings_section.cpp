#include <map>
#include <string_view>

#include <fmt/format.h>

#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/sections.h"

namespace svmscore::app {

using tools::ReportData;
namespace {

// Places of a kind that are listed, and kinds; the rest is counted.
constexpr std::size_t kPlaces = 5;
constexpr std::size_t kKinds = 40;

std::string PlaceOf(const Finding& finding) {
  if (finding.place.element.empty()) return {};
  std::string element = Name(finding.place.element, 120);
  if (finding.place.line == 0) return element;
  return fmt::format("line {}, {}", finding.place.line, element);
}

struct Kind {
  std::vector<const Finding*> findings;
  std::size_t places = 0;
};

std::string KindText(const Kind& kind) {
  const Finding& first = *kind.findings.front();
  const std::string severity(SeverityName(first.kind->of_class));
  std::string html =
      fmt::format("<article class=\"finding {}\">\n<h3><span class=\"tag\">{}</span>{}</h3>\n",
                  severity, severity, Escaped(first.Name()));
  html += "<ul>\n";
  for (std::size_t i = 0; i < std::min(kind.findings.size(), kPlaces); ++i) {
    const std::string place = PlaceOf(*kind.findings[i]);
    html += fmt::format("<li>{}{}{}</li>\n", Name(kind.findings[i]->What(), 400),
                        place.empty() ? "" : " \u2013 ", place);
  }
  html += "</ul>\n";
  if (kind.places > std::min(kind.findings.size(), kPlaces)) {
    html += fmt::format("<p>and {} more of this kind</p>\n",
                        Count(kind.places - std::min(kind.findings.size(), kPlaces)));
  }
  return html + fmt::format(
                    "<p><b>Consequence:</b> {}.</p>\n<p><b>Remedy:</b> {}.</p>\n"
                    "</article>\n",
                    Escaped(first.kind->consequence), Escaped(first.kind->remedy));
}

}  // namespace

std::string FindingsSection(const ReportData& data) {
  if (data.findings.empty()) {
    return Paragraph(
        "No findings: the checks of the document find nothing that is wrong, lost or "
        "suspicious.");
  }
  std::vector<std::string_view> order;
  std::map<std::string_view, Kind> kinds;
  std::size_t all = 0;
  std::size_t changing = 0;
  for (const Finding& finding : data.findings) {
    Kind& kind = kinds[finding.Name()];
    if (kind.findings.empty()) order.push_back(finding.Name());
    kind.findings.push_back(&finding);
    kind.places += 1 + finding.more;
    all += 1 + finding.more;
    if (finding.IsError()) changing += 1 + finding.more;
  }
  std::string html = Paragraph(fmt::format("{}; {} change{} scores.", Counted(all, "finding"),
                                           changing == 0 ? std::string("none") : Count(changing),
                                           changing > 1 ? "" : "s"));
  for (std::size_t i = 0; i < std::min(order.size(), kKinds); ++i)
    html += KindText(kinds[order[i]]);
  if (order.size() > kKinds) {
    html += Note(fmt::format("and {} more kinds of findings", order.size() - kKinds));
  }
  return html;
}

}  // namespace svmscore::app
