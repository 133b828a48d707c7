#include "app/serve/table_scoring.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/files/input_file.h"
#include "app/pipeline/case_cells.h"
#include "app/pipeline/row_format.h"
#include "app/score/case_scorer.h"
#include "app/table/broken_row.h"
#include "app/table/csv_row.h"
#include "app/table/row_blocks.h"
#include "app/table/table_options.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/serve/case_requests.h"
#include "tools/serve/content.h"
#include "tools/serve/route.h"

namespace svmscore::app {
namespace {

using serve::BadRequest;
using serve::ServedModel;

constexpr const char* kTableName = "the table";

bool IsSet(const std::string& query, const char* name) {
  const std::string value = serve::QueryValue(query, name);
  if (value.empty() || value == "false") return false;
  if (value == "true") return true;
  throw BadRequest(400, fmt::format("{} is neither true nor false", name));
}

// Who gives the delimiter by this name, as clients of Openscoring do, reads the answer by it, too.
constexpr const char* kDelimiterOfBoth = "delimiterChar";

TableOptions OptionsIn(const std::string& query) {
  TableOptions options;
  std::string delimiter = serve::QueryValue(query, "delimiter");
  if (delimiter.empty()) delimiter = serve::QueryValue(query, kDelimiterOfBoth);
  const std::string quote = serve::QueryValue(query, "quoteChar");
  if (!quote.empty() && quote != "\"") {
    throw BadRequest(400, "quoteChar: cells are quoted by \" alone");
  }
  if (!delimiter.empty()) {
    const std::string why = ReadDelimiter(delimiter, options.delimiter);
    if (!why.empty()) throw BadRequest(400, "delimiter: " + why);
  }
  options.decimal_comma = IsSet(query, "decimalComma");
  const std::string token = serve::QueryValue(query, "missingToken");
  if (!token.empty()) options.missing_tokens = {token};
  return options;
}

// The remedies in messages name options of the program; here they are parameters of the query.
std::string WithParameters(std::string what) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kNames = {{
      {"--delimiter", "the parameter delimiter"},
      {"--decimal-comma", "the parameter decimalComma"},
      {"--missing-token", "the parameter missingToken"},
  }};
  for (const auto& [option, parameter] : kNames) {
    std::size_t place = 0;
    while ((place = what.find(option, place)) != std::string::npos) {
      what.replace(place, option.size(), parameter);
      place += parameter.size();
    }
  }
  return what;
}

// The bytes as a file, which is what tables are read from.
int FileOf(const std::string& bytes) {
  const int descriptor = memfd_create("table", MFD_CLOEXEC);
  if (descriptor < 0) throw std::bad_alloc();
  std::string_view left = bytes;
  while (!left.empty()) {
    const ssize_t written = write(descriptor, left.data(), left.size());
    if (written <= 0) {
      close(descriptor);
      throw std::bad_alloc();
    }
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

// The first column, where it only names the rows.
std::vector<std::string> RowNames(const std::vector<std::string_view>& header,
                                  const ServedModel& model) {
  const std::string_view first = header.empty() ? std::string_view() : header.front();
  const bool names = first.size() == 2 && (first[0] | 0x20) == 'i' && (first[1] | 0x20) == 'd' &&
                     model.FindInput(first) == ServedModel::kNoInput &&
                     std::count(header.begin(), header.end(), first) == 1;
  return names ? std::vector<std::string>{std::string(first)} : std::vector<std::string>();
}

ScoringPlan PlanOf(const ServedModel& model, const TableOptions& options, const serve::Route& route,
                   const Limits& limits, RowBlocks& input) {
  const bool reasons = IsSet(route.query, "reasons");
  const LoadedModel& loaded = model.Loaded();
  ScoringPlan plan;
  plan.model = loaded.model.get();
  plan.rows = options.Rows(limits);
  RowBlock header;
  const std::vector<std::string_view> given = ReadColumnNames(input, plan.rows, kTableName, header);
  std::vector<std::string> names =
      route.openscoring ? RowNames(given, model) : std::vector<std::string>();
  plan.columns = tools::MatchColumns(given, loaded, names, kTableName);
  plan.cells = options.Cells();
  plan.replace_missing = model.Plan().replaces_missing;
  plan.output = loaded.output.get();
  plan.computes_output = model.Plan().computes_output;
  plan.results = tools::MakeColumns(*loaded.model, *loaded.output, tools::ColumnChoice::kDocument,
                                    false, reasons);
  {
    const std::lock_guard lock(model.DocumentMutex());
    plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  }
  plan.writes_reasons = reasons;
  for (const auto& column : plan.results) names.push_back(column->Name());
  const bool both = !serve::QueryValue(route.query, kDelimiterOfBoth).empty();
  plan.format = CsvFormat(std::move(names), both ? options.delimiter : ',');
  return plan;
}

class TableRun {
 public:
  TableRun(const ScoringPlan& plan, const TableBounds& bounds) : bounds_(bounds), scorer_(plan) {
    plan.format->Header(out_);
  }

  void Take(CaseBlock& block) {
    scorer_.Work(block);
    Keep(block);
    while (!block.done) {
      scorer_.Resume(block);
      Keep(block);
    }
    if (block.error) throw BrokenRow(kTableName, *block.error);
  }

  std::string& Text() { return out_; }
  const Tally& Total() const { return total_; }

 private:
  void Keep(const CaseBlock& block) {
    out_ += block.out;
    total_.Add(block.tally);
    serve::CheckAnswer(out_.size(), {bounds_.rows, bounds_.answer});
    if (total_.cases > bounds_.rows) {
      throw BadRequest(413, fmt::format("the table has more than {} rows", bounds_.rows));
    }
  }

  const TableBounds& bounds_;
  CaseScorer scorer_;
  std::string out_;
  Tally total_;
};

}  // namespace

std::string ScoreTable(const ServedModel& model, const std::string& table,
                       const serve::Route& route, const TableBounds& bounds,
                       serve::RowCounts& counts) {
  const TableOptions options = OptionsIn(route.query);
  try {
    // Also of rows and lines that are passed over: a few bytes may hold billions of blank lines.
    const std::optional<std::string> unpacked = serve::Unpacked(table, bounds.bytes);
    InputFile file(FileOf(unpacked ? *unpacked : table), kTableName);
    RowBlocks input(file, options.Rows(bounds.limits));
    const ScoringPlan plan = PlanOf(model, options, route, bounds.limits, input);
    TableRun run(plan, bounds);
    CaseBlock block;
    while (input.Next(block.rows)) run.Take(block);
    counts = {run.Total().done, run.Total().invalid, run.Total().missing};
    return std::move(run.Text());
  } catch (const CsvError& error) {
    throw BadRequest(400, WithParameters(BrokenRow(kTableName, error).what()));
  } catch (const Failure& failure) {
    throw BadRequest(400, WithParameters(failure.what()));
  } catch (const tools::BadCases& error) {
    throw BadRequest(400, WithParameters(error.what()));
  }
}

}  // namespace svmscore::app
