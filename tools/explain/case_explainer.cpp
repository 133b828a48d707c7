#include "tools/explain/case_explainer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include <fmt/format.h>

#include "host/output/decision_name.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kMostCases = 64;
constexpr std::size_t kMostNumbers = std::size_t{1} << 18;

// Keeps the cases of entries from starting at addresses that fall into one set of the cache.
constexpr std::size_t kPadding = 8;

bool AllFinite(const double* numbers, std::size_t count) {
  return std::all_of(numbers, numbers + count, [](double number) { return std::isfinite(number); });
}

}  // namespace

Explainable ExplainableOf(const LoadedModel& loaded) {
  auto* batch = dynamic_cast<BatchModel*>(loaded.model.get());
  const auto* model = dynamic_cast<const ExplainableModel*>(loaded.model.get());
  if (batch == nullptr || model == nullptr) {
    throw BadDocument(fmt::format("{}: the plug-in does not explain its model's decision values",
                                  loaded.document.Name()));
  }
  std::vector<const MCZandor_850::ScoreDictVar*> variables;
  for (std::size_t e = 0; e < batch->EntryCount(); ++e) {
    variables.push_back(model->EntryVariable(e));
  }
  return {*batch, *model, FindPlayers(loaded, variables)};
}

ModelExplainer::ModelExplainer(const LoadedModel& loaded, Explainable explainable,
                               const Background& background, std::uint64_t seed, std::size_t orders)
    : explainable_(std::move(explainable)) {
  const Players& players = explainable_.players;
  if (background.count == 0) {
    throw BadCases(
        "no support vector of the model has a finite decision value; name cases as the background");
  }
  ExplainerSetUp setup;
  for (const Player& player : players.list) setup.players.push_back(player.entries);
  if (!players.others.empty()) setup.players.push_back(players.others);
  value_count_ = setup.players.size();
  setup.background = background.Cases();
  setup.seed = seed;
  setup.orders = orders;
  explainer_ = explainable_.model.MakeExplainer(setup);
  if (explainer_ == nullptr) {
    throw BadDocument(
        fmt::format("{}: the model cannot score, and so explains nothing", loaded.document.Name()));
  }
  for (std::size_t m = 0; m < Batch().DecisionCount(); ++m) {
    decisions_.push_back(
        output::DecidedBetween(loaded.output->Targets(), Batch().DecisionCategories(m)));
    if (std::isfinite(explainer_->Base(m))) continue;
    throw BadCases(
        "the mean decision value of the background is not a finite number; use another background");
  }
  for (std::size_t e = 0; e < Batch().EntryCount(); ++e) {
    fields_.push_back(explainable_.model.EntryName(e));
  }
}

std::size_t CasesExplainedAtOnce(const ModelExplainer& model, bool gradients) {
  const std::size_t numbers =
      2 * model.ValueCount() + 1 + (gradients ? model.Fields().size() : std::size_t{0});
  const std::size_t of_case = numbers * model.Decisions().size() + model.Fields().size();
  return std::clamp<std::size_t>(kMostNumbers / std::max<std::size_t>(of_case, 1), 1, kMostCases);
}

CaseExplainer::CaseExplainer(const ModelExplainer& model, std::size_t capacity, bool gradients)
    : model_(model),
      capacity_(capacity + kPadding),
      entries_(std::max<std::size_t>(model.Fields().size(), 1) * capacity_),
      decisions_(capacity * DecisionCount()),
      values_(decisions_.size() * model.ValueCount()),
      errors_(values_.size()),
      gradients_(gradients ? decisions_.size() * model.Fields().size() : 0) {}

long CaseExplainer::Add(const MCZandor_850::InputCaseRecord& record) {
  const MCScore::MCStatus status =
      model_.Batch().ReadCase(record, false, entries_.data() + count_, capacity_);
  if (!status.IsError()) ++count_;
  return status.GetErrorCode();
}

void CaseExplainer::Explain() {
  if (count_ == 0) return;
  Explanations wanted;
  wanted.decisions = decisions_.data();
  wanted.values = values_.data();
  if (model_.Values().IsSampled()) wanted.errors = errors_.data();
  if (!gradients_.empty()) wanted.gradients = gradients_.data();
  model_.Values().Explain({entries_.data(), capacity_, count_}, wanted);
}

bool CaseExplainer::IsDecided(std::size_t position) const {
  return AllFinite(Decisions(position), DecisionCount());
}

bool CaseExplainer::IsExplained(std::size_t position) const {
  const std::size_t values = DecisionCount() * model_.ValueCount();
  const std::size_t gradients = DecisionCount() * model_.Fields().size();
  return IsDecided(position) && AllFinite(Values(position, 0), values) &&
         (!model_.Values().IsSampled() || AllFinite(Errors(position, 0), values)) &&
         (gradients_.empty() || AllFinite(Gradients(position, 0), gradients));
}

const double* CaseExplainer::Gradients(std::size_t position, std::size_t decision) const {
  if (gradients_.empty()) return nullptr;
  return gradients_.data() + (position * DecisionCount() + decision) * model_.Fields().size();
}

double CaseExplainer::Imbalance(std::size_t position) const {
  double worst = 0.0;
  for (std::size_t m = 0; m < DecisionCount(); ++m) {
    const double* values = Values(position, m);
    const double sum = std::accumulate(values, values + model_.ValueCount(), 0.0);
    const double off = std::abs(Decisions(position)[m] - model_.Values().Base(m) - sum);
    const double share = off == 0.0 ? 0.0 : off / model_.Values().Scale(m);
    if (std::isnan(share)) return std::numeric_limits<double>::infinity();
    worst = std::max(worst, share);
  }
  return worst;
}

}  // namespace svmscore::tools
