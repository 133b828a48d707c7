// Explains cases of a model, a batch at a time.
//
// How to: ExplainableOf(loaded) asks the model; FindPlayers says who shares a decision value;
// VectorBackground or a BackgroundReader makes the background; a ModelExplainer then holds what all
// threads share, and each thread explains batches of cases with a CaseExplainer of its own.
#ifndef TOOLS_EXPLAIN_CASE_EXPLAINER_H_
#define TOOLS_EXPLAIN_CASE_EXPLAINER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "host/model/batch_model.h"
#include "host/model/explainable_model.h"
#include "host/model/score_case_record.h"
#include "tools/explain/background.h"
#include "tools/explain/players.h"

namespace svmscore::tools {

// A model as one that can be explained. Lives: as long as the model.
struct Explainable {
  BatchModel& batch;
  const ExplainableModel& model;
  Players players;
};
// [any thread] Owns: the caller. Fails: BadDocument where the plug-in's model explains nothing;
// std::bad_alloc.
Explainable ExplainableOf(const LoadedModel& loaded);

// A model with a background. Immutable. [any thread] Lives: the model longer than this object.
// Fails: the getters never.
class ModelExplainer {
 public:
  // `orders` and `seed` are those of ExplainerSetUp; the background need not outlive the call.
  // Fails: BadCases where the background is empty, or its mean decision value is not finite;
  // BadDocument for a model that cannot score; std::bad_alloc.
  ModelExplainer(const LoadedModel& loaded, Explainable explainable, const Background& background,
                 std::uint64_t seed, std::size_t orders);

  BatchModel& Batch() const { return explainable_.batch; }
  const Explainer& Values() const { return *explainer_; }
  const std::vector<Player>& PlayerList() const { return explainable_.players.list; }
  // How many values a decision value has: one for each player, and one more, which is 0, where
  // entries depend on no input.
  std::size_t ValueCount() const { return value_count_; }
  // Of each decision value the categories that it decides between, A|B; empty for a regression.
  const std::vector<std::string>& Decisions() const { return decisions_; }
  // Of each entry of a case: the vector field.
  const std::vector<std::string>& Fields() const { return fields_; }

 private:
  Explainable explainable_;
  std::size_t value_count_;
  std::vector<std::string> decisions_;
  std::vector<std::string> fields_;
  std::unique_ptr<Explainer> explainer_;
};

// So many cases are explained at once: few, because each may take long and has many values.
// `gradients`: as for CaseExplainer. [any thread] Fails: never.
std::size_t CasesExplainedAtOnce(const ModelExplainer& model, bool gradients);

// Holds cases up to a fixed number, and explains them. [one thread] for each object. Lives: the
// ModelExplainer longer than this object. Fails: std::bad_alloc; getters never.
class CaseExplainer {
 public:
  CaseExplainer(const ModelExplainer& model, std::size_t capacity, bool gradients);

  void Clear() { count_ = 0; }
  std::size_t Size() const { return count_; }
  // Takes the case as the next one unless the status, which is the case's own, is an error.
  // REQUIRES: fewer cases than the capacity are held; as for BatchModel::ReadCase.
  long Add(const MCZandor_850::InputCaseRecord& record);
  // Where the caller writes entry `entry` of case c: EntriesOf(entry)[c]; Reset says how many cases
  // there are then. REQUIRES: `count` is at most the capacity.
  double* EntriesOf(std::size_t entry) { return entries_.data() + entry * capacity_; }
  void Reset(std::size_t count) { count_ = count; }
  void Explain();

  // Of a case by its position, after Explain and until the next change.

  // Whether its entries and decision values are finite.
  bool IsDecided(std::size_t position) const;
  // Whether it has an explanation: all that is wanted of it is finite. A case that is decided may
  // have none where the model is not defined between it and the background.
  bool IsExplained(std::size_t position) const;
  // [decisions] The decision values, also of a case that has none.
  const double* Decisions(std::size_t position) const {
    return decisions_.data() + position * DecisionCount();
  }
  // Of a decision value. [players] in units of the decision value: its Shapley values, and their
  // standard errors, which are 0 for exact ones. [fields] its derivatives, null unless asked for.
  const double* Values(std::size_t position, std::size_t decision) const {
    return values_.data() + (position * DecisionCount() + decision) * model_.ValueCount();
  }
  const double* Errors(std::size_t position, std::size_t decision) const {
    return errors_.data() + (position * DecisionCount() + decision) * model_.ValueCount();
  }
  const double* Gradients(std::size_t position, std::size_t decision) const;
  // How far the values are from adding up to the decision value less its mean over the background:
  // the largest distance of any decision value, as a share of the sum of its coefficients;
  // infinity where that is no number.
  double Imbalance(std::size_t position) const;

 private:
  std::size_t DecisionCount() const { return model_.Decisions().size(); }

  const ModelExplainer& model_;
  std::size_t capacity_;
  std::size_t count_ = 0;
  std::vector<double> entries_;
  std::vector<double> decisions_;
  std::vector<double> values_;
  std::vector<double> errors_;
  std::vector<double> gradients_;  // empty unless asked for
};

}  // namespace svmscore::tools

#endif  // TOOLS_EXPLAIN_CASE_EXPLAINER_H_
