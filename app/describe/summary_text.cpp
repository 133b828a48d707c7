#include "app/describe/summary_text.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "app/describe/model_sentences.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"

namespace svmscore::app {

namespace {

// So many rows of a table are shown; the rest is only counted.
constexpr std::size_t kShownMachines = 10;

using Table = std::vector<std::vector<std::string>>;

std::string Counted(std::size_t count, const std::string& what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void Line(std::string& out, std::string_view label, std::string_view content) {
  out += fmt::format("{:<14}{}\n", label, Printable(content, kAnyLength));
}

std::string Brief(const std::string& text) {
  return Shortened(text, kLongestInsert);
}

std::string Listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + Brief(name);
  return list;
}

// Counts characters, so that columns of a table align for names beyond ASCII.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) >> 6U) != 2; }));
}

void Write(std::string& out, Table table) {
  std::vector<std::size_t> widths(table.front().size());
  for (auto& row : table) {
    for (std::string& cell : row) cell = Printable(cell, kLongestInsert);
  }
  for (const auto& row : table) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], WidthOf(row[i]));
  }
  for (const auto& row : table) {
    std::string line = " ";
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += " " + row[i] + std::string(widths[i] - WidthOf(row[i]) + 1, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out += fmt::format("{}\n", line);
  }
}

void WriteInputs(std::string& out, const tools::ModelSummary& summary) {
  out += "\nInputs\n";
  Table table = {{"name", "type", "needed", "replaces a missing value"}};
  for (const tools::InputSummary& input : summary.inputs) {
    table.push_back({input.name, input.optype + " " + input.type, input.needed ? "yes" : "no",
                     input.replacement.value_or("-")});
  }
  Write(out, table);
}

void WriteMachines(std::string& out, const tools::ModelSummary& summary) {
  out += "\nMachines\n";
  Table table = {{"target category", "alternate", "threshold", "absolute value", "terms"}};
  const std::size_t shown = std::min(summary.machines.size(), kShownMachines);
  for (std::size_t i = 0; i < shown; ++i) {
    const tools::MachineSummary& machine = summary.machines[i];
    table.push_back({machine.target.empty() ? "-" : machine.target,
                     machine.alternate.empty() ? "-" : machine.alternate,
                     FormatNumber(machine.threshold), FormatNumber(machine.offset),
                     std::to_string(machine.terms)});
  }
  Write(out, table);
  if (shown < summary.machines.size()) {
    out += fmt::format("  and {} more\n", summary.machines.size() - shown);
  }
}

bool IsReading(const Finding& finding) {
  return finding.kind->of_class == FindingClass::kStandard ||
         finding.kind->of_class == FindingClass::kGuessed;
}

void WriteFindings(std::string& out, const tools::ModelSummary& summary, bool reading) {
  for (const Finding& finding : FirstOfEachKind(summary.findings)) {
    if (IsReading(finding) != reading) continue;
    out +=
        fmt::format("  {}{}\n", finding.IsError() ? "error: " : "", Printable(SentenceOf(finding)));
  }
}

void WriteReading(std::string& out, const tools::ModelSummary& summary) {
  if (std::none_of(summary.findings.begin(), summary.findings.end(), IsReading)) return;
  out += "\nHow the document is read\n";
  WriteFindings(out, summary, true);
}

void WriteLeftOut(std::string& out, const tools::ModelSummary& summary) {
  out += "\nWhat is lost or wrong\n";
  if (summary.refused) {
    out += fmt::format("  score refuses this model: {}\n", Printable(*summary.refused));
  }
  if (std::all_of(summary.findings.begin(), summary.findings.end(), IsReading)) {
    out += "  nothing\n";
  }
  WriteFindings(out, summary, false);
}

}  // namespace

std::string TextOf(const tools::ModelSummary& summary) {
  std::string out;
  Line(out, "Document", fmt::format("{}, PMML {}", summary.file, Brief(summary.pmml_version)));
  if (!summary.producer.empty()) Line(out, "Producer", Brief(summary.producer));
  if (!summary.model_name.empty()) Line(out, "Model", Brief(summary.model_name));
  Line(out, "Method", MethodSentence(summary));
  Line(out, "Percentages", PercentagesSentence(summary));
  Line(out, "Target",
       fmt::format("{} ({}){}{}", Brief(summary.target), summary.target_type,
                   summary.categories.empty() ? "" : ": ", Listed(summary.categories)));
  Line(out, "Kernel", KernelSentence(summary));
  Line(out, "Counts",
       fmt::format("{}, {}, {}, {}, {}, {}", Counted(summary.inputs.size(), "input"),
                   Counted(summary.derived_fields, "derived field"),
                   Counted(summary.vector_fields, "vector field"),
                   Counted(summary.vectors, "vector"), Counted(summary.machines.size(), "machine"),
                   Counted(summary.terms, "term")));
  if (!summary.output_fields.empty()) {
    Line(out, "Output", Listed(summary.output_fields));
  }
  Line(out, "Missing value", fmt::format("policy {}", summary.missing_policy));
  Line(out, "Decided", VotesSentence(summary));
  WriteInputs(out, summary);
  WriteMachines(out, summary);
  WriteReading(out, summary);
  WriteLeftOut(out, summary);
  if (summary.listing) out += *summary.listing;
  return out;
}

}  // namespace svmscore::app
