// All that a report shows, as data.
#ifndef TOOLS_REPORT_REPORT_DATA_H_
#define TOOLS_REPORT_REPORT_DATA_H_

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "host/findings/finding.h"
#include "host/load/plugin.h"
#include "tools/base/document_source.h"
#include "tools/describe/model_summary.h"
#include "tools/doctor/opened_document.h"
#include "tools/report/confusion.h"
#include "tools/report/explanation.h"
#include "tools/report/histogram.h"
#include "tools/report/scored_cases.h"

namespace svmscore::tools {

// The file of the model, as it is on the disk.
struct ModelFileFacts {
  std::string name;        // the last part of its path
  std::uint64_t size = 0;  // bytes
  std::string sha256;      // of these bytes
};

// What a category or an input may be, beside its summary.
struct InputRange {
  std::string name;
  std::vector<std::string> values;     // declared categories: the first of them
  std::size_t more_values = 0;         // and how many more there are
  std::vector<std::string> intervals;  // declared ones
  // Of the support vectors, where the input is the number of a vector field; NaN where it is not.
  double low = std::numeric_limits<double>::quiet_NaN();
  double high = std::numeric_limits<double>::quiet_NaN();
};

// How the cases lie for one machine.
struct MachineDistribution : MachineSides {
  std::size_t machine = 0;  // position in the document
  // Groups: cases that are of category `above`, of `below`, and others. Without labels all are in
  // the last group.
  Histogram histogram;
};

struct ReportData {
  ModelFileFacts file;
  std::optional<ModelSummary> model;   // nothing where no model can be made of the document
  std::optional<std::string> refused;  // why score refuses it
  std::vector<InputRange> inputs;      // parallel to the first inputs of the model
  std::vector<Finding> findings;       // the most severe first

  std::string cases_name;  // the last part of the path of the table; empty without one
  std::string actual;      // the column of labels; empty without one
  std::optional<ScoredCases> cases;
  std::vector<MachineDistribution> machines;  // the first ones of the model
  std::vector<CategoryCount> categories;
  std::optional<Confusion> confusion;

  std::optional<Explanation> explanation;  // nothing for a model that cannot score
};

// So many of each are shown at most.
inline constexpr std::size_t kInputsShown = 40;
inline constexpr std::size_t kValuesShown = 8;
inline constexpr std::size_t kMachinesShown = 12;
inline constexpr std::size_t kConfusionShown = 12;

struct ReportOrder {
  const OpenedDocument& opened;
  const Plugin& plugin;
  DocumentSource& source;
  ModelFileFacts file;
  const DrawnTable* cases = nullptr;       // null for none
  std::string actual;                      // the column of labels; empty for none
  const DrawnTable* background = nullptr;  // null for none
  const CellRules& rules;
};

// REQUIRES: opened.IsRead(). Throws a BadCases for tables that do not fit the model, and a
// BadDocument for a model that takes no batches, where there are cases. [one thread] for each
// document. Owns: the caller. Lives: the order's references for the call.
ReportData GatherReport(const ReportOrder& order);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_REPORT_DATA_H_
