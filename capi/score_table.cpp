// A table on its way through a scorer's threads.
#include <algorithm>
#include <limits>

#include "capi/call_error.h"
#include "capi/scorer.h"
#include "capi/thread_work.h"
#include "tools/base/case_columns.h"

namespace svmscore::capi {
namespace {

using MCZandor_850::ScoreDictVar;

// Copies numbers of a column. Returns whether each is one that a variable takes as it is: finite,
// and not the one that stands for a missing number.
template <typename T>
bool CopyNumbersAs(const ColumnView& column, std::size_t first, std::size_t count, double* to) {
  constexpr double kMost = std::numeric_limits<double>::max();
  const std::uint8_t* from = column.data + (column.offset + first) * column.stride;
  const auto copy = [&](std::size_t stride) {
    int plain = 1;
    for (std::size_t i = 0; i < count; ++i) {
      T value;
      std::memcpy(&value, from + i * stride, sizeof value);
      const auto number = static_cast<double>(value);
      to[i] = number;
      plain &= static_cast<int>(number > -kMost) & static_cast<int>(number <= kMost);
    }
    return plain != 0;
  };
  return column.stride == sizeof(T) ? copy(sizeof(T)) : copy(column.stride);
}

bool CopyNumbers(const ColumnView& column, std::size_t first, std::size_t count, double* to) {
  if (column.type == CellType::kF64) return CopyNumbersAs<double>(column, first, count, to);
  if (column.type == CellType::kF32) return CopyNumbersAs<float>(column, first, count, to);
  if (column.type == CellType::kI64) return CopyNumbersAs<std::int64_t>(column, first, count, to);
  if (column.type == CellType::kI32) return CopyNumbersAs<std::int32_t>(column, first, count, to);
  bool plain = true;
  for (std::size_t i = 0; i < count; ++i) {
    to[i] = column.NumberAt(first + i);
    plain = plain && to[i] > -std::numeric_limits<double>::max() &&
            to[i] <= std::numeric_limits<double>::max();
  }
  return plain;
}

}  // namespace

// Which column is which variable's.
struct Scorer::TableInput {
  TableInput(const ScoringPlan& plan, const std::vector<ColumnView>& views,
             const MissingTexts& missing) {
    std::vector<std::string_view> names;
    for (const ColumnView& view : views) names.push_back(view.name);
    columns = tools::MatchColumns(names, plan.model->loaded, {}, "");
    for (std::size_t i = 0; i < columns.variables.size(); ++i) {
      cells.emplace_back(views[columns.cells[i]], *columns.variables[i], missing);
      const ColumnView* numbers = cells.back().PlainNumbers();
      plain = plain && numbers != nullptr && columns.variables[i]->TakesEveryNumber();
      plain_columns.push_back(numbers);
    }
    plain = plain && !plan.reads_inputs && !plan.model->plain_entries.empty();
    if (!plan.reads_inputs) return;
    const auto& variables = plan.Output().ExtraInputs();
    for (std::size_t i = 0; i < columns.extras.size(); ++i) {
      extras.emplace_back();
      if (columns.extras[i] == tools::kNoCell) continue;
      extras.back().emplace(views[columns.extras[i]], *variables[i], missing);
    }
  }

  // Refuses columns whose memory is not what they say.
  void Check(const std::vector<ColumnView>& views) const {
    for (const std::size_t cell : columns.cells) views[cell].Check();
    for (std::size_t i = 0; i < extras.size(); ++i) {
      if (extras[i]) views[columns.extras[i]].Check();
    }
  }

  tools::CaseColumns columns;
  std::vector<InputCell> cells;                  // of columns.variables
  std::vector<std::optional<InputCell>> extras;  // where output fields are computed from them
  std::vector<const ColumnView*> plain_columns;  // of columns.variables
  bool plain = true;  // all columns are numbers that the model's entries are
};

// The work of one thread at a time: block after block.
class Scorer::TableRun {
 public:
  TableRun(const Scorer& scorer, const TableInput& input, ResultTable& table, RowScorer& rows)
      : plan_(scorer.plan_), input_(input), rows_(rows), sink_(table) {}

