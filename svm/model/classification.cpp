#include <cmath>
#include <cstddef>
#include <cstdint>

#include "svm/model/model.h"
#include "svm/model/workspace.h"
#include "svm/result/cls_result.h"

namespace MCZandor_850 {

using MCScore::MCStatus;

namespace {

MCStatus Undecided() {
  return MCStatus(MCScore::kInvalidValue, false);
}

bool IsPosition(int index, std::size_t size) {
  return index >= 0 && static_cast<std::size_t>(index) < size;
}

// Results hold values that are not const; a host must not change the model's categories through
// them.
ScoreValue* ForResult(const ScoreValue* category) {
  return const_cast<ScoreValue*>(category);
}

}  // namespace

MCStatus SVMModel::ScoreSVMClsModel(const std::vector<int>& idx, const std::vector<double>& val,
                                    ScoreResult*& result) {
  if (data_ == nullptr || idx.empty() || data_->GetSupportVectorMachines().empty()) return {};
  std::vector<double>& decisions = ThisThreadsWorkspace().decisions;
  MCStatus status = Decide(idx, val, true, decisions);
  if (!status.IsError()) status = CheckDecisions(decisions);
  if (status.IsError()) return status;
  int winner = 0;
  double confidence = 0.0;
  std::vector<double> percents(target_categories_.size(), 0.0);
  status = DoVotingForSVMCls(decisions, winner, confidence, percents);
  if (status.IsError()) return status;
  return FillSVMClsResult(winner, confidence, percents, result);
}

MCStatus SVMModel::DoVotingForSVMCls(const std::vector<double>& decisions, int& winner,
                                     double& confidence, std::vector<double>& percents) {
  if (data_ == nullptr || decisions.empty() ||
      decisions.size() != data_->GetSupportVectorMachines().size()) {
    return {};
  }
  if (!data_->IsVEMAExtension() && data_->IsClassOneAgainstAll() &&
      data_->IsMultiClassClassification()) {
    return VoteForOneAgainstAll(decisions, winner, percents);
  }
  return VoteForOneAgainstOne(decisions, winner, confidence, percents);
}

MCStatus SVMModel::VoteForOneAgainstAll(const std::vector<double>& decisions, int& winner,
                                        std::vector<double>& /*percents*/) {
  if (data_ == nullptr || decisions.empty()) return {};
  double best = std::nan("");
  for (const double decision : decisions) {
    const bool better = data_->IsMaxWins() ? decision > best : decision < best;
    if (better || std::isnan(best)) best = decision;
  }
  for (std::size_t m = 0; m < decisions.size(); ++m) {
    const auto* machine = Machine(static_cast<int>(m));
    if (machine != nullptr && decisions[m] == best) {
      winner = machine->target_index;
      break;
    }
  }
  return {};
}

MCStatus SVMModel::VoteForOneAgainstOne(const std::vector<double>& decisions, int& winner,
                                        double& confidence, std::vector<double>& percents) {
  if (data_ == nullptr || decisions.empty() ||
      decisions.size() != data_->GetSupportVectorMachines().size()) {
    return {};
  }
  if (data_->IsBinaryClassification() && decisions.size() == 1) {
    return data_->IsVEMAExtension()
               ? GetVEMATicketByBinaryClass(decisions, winner, confidence, percents)
               : GetTicketByBinaryClass(decisions, 0, winner);
  }
  return data_->IsVEMAExtension()
             ? GetVEMATicketByMultiClass(decisions, winner, confidence, percents)
             : GetTicketByMultiClass(decisions, winner, confidence, percents);
}

MCStatus SVMModel::GetTicketByBinaryClass(const std::vector<double>& decisions, int machine,
                                          int& winner) {
  const auto* record = Machine(machine);
  if (record == nullptr || decisions.size() != data_->GetSupportVectorMachines().size()) return {};
  const double decision = decisions[static_cast<std::size_t>(machine)];
  const bool for_target =
      data_->IsMaxWins() ? decision > record->threshold : decision < record->threshold;
  winner = for_target ? record->target_index : record->alternate_target_index;
  return {};
}

MCStatus SVMModel::GetTicketsToCategories(const std::vector<double>& decisions,
                                          std::vector<int>& tickets) {
  if (data_ == nullptr || decisions.empty()) return Undecided();
  const std::int64_t categories = data_->GetCateNumOfTarget();
  const std::size_t machine_count = data_->GetSupportVectorMachines().size();
  if (categories < 2 ||
      categories * (categories - 1) / 2 != static_cast<std::int64_t>(machine_count)) {
    return Undecided();
  }
  int winner = 0;  // where a machine is absent, that of the previous machine
  for (std::size_t m = 0; m < machine_count; ++m) {
    const MCStatus status = GetTicketByBinaryClass(decisions, static_cast<int>(m), winner);
    if (status.IsError()) return status;
    if (IsPosition(winner, tickets.size())) ++tickets[static_cast<std::size_t>(winner)];
  }
  return {};
}

MCStatus SVMModel::GetTicketByMultiClass(const std::vector<double>& decisions, int& winner,
                                         double& confidence, std::vector<double>& percents) {
  percents.clear();
  if (data_ != nullptr && !decisions.empty()) {
    std::vector<int>& tickets = ThisThreadsWorkspace().tickets;
    tickets.assign(target_categories_.size(), 0);
    if (!GetTicketsToCategories(decisions, tickets).IsError() && !tickets.empty()) {
      GetProbablitiesForMultiClass(tickets, winner, confidence, percents);
    }
  }
  return percents.empty() ? Undecided() : MCStatus();
}

MCStatus SVMModel::GetVEMATicketByBinaryClass(const std::vector<double>& decisions, int& winner,
                                              double& confidence, std::vector<double>& percents) {
  const auto* machine = Machine(0);
  const ST_MACHINEEXTENSION* extension = machine != nullptr ? machine->extension : nullptr;
  if (!decisions.empty() && extension != nullptr) {
    winner = extension->response_index;
    std::vector<std::vector<double>>& r = ThisThreadsWorkspace().pairs;
    const MCStatus status = PairwiseProbabilities(decisions, percents, r);
    if (!status.IsError() && extension->non_response_index >= 0 && r.size() > 1) {
      const double response = r[0][1];
      const double non_response = 1.0 - response;
      // The data and the target's own list may disagree on the number of categories.
      if (percents.size() > 1) {
        percents[0] = response;
        percents[1] = non_response;
      }
      const bool responds = response >= non_response;
      confidence = responds ? response : non_response;
      if (!responds) winner = extension->non_response_index;
    }
  }
  return percents.empty() ? Undecided() : MCStatus();
}

MCStatus SVMModel::GetVEMATicketByMultiClass(const std::vector<double>& decisions, int& winner,
                                             double& confidence, std::vector<double>& percents) {
  if (data_ == nullptr || decisions.empty()) return percents.empty() ? Undecided() : MCStatus();
  std::vector<std::vector<double>>& r = ThisThreadsWorkspace().pairs;
  MCStatus status = PairwiseProbabilities(decisions, percents, r);
  if (!status.IsError()) status = DoMultiProbLearn(r, percents);
  if (status.IsError()) return status;
  if (percents.size() == target_categories_.size() && percents.size() > 1) {
    for (std::size_t i = 0; i < percents.size(); ++i) {
      if (percents[i] > confidence) {
        winner = static_cast<int>(i);
        confidence = percents[i];
      }
    }
  }
  return percents.empty() ? Undecided() : MCStatus();
}

bool SVMModel::IsCategory(int winner) const {
  return IsPosition(winner, target_categories_.size()) &&
         target_categories_[static_cast<std::size_t>(winner)] != nullptr;
}

MCStatus SVMModel::FillSVMClsResult(int winner, double confidence,
                                    const std::vector<double>& percents, ScoreResult*& result) {
  // Another kind of result could take ownership of the category and delete it.
  auto* cls_result = dynamic_cast<ScoreClsResult*>(result);
  if (cls_result == nullptr || !IsCategory(winner)) return Undecided();
  cls_result->SetPrediction(ForResult(target_categories_[static_cast<std::size_t>(winner)]));
  FillSVMVEMAClsResult(percents, winner, confidence, result);
  return {};
}

MCStatus SVMModel::FillSVMVEMAClsResult(const std::vector<double>& percents, int winner,
                                        double confidence, ScoreResult*& result) {
  auto* cls_result = dynamic_cast<ScoreClsResult*>(result);
  if (cls_result == nullptr || prediction_only_ || !IsPosition(winner, target_categories_.size()) ||
      percents.size() != target_categories_.size()) {
    return {};
  }
  if (auto* own = dynamic_cast<SVMClsResult*>(result)) own->RemoveValuePercent();
  for (std::size_t i = 0; i < percents.size(); ++i) {
    cls_result->AddValuePercent(ForResult(target_categories_[i]), percents[i]);
  }
  cls_result->SetConfidence(confidence);
  return {};
}

}  // namespace MCZandor_850
