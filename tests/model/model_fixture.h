// Models built by hand, and case records that read from a map.
#ifndef TESTS_MODEL_MODEL_FIXTURE_H_
#define TESTS_MODEL_MODEL_FIXTURE_H_

#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/score_value.h"
#include "svm/model/model.h"
#include "svm/model/model_data.h"
#include "svm/result/cls_result.h"
#include "svm/result/reg_result.h"

namespace svmscore_test {

using namespace MCZandor_850;  // NOLINT: tests only
using MCScore::MCStatus;
inline const double kNaN = std::nan("");
using Machine = SVMModelData::ST_SUPPORTVECTORMACHINE;

inline std::string Numbered(std::string name, std::size_t number) {
  return name += std::to_string(number);
}

class MapRecord : public ScoreCaseRecord {
 public:
  explicit MapRecord(std::vector<std::pair<std::string, double>> numbers, bool by_position = false)
      : by_position_(by_position) {
    for (const auto& [name, number] : numbers) {
      Set(name, std::make_unique<NumericValue>(number));
    }
  }
  // Null makes the value missing.
  void Set(const std::string& name, std::unique_ptr<ScoreValue> value) {
    positions_.emplace(name, static_cast<int>(values_.size()));
    values_.emplace_back(std::move(value));
  }
  bool IsIndexedByPosition() const override { return by_position_; }
  int GetPosition(const std::string& name) const override {
    const auto found = positions_.find(name);
    return found == positions_.end() ? -1 : found->second;
  }
  const ScoreValue* GetValue(int position) const override {
    if (position < 0 || static_cast<std::size_t>(position) >= values_.size()) return nullptr;
    return values_[static_cast<std::size_t>(position)].get();
  }
  const ScoreValue* GetValue(const std::string& name) const override {
    return GetValue(GetPosition(name));
  }

 private:
  bool by_position_;
  std::map<std::string, int> positions_;
  std::vector<std::unique_ptr<ScoreValue>> values_;
};

inline std::unique_ptr<ScoreDictVar> NumberVar(const std::string& name) {
  return std::make_unique<ScoreDictVar>(name, svmscore::OpType::kContinuous,
                                        svmscore::FieldType{svmscore::DataType::kDouble});
}

inline std::unique_ptr<ScoreDictVar> TextVar(const std::string& name,
                                             const std::vector<std::string>& categories) {
  auto var = std::make_unique<ScoreDictVar>(name, svmscore::OpType::kCategorical,
                                            svmscore::FieldType{svmscore::DataType::kString});
  for (const std::string& category : categories) var->DeclareCategory(category, "");
  return var;
}

// A machine with the linear kernel whose decision value is the entry at `field` plus `bias`.
inline Machine* EchoMachine(SVMModelData& data, int field, int target, int alternate,
                            double bias = 0) {
  const std::string id = Numbered("v", static_cast<std::size_t>(field));
  data.AddVectorInstance(id, {field + 1}, {1.0});
  auto* machine = new Machine;
  machine->target_index = target;
  machine->alternate_target_index = alternate;
  machine->absolute_value = bias;
  machine->coefficients = {1.0};
  machine->support_vectors = {data.GetVectorInstance(id)};
  data.AddSupportVectorMachine(machine);
  return machine;
}

inline ST_MACHINEEXTENSION* Extend(Machine* machine, double a, double b, int response = 0,
                                   int non_response = 1) {
  machine->extension = new ST_MACHINEEXTENSION;
  machine->extension->a = a;
  machine->extension->b = b;
  machine->extension->response_index = response;
  machine->extension->non_response_index = non_response;
  return machine->extension;
}

// Sets the model up as a translator does: dictionary, role of the target "y", data, categories.
inline std::unique_ptr<SVMModel> Assemble(std::unique_ptr<BaseDictionary> dictionary,
                                          std::unique_ptr<SVMModelData> data) {
  auto model = std::make_unique<SVMModel>();
  model->SetScoreDictionary(dictionary.release());
  model->SetVarRole(std::string("y"), ScoreModel::kTargetRole);
  model->SetSupportVectorMachineModel(data.release());
  model->SetTargetCategories();
  return model;
}

// A classification model whose machine m has the decision value of input x<m>, so that cases say
// what the machines decide. Change `data` before Model() to make another.
struct Classifier {
  explicit Classifier(const std::vector<std::string>& categories)
      : dictionary(std::make_unique<BaseDictionary>()), data(std::make_unique<SVMModelData>()) {
    dictionary->AddVar(TextVar("y", categories));
    data->SetFunctionName(true);
    data->SetClassificationMethod(false);
    data->SetCateNumOfTarget(static_cast<int>(categories.size()));
    data->SetMaxWins(true);
  }
  Machine* Add(int target, int alternate) {
    const std::size_t field = data->GetVectorFields().size();
    const std::string name = Numbered("x", field);
    dictionary->AddVar(NumberVar(name));
    data->AddFieldRef(name, "");
    return EchoMachine(*data, static_cast<int>(field), target, alternate);
  }
  std::unique_ptr<SVMModel> Model() { return Assemble(std::move(dictionary), std::move(data)); }

  std::unique_ptr<BaseDictionary> dictionary;
  std::unique_ptr<SVMModelData> data;
};

inline MapRecord CaseOf(const std::vector<double>& decisions) {
  std::vector<std::pair<std::string, double>> numbers;
  for (const double decision : decisions) {
    numbers.emplace_back(Numbered("x", numbers.size()), decision);
  }
  return MapRecord(numbers);
}

// What came of a classification, in plain types.
struct Decided {
  long code = 0;
  std::string category;  // empty where there is none
  double confidence = -1;
  std::vector<double> percents;
};

inline Decided Read(MCStatus status, const ScoreResult* result) {
  Decided decided;
  decided.code = status.GetErrorCode();
  if (const auto* cls = dynamic_cast<const SVMClsResult*>(result)) {
    if (cls->GetPrediction() != nullptr) decided.category = cls->GetPrediction()->GetText();
    decided.confidence = cls->GetConfidence();
    for (const auto& entry : cls->GetAllValuePercent()) decided.percents.push_back(entry.second);
  }
  return decided;
}

inline Decided Decide(SVMModel& model, const std::vector<double>& decisions) {
  ScoreResult* result = nullptr;
  const MCStatus status =
      model.GetScore(std::make_unique<MapRecord>(CaseOf(decisions)).get(), result, false);
  const std::unique_ptr<ScoreResult> owned(result);
  return Read(status, result);
}

// The same past the checks on input values: NaN and infinities reach the machines.
inline Decided DecideUnchecked(SVMModel& model, const std::vector<double>& decisions) {
  SVMClsResult result(model.GetTargetVar());
  ScoreResult* base = &result;
  std::vector<int> idx(decisions.size());
  for (std::size_t i = 0; i < idx.size(); ++i) idx[i] = static_cast<int>(i);
  return Read(model.ScoreSVMClsModel(idx, decisions, base), base);
}

}  // namespace svmscore_test

#endif  // TESTS_MODEL_MODEL_FIXTURE_H_