  void Score(std::size_t first, std::size_t end) {
    while (first < end) {
      const std::size_t most = std::min(end - first, rows_.Capacity());
      rows_.Clear();
      if (!input_.plain || !FillPlain(first, most)) FillRecords(first, most);
      rows_.Score();
      Write(first);
      first += rows_.RowCount();
    }
  }

 private:
  bool FillPlain(std::size_t first, std::size_t count) {
    const std::vector<std::size_t>& entries = plan_.model->plain_entries;
    for (std::size_t e = 0; e < entries.size(); ++e) {
      const ColumnView& column = *input_.plain_columns[entries[e]];
      if (!CopyNumbers(column, first, count, rows_.PlainEntries(e))) return false;
    }
    // Inputs that the model does not read must be valid all the same.
    unread_.resize(count);
    for (std::size_t i = plan_.model->loaded.needed.size(); i < input_.plain_columns.size(); ++i) {
      if (!CopyNumbers(*input_.plain_columns[i], first, count, unread_.data())) return false;
    }
    rows_.TakePlainRows(count);
    return true;
  }

  void FillRecords(std::size_t first, std::size_t count) {
    for (std::size_t row = first; row < first + count && !rows_.IsFull(); ++row) {
      for (std::size_t i = 0; i < input_.cells.size(); ++i) {
        input_.cells[i].Set(rows_.Record(), i, row);
      }
      rows_.Add();
    }
  }

  void Write(std::size_t first) {
    for (std::size_t r = 0; r < rows_.RowCount(); ++r) {
      for (std::size_t i = 0; i < input_.extras.size(); ++i) {
        if (input_.extras[i]) {
          input_.extras[i]->Set(rows_.Extras(), i, first + r);
        } else {
          rows_.Extras().SetMissing(i);  // an earlier table may have had the column
        }
      }
      rows_.Write(
          r, [&](std::size_t column) -> ResultTable::Sink& { return sink_.At(first + r, column); },
          [&](MCZandor_850::InputCaseRecord& record, std::vector<GivenText>& given) {
            for (std::size_t i = 0; i < given.size(); ++i) {
              const InputCell& cell = input_.cells[i];
              cell.Set(record, i, first + r);
              given[i] = {cell.TextAt(first + r), cell.IsMissing(first + r)};
            }
          });
    }
  }

  const ScoringPlan& plan_;
  const TableInput& input_;
  RowScorer& rows_;
  ResultTable::Sink sink_;
  std::vector<double> unread_;
};

void Scorer::CheckTable(const std::vector<ColumnView>& columns) const {
  const TableInput input(plan_, columns, settings_.missing);
}

const ResultTable& Scorer::ScoreTable(const std::vector<ColumnView>& columns, std::size_t rows) {
  const TableInput input(plan_, columns, settings_.missing);
  input.Check(columns);
  const std::size_t blocks = (rows + ResultTable::kBlockRows - 1) / ResultTable::kBlockRows;
  const std::size_t threads = std::max<std::size_t>(std::min(settings_.threads, blocks), 1);
  if (row_variables_ != input.columns.variables) {
    rows_.clear();
    row_variables_ = input.columns.variables;
  }
  while (rows_.size() < threads) {
    rows_.push_back(std::make_unique<RowScorer>(
        plan_, row_variables_, tools::CasesAtOnce(plan_.model->batch, row_variables_.size()),
        plan_.ExaminerOf(row_variables_)));
  }
  table_->Start(rows);

  ShareWork(blocks, threads, [&](std::size_t thread) {
    return
        [run = TableRun(*this, input, *table_, *rows_[thread]), rows](std::size_t block) mutable {
          const std::size_t first = block * ResultTable::kBlockRows;
          run.Score(first, std::min(first + ResultTable::kBlockRows, rows));
        };
  });
  table_->Finish();
  return *table_;
}

}  // namespace svmscore::capi
