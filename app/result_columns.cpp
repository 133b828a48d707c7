#include "app/result_columns.h"

#include <utility>

#include "host/score_dict_var.h"

namespace svmscore::app {
namespace {

using MCZandor_850::ScoreClsResult;
using MCZandor_850::ScoreIntervalResult;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreRegResult;
using MCZandor_850::ScoreResult;
using MCZandor_850::ScoreValue;

// What results hold in place of a confidence, percentage or deviation that was not computed.
constexpr double kNotComputed = -1.0;

void WriteComputed(double number, CellWriter& cell) {
  if (number == kNotComputed) {
    cell.Empty();
  } else {
    cell.Number(number);
  }
}

class CopiedCell : public ResultColumn {
 public:
  CopiedCell(std::string name, std::size_t position)
      : ResultColumn(std::move(name)), position_(position) {}
  void Write(const ScoredCase& scored, CellWriter& cell) const override {
    const std::string_view text = scored.cells[position_];
    if (text.empty()) {
      cell.Empty();
    } else {
      cell.Text(text);
    }
  }

 private:
  std::size_t position_;
};

class Status : public ResultColumn {
 public:
  Status() : ResultColumn("status") {}
  void Write(const ScoredCase& scored, CellWriter& cell) const override {
    cell.Whole(scored.status);
  }
};

// A column whose cell is empty for a case that failed.
class FromResult : public ResultColumn {
 public:
  using ResultColumn::ResultColumn;
  void Write(const ScoredCase& scored, CellWriter& cell) const final {
    if (scored.result == nullptr) {
      cell.Empty();
    } else {
      WriteResult(*scored.result, cell);
    }
  }

 private:
  virtual void WriteResult(const ScoreResult& result, CellWriter& cell) const = 0;
};

class PredictedCategory : public FromResult {
 public:
  PredictedCategory() : FromResult("prediction") {}

 private:
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    const ScoreValue* prediction = result.GetPrediction();
    if (prediction == nullptr || prediction->IsMissing()) {
      cell.Empty();
    } else {
      cell.Text(prediction->GetText());
    }
  }
};

class PredictedNumber : public FromResult {
 public:
  PredictedNumber() : FromResult("prediction") {}

 private:
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    const ScoreValue* prediction = result.GetPrediction();
    if (prediction == nullptr || prediction->IsMissing()) {
      cell.Empty();
    } else {
      cell.Number(prediction->GetDouble());
    }
  }
};

class Confidence : public FromResult {
 public:
  Confidence() : FromResult("confidence") {}

 private:
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    WriteComputed(result.GetConfidence(), cell);
  }
};

class Probability : public FromResult {
 public:
  Probability(const ScoreValue& category, std::size_t index)
      : FromResult("probability(" + category.GetText() + ")"), index_(index) {}

 private:
  // Results hold either no percentages or one for each category, in the order of the categories.
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    const auto& percents = static_cast<const ScoreClsResult&>(result).GetAllValuePercent();
    WriteComputed(index_ < percents.size() ? percents[index_].second : kNotComputed, cell);
  }

  std::size_t index_;
};

class StandardDeviation : public FromResult {
 public:
  StandardDeviation() : FromResult("stddev") {}

 private:
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    WriteComputed(static_cast<const ScoreRegResult&>(result).GetStdDev(), cell);
  }
};

class IntervalBound : public FromResult {
 public:
  enum Side { kLower, kUpper };
  explicit IntervalBound(Side side)
      : FromResult(side == kLower ? "ci_lower" : "ci_upper"), side_(side) {}

 private:
  void WriteResult(const ScoreResult& result, CellWriter& cell) const override {
    const auto* interval = dynamic_cast<const ScoreIntervalResult*>(&result);
    double lower = 0.0;
    double upper = 0.0;
    if (interval != nullptr && interval->GetInterval(lower, upper)) {
      cell.Number(side_ == kLower ? lower : upper);
    } else {
      cell.Empty();
    }
  }

  Side side_;
};

template <typename Column, typename... Arguments>
void Add(ResultColumns& columns, Arguments&&... arguments) {
  columns.push_back(std::make_unique<Column>(std::forward<Arguments>(arguments)...));
}

}  // namespace

ResultColumns MakeColumns(const ScoreModel& model, const Scheme& scheme, ColumnChoice choice,
                          const CaseColumns& columns,
                          const std::vector<std::string>& copied_names) {
  const bool all = choice == ColumnChoice::kAll;
  const bool more = !model.GetPredictionOnly();
  ResultColumns made;
  for (std::size_t i = 0; i < columns.copied.size(); ++i) {
    Add<CopiedCell>(made, copied_names[i], columns.copied[i]);
  }
  if (scheme.method == Method::kRegression) {
    Add<PredictedNumber>(made);
    if (all || (more && scheme.interval)) {
      Add<StandardDeviation>(made);
      Add<IntervalBound>(made, IntervalBound::kLower);
      Add<IntervalBound>(made, IntervalBound::kUpper);
    }
  } else {
    Add<PredictedCategory>(made);
    if (all || (more && scheme.percentages != Percentages::kNone)) {
      Add<Confidence>(made);
      std::size_t index = 0;
      for (const ScoreValue* category : model.GetTargetVar()->GetCategories()) {
        Add<Probability>(made, *category, index++);
      }
    }
  }
  Add<Status>(made);
  return made;
}

}  // namespace svmscore::app
