// Models built by hand, and case records that read from a map.
#ifndef TESTS_MODEL_MODEL_FIXTURE_H_
#define TESTS_MODEL_MODEL_FIXTURE_H_

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "host/model/score_value.h"
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

// Compares bits: -0.0 is not 0.0, and a NaN equals itself.
inline std::vector<std::uint64_t> Bits(const std::vector<double>& numbers) {
  std::vector<std::uint64_t> bits;
  for (const double number : numbers) bits.push_back(std::bit_cast<std::uint64_t>(number));
  return bits;
}

class MapRecord : public ScoreCaseRecord {
 public:
  struct Cell {
    Cell(std::string n, double v) : name(std::move(n)), value(new NumericValue(v)) {}
    Cell(std::string n, const char* v) : name(std::move(n)), value(new StringValue(v)) {}
    std::string name;
    std::shared_ptr<const ScoreValue> value;
  };
  explicit MapRecord(std::vector<Cell> cells, bool by_position = false)
      : cells_(std::move(cells)), by_position_(by_position) {}
  bool IsIndexedByPosition() const override { return by_position_; }
  int GetPosition(const std::string& name) const override {
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      if (cells_[i].name == name) return static_cast<int>(i);
    }
    return -1;
  }
  const ScoreValue* GetValue(int position) const override {
    const auto at = static_cast<std::size_t>(position);
    return at < cells_.size() ? cells_[at].value.get() : nullptr;
  }
  const ScoreValue* GetValue(const std::string& name) const override {
    return GetValue(GetPosition(name));
  }

 private:
  std::vector<Cell> cells_;
  bool by_position_;
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

// The first of "a", "b", ...
inline std::vector<std::string> Letters(std::size_t count) {
  std::vector<std::string> letters;
  for (std::size_t i = 0; i < count; ++i) letters.emplace_back(1, static_cast<char>('a' + i));
  return letters;
}

// A classification model whose machine m has the decision value of input x<m>, so that cases say
// what the machines decide. Change `data` before Model() to make another.
struct Classifier {
  // The target lists the first letters as its categories; the data count as many, but for 0.
  explicit Classifier(std::size_t listed) {
    dictionary->AddVar(TextVar("y", Letters(listed)));
    data->SetFunctionName(true);
    data->SetClassificationMethod(false);
    data->SetCateNumOfTarget(static_cast<int>(listed));
    data->SetMaxWins(true);
  }
  Machine* Add(int target, int alternate) {
    const std::size_t field = data->GetVectorFields().size();
    const std::string name = Numbered("x", field);
    dictionary->AddVar(NumberVar(name));
    data->AddFieldRef(name, "");
    return EchoMachine(*data, static_cast<int>(field), target, alternate);
  }
  // Makes the data count the categories, and adds a machine for each pair: (0,1), (0,2), ...,
  // (1,2), ... The probability of a pair's first category is the logistic function of its decision
  // value, and is used where `calibrated`.
  Classifier& AddPairs(int categories, bool calibrated = false) {
    data->SetCateNumOfTarget(categories);
    data->SetVEMAExtension(calibrated);
    for (int i = 0; i < categories; ++i) {
      for (int j = i + 1; j < categories; ++j) Extend(Add(i, j), -1, 0, i, j);
    }
    return *this;
  }
  std::unique_ptr<SVMModel> Model() { return Assemble(std::move(dictionary), std::move(data)); }

  std::unique_ptr<BaseDictionary> dictionary = std::make_unique<BaseDictionary>();
  std::unique_ptr<SVMModelData> data = std::make_unique<SVMModelData>();
};

inline MapRecord CaseOf(const std::vector<double>& decisions) {
  std::vector<MapRecord::Cell> cells;
  for (const double decision : decisions) cells.emplace_back(Numbered("x", cells.size()), decision);
  return MapRecord(cells);
}

// The result of a classification, in plain types.
struct Decided {
  long code;
  std::string category;  // empty if absent
  double confidence;
  std::vector<double> percents;
};

inline Decided Read(MCStatus status, const SVMClsResult& result) {
  Decided decided{status.GetErrorCode(), "", result.GetConfidence(), {}};
  if (result.GetPrediction() != nullptr) decided.category = result.GetPrediction()->GetText();
  for (const auto& entry : result.GetAllValuePercent()) decided.percents.push_back(entry.second);
  return decided;
}

inline MCStatus Score(SVMModel& model, const MapRecord& record, ScoreResult& result) {
  ScoreResult* base = &result;
  return model.GetScore(&record, base, false);
}

inline Decided Decide(SVMModel& model, const std::vector<double>& decisions) {
  SVMClsResult result(model.GetTargetVar());
  return Read(Score(model, CaseOf(decisions), result), result);
}

// The same without the checks on input values: NaN and infinities reach the machines.
inline Decided DecideUnchecked(SVMModel& model, const std::vector<double>& decisions) {
  SVMClsResult result(model.GetTargetVar());
  ScoreResult* base = &result;
  std::vector<int> idx(decisions.size());
  std::iota(idx.begin(), idx.end(), 0);
  return Read(model.ScoreSVMClsModel(idx, decisions, base), result);
}

}  // namespace svmscore_test

#endif  // TESTS_MODEL_MODEL_FIXTURE_H_
