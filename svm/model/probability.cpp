#include <algorithm>
#include <cstddef>
#include <optional>

#include "svm/model/model.h"
#include "svm/model/workspace.h"

namespace MCZandor_850 {

using MCScore::MCStatus;

namespace {

// A pairwise probability of 0 or 1 would leave the coupling without a unique answer.
constexpr double kLeast = 1e-7;
constexpr double kMost = 0.9999999;

double Clamp(double probability) {
  if (probability < kLeast) return kLeast;
  if (probability > kMost) return kMost;
  return probability;
}

// Packed row by row. `r` is square.
void FillCouplingMatrix(const std::vector<std::vector<double>>& r,
                        MCMath_850::MCSymMatrix& matrix) {
  int position = 0;
  for (std::size_t i = 0; i < r.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) matrix.SetElem(position++, -r[i][j] * r[j][i]);
    double sum = 0.0;
    for (const auto& row : r) sum += row[i] * row[i];
    matrix.SetElem(position++, sum);
  }
}

}  // namespace

MCStatus SVMModel::GetProbablitiesForMultiClass(const std::vector<int>& tickets, int& winner,
                                                double& confidence, std::vector<double>& percents) {
  if (data_ != nullptr && !tickets.empty()) {
    const auto machines = static_cast<double>(data_->GetSupportVectorMachines().size());
    const std::size_t categories = std::min(target_categories_.size(), tickets.size());
    for (std::size_t i = 0; i < categories; ++i) {
      const double share = tickets[i] / machines;
      if (share > confidence) {
        winner = static_cast<int>(i);
        confidence = share;
      }
      percents.push_back(share);
    }
  }
  return percents.empty() ? MCStatus(MCScore::kInvalidValue, false) : MCStatus();
}

MCStatus SVMModel::PairwiseProbabilities(const std::vector<double>& decisions,
                                         const std::vector<double>& percents,
                                         std::vector<std::vector<double>>& r) {
  r.assign(static_cast<std::size_t>(data_->GetCateNumOfTarget()), percents);
  return CalculateClassProbabilites(decisions, r);
}

MCStatus SVMModel::CalculateClassProbabilites(const std::vector<double>& decisions,
                                              std::vector<std::vector<double>>& r) {
  const std::size_t categories = r.size();
  if (data_ != nullptr && !decisions.empty()) {
    for (auto& row : r) row.resize(categories, 0.0);
    const auto& machines = data_->GetSupportVectorMachines();
    const ST_MACHINEEXTENSION* parameters = nullptr;
    std::size_t m = 0;
    for (std::size_t i = 0; i < categories; ++i) {
      r[i][i] = 0.0;
      for (std::size_t j = i + 1; j < categories; ++j) {
        if (m >= machines.size() || m >= decisions.size()) continue;
        // For an absent machine the parameters of the previous one are used again.
        if (machines[m] != nullptr) parameters = machines[m]->extension;
        if (parameters == nullptr) continue;
        r[i][j] = Clamp(ComputeVEMAZValue(decisions[m], parameters->a, parameters->b));
        r[j][i] = 1.0 - r[i][j];
        ++m;
      }
    }
  }
  return r.empty() ? MCStatus(MCScore::kInvalidValue, false) : MCStatus();
}

MCStatus SVMModel::DoMultiProbLearn(std::vector<std::vector<double>>& r,
                                    std::vector<double>& percents) {
  if (!r.empty() && percents.size() >= 3) {
    const auto classes = static_cast<int>(r.size());
    for (auto& row : r) row.resize(r.size(), 0.0);
    std::optional<Workspace::Coupling>& coupling = ThisThreadsWorkspace().coupling;
    // An order of -1: memory has run out.
    if (!coupling || coupling->matrix.GetNRows() != classes) coupling.emplace(classes);
    if (!coupling->matrix.IsValidMatrix()) return MCStatus(MCScore::kCannotScore, false);
    FillCouplingMatrix(r, coupling->matrix);
    MCSVM_700::SVMMultiProbLearn& learner = coupling->learner;
    if (learner.MultiLearning().IsError()) return MCStatus(MCScore::kInvalidValue, false);
    percents = learner.GetProbabilities();
  }
  return percents.empty() ? MCStatus(MCScore::kInvalidValue, false) : MCStatus();
}

}  // namespace MCZandor_850
