#include "tools/report/entry_scoring.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/score/case_batch.h"

namespace svmscore::tools {
namespace {

// Cases that are scored at once.
constexpr std::size_t kEntryChunk = 128;

// Some cases in columns, as models take them.
class Columns {
 public:
  Columns(const std::vector<double>& entries, std::size_t width, std::size_t begin)
      : count_(std::min(kEntryChunk, entries.size() / width - begin)),
        columns_(width * kEntryChunk) {
    for (std::size_t e = 0; e < width; ++e) {
      for (std::size_t c = 0; c < count_; ++c) {
        columns_[e * kEntryChunk + c] = entries[(begin + c) * width + e];
      }
    }
  }
  BatchCases Cases() const { return {columns_.data(), kEntryChunk, count_}; }

 private:
  std::size_t count_;
  std::vector<double> columns_;
};

// Adds a scored case, with the number 0, unless a decision value is not finite.
void Take(const output::TargetRules& targets, const BatchResults& results, std::size_t place,
          const double* entries, ScoredCases& cases) {
  const std::size_t first = cases.decisions.size();
  for (std::size_t m = 0; m < cases.machines; ++m) {
    cases.decisions.push_back(results.decisions[m * results.stride + place]);
    if (std::isfinite(cases.decisions.back())) continue;
    cases.decisions.resize(first);
    return;
  }
  cases.numbers.push_back(0);
  cases.entries.insert(cases.entries.end(), entries, entries + cases.entry_count);
  const output::Outcome outcome = targets.Finish(results, place);
  cases.predicted.push_back(outcome.category);
  cases.actual.push_back(-1);
  cases.values.push_back(outcome.prediction.IsPresent() ? outcome.prediction.GetNumber()
                                                        : results.value[place]);
  cases.observed.push_back(std::numeric_limits<double>::quiet_NaN());
}

}  // namespace

std::vector<double> DecisionsOf(BatchModel& model, const std::vector<double>& entries,
                                std::size_t machine) {
  const std::size_t width = model.EntryCount();
  const std::size_t cases = width == 0 ? 0 : entries.size() / width;
  std::vector<double> all(model.DecisionCount() * kEntryChunk);
  std::vector<double> decisions;
  for (std::size_t begin = 0; begin < cases; begin += kEntryChunk) {
    const Columns columns(entries, width, begin);
    BatchResults wanted;  // decision values alone
    wanted.decisions = all.data();
    wanted.stride = kEntryChunk;
    model.ScoreBatch(columns.Cases(), wanted);
    const double* of_machine = all.data() + machine * kEntryChunk;
    decisions.insert(decisions.end(), of_machine, of_machine + columns.Cases().count);
  }
  return decisions;
}

ScoredCases CasesOfEntries(const LoadedModel& loaded, BatchModel& model,
                           const std::vector<double>& entries) {
  const output::TargetRules& targets = loaded.output->Targets();
  const std::size_t categories = targets.Target().GetCategories().size();
  ScoredCases cases;
  cases.classification = targets.GetScheme().method != output::Method::kRegression;
  cases.entry_count = model.EntryCount();
  cases.machines = model.DecisionCount();
  CaseBatch batch(model, categories, kEntryChunk, true);
  const std::size_t width = cases.entry_count;
  const std::size_t count = width == 0 ? 0 : entries.size() / width;
  for (std::size_t begin = 0; begin < count; begin += kEntryChunk) {
    const std::size_t some = std::min(kEntryChunk, count - begin);
    batch.Reset(some);
    for (std::size_t e = 0; e < width; ++e) {
      for (std::size_t c = 0; c < some; ++c) {
        batch.EntriesOf(e)[c] = entries[(begin + c) * width + e];
      }
    }
    batch.Score();
    for (std::size_t c = 0; c < some; ++c) {
      Take(targets, batch.Results(), c, entries.data() + (begin + c) * width, cases);
      if (!cases.numbers.empty() && cases.numbers.back() == 0) cases.numbers.back() = begin + c + 1;
    }
  }
  cases.drawn = cases.Size();
  cases.rows = cases.Size();
  return cases;
}

}  // namespace svmscore::tools
