#include "app/report/page_parts.h"

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

#include "app/report/html_text.h"
#include "host/text/printable.h"

namespace svmscore::app {

std::string Figure(std::string_view caption_html, std::string_view picture_html,
                   std::string_view note_html) {
  return fmt::format("<figure>\n<figcaption>{}</figcaption>\n{}{}</figure>\n", caption_html,
                     picture_html, note_html.empty() ? "" : fmt::format("<p>{}</p>\n", note_html));
}

std::string Figures(const std::vector<std::string>& figures) {
  std::string html = "<div class=\"figures\">\n";
  for (const std::string& figure : figures) html += figure;
  return html + "</div>\n";
}

std::string Beside(std::string_view figure_html, std::string_view text_html) {
  return fmt::format("<div class=\"beside\">\n{}<div>\n{}</div>\n</div>\n", figure_html, text_html);
}

std::string Paragraph(std::string_view html) {
  return fmt::format("<p>{}</p>\n", html);
}

std::string Note(std::string_view html) {
  return fmt::format("<p class=\"note\">{}</p>\n", html);
}

std::string Give(std::string_view html) {
  return fmt::format("<p class=\"give\">{}</p>\n", html);
}

std::string Tiles(const std::vector<Tile>& tiles) {
  std::string html = "<ul class=\"tiles\">\n";
  for (const Tile& tile : tiles) {
    html +=
        fmt::format("<li><b>{}</b> <span>{}</span></li>\n", tile.number_html, tile.meaning_html);
  }
  return html + "</ul>\n";
}

std::string Facts(const std::vector<Fact>& facts) {
  std::string html = "<dl class=\"facts\">\n";
  for (const Fact& fact : facts) {
    if (fact.html.empty()) continue;
    html += fmt::format("<dt>{}</dt><dd>{}</dd>\n", fact.name, fact.html);
  }
  return html + "</dl>\n";
}

namespace {

void DropEmptyColumns(PageTable& table) {
  for (std::size_t column = table.head_html.size(); column-- > 1;) {
    const bool says_nothing =
        std::all_of(table.rows_html.begin(), table.rows_html.end(),
                    [column](const auto& row) { return row[column] == kDash; });
    if (!says_nothing || table.rows_html.empty()) continue;
    const auto at = static_cast<std::ptrdiff_t>(column);
    table.head_html.erase(table.head_html.begin() + at);
    table.is_number.erase(table.is_number.begin() + at);
    for (auto& row : table.rows_html) row.erase(row.begin() + at);
  }
}

}  // namespace

std::string Table(PageTable table) {
  DropEmptyColumns(table);
  const auto kind = [&table](std::size_t column) {
    return table.is_number[column] ? " class=\"number\"" : "";
  };
  // A region that scrolls must be reached by keys, and so needs a name.
  std::string html =
      fmt::format("<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"{}\">\n",
                  Escaped(table.name));
  html += fmt::format("<table>\n<caption>{}</caption>\n<thead><tr>", table.caption_html);
  for (std::size_t i = 0; i < table.head_html.size(); ++i) {
    html += fmt::format("<th scope=\"col\"{}>{}</th>", kind(i), table.head_html[i]);
  }
  html += "</tr></thead>\n<tbody>\n";
  for (const auto& row : table.rows_html) {
    html += "<tr>";
    for (std::size_t i = 0; i < row.size(); ++i) {
      html += i == 0 ? fmt::format("<th scope=\"row\"{}>{}</th>", kind(i), row[i])
                     : fmt::format("<td{}>{}</td>", kind(i), row[i]);
    }
    html += "</tr>\n";
  }
  return html + "</tbody>\n</table>\n</div>\n";
}

std::string Details(std::string_view summary_html, std::string_view content_html) {
  return fmt::format("<details>\n<summary>{}</summary>\n{}</details>\n", summary_html,
                     content_html);
}

}  // namespace svmscore::app
