#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_map>

#include "host/model/instruction_set.h"
#include "svm/kernel/packed/operations.h"
#include "svm/model/model.h"
#include "svm/model/workspace.h"

namespace MCZandor_850 {
namespace {

using MCSVM_700::PackedInput;
using MCSVM_700::SVMDataCase;

// The machines' vectors, each once, and the machines as positions among them.
class Collector {
 public:
  // False for a machine that has no vector for some coefficient, or a vector that lacks entries.
  bool Add(const SVMModelData::ST_SUPPORTVECTORMACHINE* machine) {
    terms_.emplace_back();
    if (machine == nullptr) {  // its decision value stays 0
      input_.machines.emplace_back();
      return true;
    }
    if (!machine->IsWhole()) return false;
    std::vector<std::uint32_t>& terms = terms_.back();
    for (std::size_t k = 0; k < machine->coefficients.size(); ++k) {
      const SVMDataCase* vector = machine->support_vectors[k];
      const auto next = static_cast<std::uint32_t>(input_.vectors.size());
      const auto [found, is_new] = positions_.emplace(vector, next);
      if (is_new) input_.vectors.push_back({&vector->indices, &vector->values});
      terms.push_back(found->second);
    }
    input_.machines.push_back({machine->coefficients, {}, machine->absolute_value});
    return input_.vectors.size() < std::numeric_limits<std::uint32_t>::max();
  }

  // Valid while this object lives and is not added to.
  PackedInput& Input() {
    for (std::size_t m = 0; m < terms_.size(); ++m) input_.machines[m].vectors = terms_[m];
    return input_;
  }

 private:
  PackedInput input_;
  std::unordered_map<const SVMDataCase*, std::uint32_t> positions_;
  std::vector<std::vector<std::uint32_t>> terms_;
};

}  // namespace

SVMModel::Workspace& SVMModel::ThisThreadsWorkspace() {
  static thread_local Workspace workspace;
  return workspace;
}

void SVMModel::SetUpEngine(const SVMConst::KernelParameters& kernel) {
  engine_.reset();
  if (kernel_ == nullptr || EntryCount() > std::numeric_limits<int>::max()) return;
  Collector collector;
  for (std::size_t m = 0; m < DecisionCount(); ++m) {
    if (!collector.Add(data_->GetSupportVectorMachines()[m])) return;
  }
  PackedInput& input = collector.Input();
  input.kernel = kernel;
  input.fields = EntryCount();
  engine_ = std::make_unique<const MCSVM_700::PackedEngine>(
      input, MCSVM_700::packed::OperationsOf(svmscore::ChosenIsa().isa));
}

bool SVMModel::EngineFits() const {
  return engine_ != nullptr && engine_->fields() == EntryCount() &&
         engine_->machines() == DecisionCount();
}

bool SVMModel::EngineTakes(const std::vector<int>& idx, const std::vector<double>& val) const {
  if (!EngineFits() || idx.size() != engine_->fields() || val.size() < idx.size()) return false;
  for (std::size_t i = 0; i < idx.size(); ++i) {
    if (idx[i] != static_cast<int>(i)) return false;
  }
  return true;
}

MCScore::MCStatus SVMModel::Decide(const std::vector<int>& idx, const std::vector<double>& val,
                                   std::vector<double>& decisions) {
  decisions.assign(DecisionCount(), 0.0);
  if (EngineTakes(idx, val)) {
    engine_->Decide(val.data(), ThisThreadsWorkspace().scratch, decisions.data());
    return {};
  }
  return DecideByDefinition(idx, val, {decisions.data(), 1});
}

MCScore::MCStatus SVMModel::DecideByDefinition(const std::vector<int>& idx,
                                               const std::vector<double>& val,
                                               MCSVM_700::packed::DecisionColumns decisions) {
  for (std::size_t m = 0; m < DecisionCount(); ++m) {
    const auto* machine = Machine(static_cast<int>(m));
    if (machine != nullptr && !machine->IsWhole()) {
      return MCScore::MCStatus(MCScore::kCannotScore, false);
    }
    double& value = decisions.values[m * decisions.stride];
    value = 0.0;
    ScoreSVMByKernelType(idx, val, static_cast<int>(m), value);
  }
  return {};
}

}  // namespace MCZandor_850
