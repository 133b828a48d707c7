// How the sections of a page call categories, machines and cases.
#include <fmt/format.h>

#include "app/report/html_text.h"
#include "app/report/sections.h"
#include "host/text/printable.h"

namespace svmscore::app {

using tools::ReportData;
namespace {

const std::string* Category(const ReportData& data, int category) {
  if (!data.model || category < 0) return nullptr;
  const auto at = static_cast<std::size_t>(category);
  return at < data.model->categories.size() ? &data.model->categories[at] : nullptr;
}

}  // namespace

std::string CategoryName(const ReportData& data, int category) {
  const std::string* text = Category(data, category);
  return text == nullptr ? "none" : Name(*text);
}

std::string CategoryBrief(const ReportData& data, int category, std::size_t columns) {
  const std::string* text = Category(data, category);
  return text == nullptr ? "none" : Brief(*text, columns);
}

std::string CategoryText(const ReportData& data, int category) {
  const std::string* text = Category(data, category);
  return text == nullptr ? "none" : Printable(*text, kNameShown);
}

std::string MachineName(const ReportData& data, const tools::MachineSides& sides,
                        std::size_t machine) {
  std::string html = fmt::format("Machine {}", machine + 1);
  if (sides.above >= 0 && sides.below >= 0) {
    return html + fmt::format(": {} or {}", CategoryName(data, sides.below),
                              CategoryName(data, sides.above));
  }
  const int only = sides.above >= 0 ? sides.above : sides.below;
  return only < 0 ? html : html + fmt::format(": {} or not", CategoryName(data, only));
}

std::string WhyNoCases(const ReportData& data) {
  if (!data.model || data.refused)
    return "Nothing is scored, for scoring with this model is refused.";
  if (!data.cases) {
    return "Give <code>--input CASES</code>, a CSV file with cases, to see this.";
  }
  if (data.cases->Size() > 0) return {};
  return fmt::format(
      "None of the {} of {} is scored: {} with a missing input, {} with an invalid "
      "one. <code>svmscore score --reasons</code> says why.",
      Counted(data.cases->drawn, "case"), Name(data.cases_name), Count(data.cases->missing),
      Count(data.cases->invalid));
}

}  // namespace svmscore::app
