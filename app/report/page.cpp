#include "app/report/page.h"

#include <fmt/format.h>

#include "app/report/html_text.h"
#include "app/report/sections.h"
#include "app/report/style_sheet.h"
#include "host/text/printable.h"

namespace svmscore::app {

using tools::ReportData;
namespace {

// Lines that cross bars which colour alone would not tell apart.
constexpr const char* kHatch =
    "<svg class=\"defs\" aria-hidden=\"true\" focusable=\"false\"><defs><pattern id=\"hatch\" "
    "width=\"5\" height=\"5\" patternUnits=\"userSpaceOnUse\" patternTransform=\"rotate(45)\">"
    "<rect width=\"5\" height=\"5\"/><path d=\"M0 0V5\"/></pattern></defs></svg>\n";

struct Section {
  const char* id;
  const char* heading;
  std::string (*content)(const ReportData&);
};

constexpr Section kSections[] = {{"model", "The model", CardSection},
                                 {"findings", "What the doctor finds", FindingsSection},
                                 {"scores", "How cases score", ScoresSection},
                                 {"accuracy", "Scores against the truth", AccuracySection},
                                 {"inputs", "What the inputs do", InputsSection}};

std::string TitleOf(const ReportData& data) {
  const bool named = data.model && !data.model->model_name.empty();
  return Printable(named ? data.model->model_name : data.file.name, 120);
}

std::string Lead(const ReportData& data, const std::string& made_at) {
  std::string html = data.model ? fmt::format("Predicts {} with a support vector machine",
                                              Name(data.model->target))
                                : std::string("A document without a model that can be used");
  if (!data.cases_name.empty()) html += fmt::format("; cases of {}", Name(data.cases_name));
  if (!made_at.empty()) html += fmt::format("; made {}", Escaped(made_at));
  return html;
}

std::string Head(const std::string& title) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
      "'unsafe-inline'\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n"
      "<meta name=\"generator\" content=\"svmscore {}\">\n"
      "<title>Report on {}</title>\n<style>\n{}</style>\n</head>\n",
      SVMSCORE_VERSION, Escaped(title), kStyleSheet);
}

}  // namespace

std::string PageOf(const ReportData& data, const std::string& made_at) {
  const std::string title = TitleOf(data);
  std::string html = Head(title);
  html += "<body>\n<a class=\"skip\" href=\"#content\">Skip to the content</a>\n";
  html += kHatch;
  html += "<div class=\"page\">\n<header>\n";
  html += fmt::format("<h1>Report on <bdi>{}</bdi></h1>\n<p class=\"lead\">{}</p>\n",
                      Escaped(title), Lead(data, made_at));
  html += "<nav aria-label=\"Sections\"><ul>\n";
  for (const Section& section : kSections) {
    html += fmt::format("<li><a href=\"#{}\">{}</a></li>\n", section.id, section.heading);
  }
  html += "</ul></nav>\n</header>\n<main id=\"content\" tabindex=\"-1\">\n";
  for (const Section& section : kSections) {
    html += fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-heading\">\n<h2 id=\"{0}-heading\">{1}</h2>\n{2}"
        "</section>\n",
        section.id, section.heading, section.content(data));
  }
  html += fmt::format(
      "</main>\n<footer>Made by svmscore {}. This page loads nothing and runs "
      "nothing.</footer>\n</div>\n</body>\n</html>\n",
      SVMSCORE_VERSION);
  return html;
}

}  // namespace svmscore::app
