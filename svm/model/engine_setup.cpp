#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <unordered_map>
#include <utility>

#include "host/model/instruction_set.h"
#include "svm/kernel/packed/operations.h"
#include "svm/model/model.h"
#include "svm/model/workspace.h"

namespace MCZandor_850 {
namespace {

using MCSVM_700::PackedInput;
using MCSVM_700::SVMDataCase;
using MCSVM_700::certified::VoteRule;
using MCSVM_700::certified::Wanted;

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
  certified_.reset();
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
  if (WhyExact() != nullptr) return;
  certified_rule_ = RuleOfVotes();
  try {
    certified_ = std::make_unique<const MCSVM_700::CertifiedEngine>(*engine_, certified_rule_);
  } catch (const std::bad_alloc&) {
    certified_.reset();  // the packed engine does without
  }
}

std::pair<int, int> SVMModel::VotesOf(const SVMModelData::ST_SUPPORTVECTORMACHINE& machine) const {
  return data_->IsMaxWins() ? std::pair(machine.target_index, machine.alternate_target_index)
                            : std::pair(machine.alternate_target_index, machine.target_index);
}

VoteRule SVMModel::RuleOfVotes() const {
  VoteRule rule;
  if (data_->IsClassOneAgainstAll() && data_->IsMultiClassClassification()) {
    rule.kind = data_->IsMaxWins() ? VoteRule::Kind::kLargest : VoteRule::Kind::kSmallest;
    return rule;
  }
  for (const auto* machine : data_->GetSupportVectorMachines()) {
    rule.thresholds.push_back(machine->threshold);
    if (data_->IsMultiClassClassification()) {
      rule.votes.push_back(VotesOf(*machine));
    }
  }
  rule.categories = static_cast<std::size_t>(data_->GetCateNumOfTarget());
  return rule;
}

const char* SVMModel::WhyExact() const {
  if (data_ == nullptr || !data_->IsClassification())
    return "the result is the decision value itself";
  if (data_->IsVEMAExtension()) return "decision values become probabilities";
  const auto& machines = data_->GetSupportVectorMachines();
  const bool whole = std::none_of(machines.begin(), machines.end(),
                                  [](const auto* machine) { return machine == nullptr; });
  if (!whole || machines.empty() || EntryCount() == 0) return "a machine or its fields are absent";
  if (!svmscore::CertifiesVotes()) return "SVMSCORE_CERTIFY is off";
  if (!EngineFits()) return "the model does not fit the packed form";
  return nullptr;
}

bool SVMModel::CertifiesVotes() const {
  if (certified_ == nullptr || !EngineFits() || data_->IsVEMAExtension() ||
      !data_->IsClassification()) {
    return false;
  }
  const VoteRule::Kind kind = certified_rule_.kind;
  if (data_->IsClassOneAgainstAll() && data_->IsMultiClassClassification()) {
    return kind == (data_->IsMaxWins() ? VoteRule::Kind::kLargest : VoteRule::Kind::kSmallest);
  }
  const auto& machines = data_->GetSupportVectorMachines();
  return kind == VoteRule::Kind::kThresholds &&
         std::equal(machines.begin(), machines.end(), certified_rule_.thresholds.begin(),
                    certified_rule_.thresholds.end(), [](const auto* machine, double threshold) {
                      return machine != nullptr && machine->threshold == threshold;
                    });
}

Wanted SVMModel::WantedOf(bool shares) const {
  if ((shares && !prediction_only_) || target_categories_.size() != certified_rule_.categories) {
    return Wanted::kVotes;
  }
  const auto& machines = data_->GetSupportVectorMachines();
  const auto& votes = certified_rule_.votes;
  const bool same = std::equal(machines.begin(), machines.end(), votes.begin(), votes.end(),
                               [this](const auto* machine, const std::pair<int, int>& vote) {
                                 return VotesOf(*machine) == vote;
                               });
  return same ? Wanted::kWinner : Wanted::kVotes;
}

svmscore::VoteLevels SVMModel::Votes() const {
  svmscore::VoteLevels levels;
  levels.why_exact = WhyExact();
  if (certified_ == nullptr || !CertifiesVotes()) {
    if (levels.why_exact == nullptr) {
      levels.why_exact = "no estimates were set up for the model as it is now";
    }
    return levels;
  }
  levels.level = NameOf(certified_->level());
  levels.why_exact = certified_->why_not();
  const auto counts = certified_->counts();
  levels.by_single = counts.single;
  levels.by_double = counts.twofold;
  levels.by_exact = counts.exact;
  return levels;
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
                                   bool votes_alone, std::vector<double>& decisions) {
  decisions.assign(DecisionCount(), 0.0);
  if (EngineTakes(idx, val)) {
    Workspace& workspace = ThisThreadsWorkspace();
    if (votes_alone && CertifiesVotes()) {
      certified_->Decide(val.data(), workspace.certified, workspace.scratch, decisions.data(),
                         WantedOf(true));
      return {};
    }
    engine_->Decide(val.data(), workspace.scratch, decisions.data());
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
