#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "svm/kernel/explain/game.h"
#include "svm/kernel/explain/gradients.h"
#include "svm/kernel/explain/machine_sums.h"
#include "svm/kernel/explain/values.h"
#include "svm/model/model.h"

namespace MCZandor_850 {
namespace {

using MCSVM_700::PackedEngine;
using MCSVM_700::PackedScratch;
using MCSVM_700::explain::Game;
using MCSVM_700::explain::MachineSums;
using MCSVM_700::explain::SparseVector;
using MCSVM_700::explain::Values;
using svmscore::BatchCases;
using svmscore::Explanations;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
// Cases that are explained together, fewer where their results take more numbers than that.
constexpr std::size_t kTogether = 64;
constexpr std::size_t kNumbersTogether = std::size_t{1} << 20;

// Refers to the model's engine.
class SVMExplainer : public svmscore::Explainer {
 public:
  SVMExplainer(const PackedEngine& engine, const svmscore::ExplainerSetUp& setup)
      : engine_(engine),
        sums_(engine),
        game_(setup.players, {setup.background.entries, setup.background.stride},
              setup.background.count, sums_),
        values_(
            MCSVM_700::explain::MakeValues({engine_, sums_, game_}, {setup.seed, setup.orders})) {
    const std::size_t rows = setup.background.count;
    std::vector<double> decisions(engine.machines() * rows);
    PackedScratch scratch;
    engine.DecideMany({setup.background.entries, setup.background.stride}, rows, scratch,
                      {decisions.data(), rows});
    for (std::size_t m = 0; m < engine.machines(); ++m) {
      long double sum = 0.0L;
      for (std::size_t b = 0; b < rows; ++b) sum += decisions[m * rows + b];
      base_.push_back(static_cast<double>(sum / static_cast<long double>(rows)));
    }
  }

  bool IsSampled() const override { return values_->IsSampled(); }
  double Base(std::size_t decision) const override { return base_[decision]; }
  double Scale(std::size_t decision) const override { return sums_.machines()[decision].scale; }

  void Explain(const BatchCases& cases, const Explanations& out) const override {
    const std::size_t machines = base_.size();
    const std::size_t width = machines * std::max(game_.players(), sums_.entries()) + 1;
    const std::size_t together = std::clamp(kNumbersTogether / width, std::size_t{1}, kTogether);
    for (std::size_t first = 0; first < cases.count; first += together) {
      const std::size_t count = std::min(together, cases.count - first);
      const auto from = [&](double* column, std::size_t size) {
        return column == nullptr ? nullptr : column + first * machines * size;
      };
      ExplainSome({cases.entries + first, cases.stride, count},
                  {from(out.decisions, 1), from(out.values, game_.players()),
                   from(out.errors, game_.players()), from(out.gradients, sums_.entries())});
    }
  }

 private:
  void ExplainSome(const BatchCases& cases, const Explanations& out) const;
  // Copies the results of the finite cases, [finite][machines][width], to those of all cases, and
  // fills the others, and what has no finite decision value or base, with NaN.
  void Spread(const std::vector<std::size_t>& finite, const std::vector<double>& decisions,
              const std::vector<double>& from, std::size_t width, std::size_t count,
              double* to) const;

  const PackedEngine& engine_;
  const MachineSums sums_;
  const Game game_;
  const std::unique_ptr<const Values> values_;
  std::vector<double> base_;
};

void SVMExplainer::Spread(const std::vector<std::size_t>& finite,
                          const std::vector<double>& decisions, const std::vector<double>& from,
                          std::size_t width, std::size_t count, double* to) const {
  const std::size_t machines = base_.size();
  std::fill_n(to, count * machines * width, kNotANumber);
  for (std::size_t i = 0; i < finite.size(); ++i) {
    for (std::size_t m = 0; m < machines; ++m) {
      if (!std::isfinite(decisions[m * finite.size() + i] - base_[m])) continue;
      std::copy_n(from.data() + (i * machines + m) * width, width,
                  to + (finite[i] * machines + m) * width);
    }
  }
}

void SVMExplainer::ExplainSome(const BatchCases& cases, const Explanations& out) const {
  const std::size_t entries = sums_.entries();
  const std::size_t machines = base_.size();
  std::vector<double> rows;  // of the finite cases
  std::vector<std::size_t> finite;
  for (std::size_t c = 0; c < cases.count; ++c) {
    bool is_finite = true;
    for (std::size_t e = 0; e < entries; ++e) {
      const double entry = cases.entries[e * cases.stride + c];
      is_finite = is_finite && std::isfinite(entry);
      rows.push_back(entry);
    }
    if (is_finite) {
      finite.push_back(c);
    } else {
      rows.resize(rows.size() - entries);
    }
  }
  std::vector<double> columns(rows.size());
  for (std::size_t i = 0; i < finite.size(); ++i) {
    for (std::size_t e = 0; e < entries; ++e) {
      columns[e * finite.size() + i] = rows[i * entries + e];
    }
  }
  std::vector<double> decisions(machines * finite.size());
  if (!finite.empty()) {
    PackedScratch scratch;
    engine_.DecideMany({columns.data(), finite.size()}, finite.size(), scratch,
                       {decisions.data(), finite.size()});
  }
  if (out.decisions != nullptr) {
    std::fill_n(out.decisions, cases.count * machines, kNotANumber);
    for (std::size_t i = 0; i < finite.size(); ++i) {
      for (std::size_t m = 0; m < machines; ++m) {
        out.decisions[finite[i] * machines + m] = decisions[m * finite.size() + i];
      }
    }
  }
  if (out.values != nullptr || out.errors != nullptr) {
    const std::size_t players = game_.players();
    std::vector<double> values(finite.size() * machines * players);
    std::vector<double> errors(out.errors == nullptr ? 0 : values.size());
    const bool needed = out.values != nullptr || IsSampled();
    if (needed) {
      values_->Compute({rows.data(), finite.size()}, values.data(),
                       errors.empty() ? nullptr : errors.data());
    }
    if (out.values != nullptr) {
      Spread(finite, decisions, values, players, cases.count, out.values);
    }
    if (out.errors != nullptr) {
      Spread(finite, decisions, errors, players, cases.count, out.errors);
    }
  }
  if (out.gradients != nullptr) {
    std::vector<double> gradients(finite.size() * machines * entries);
    for (std::size_t i = 0; i < finite.size(); ++i) {
      MCSVM_700::explain::Gradients(sums_, rows.data() + i * entries,
                                    gradients.data() + i * machines * entries);
    }
    Spread(finite, decisions, gradients, entries, cases.count, out.gradients);
  }
}

}  // namespace

const ScoreDictVar* SVMModel::EntryVariable(std::size_t entry) const {
  if (vector_field_vars_.size() < EntryCount() || entry >= EntryCount()) return nullptr;
  return vector_field_vars_[entry];
}

std::string SVMModel::EntryName(std::size_t entry) const {
  if (entry >= EntryCount()) return "";
  const void* field = data_->GetVectorFields()[entry];
  if (data_->GetVectorFieldTypes()[entry] == kCategoricalPredictor) {
    const auto* predictor = static_cast<const ST_CATEGORICALPREDICTOR*>(field);
    return predictor->name + "=" + predictor->value;
  }
  return static_cast<const ST_FIELDREF*>(field)->name;
}

std::vector<double> SVMModel::VectorsAsCases(std::size_t& count) const {
  count = 0;
  if (!EngineFits()) return {};
  const MachineSums sums(*engine_);
  // A linear machine of one vector is written by its weights.
  const bool by_weights =
      sums.kernel().type == SVMConst::kLinear &&
      std::all_of(sums.machines().begin(), sums.machines().end(),
                  [](const auto& machine) { return machine.vectors.size() <= 1; });
  if (by_weights) return {};
  std::vector<const SparseVector*> kept;
  for (const SparseVector& vector : sums.vectors()) {
    const bool is_case =
        vector.rest == 0.0 && std::all_of(vector.value.begin(), vector.value.end(),
                                          [](double value) { return std::isfinite(value); });
    if (is_case) kept.push_back(&vector);
  }
  count = kept.size();
  std::vector<double> cases(sums.entries() * count, 0.0);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < kept[i]->at.size(); ++k) {
      cases[kept[i]->at[k] * count + i] = kept[i]->value[k];
    }
  }
  return cases;
}

std::unique_ptr<svmscore::Explainer> SVMModel::MakeExplainer(
    const svmscore::ExplainerSetUp& setup) const {
  if (!EngineFits()) return nullptr;
  return std::make_unique<SVMExplainer>(*engine_, setup);
}

}  // namespace MCZandor_850
