#include "host/reasons/case_examiner.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "host/model/batch_model.h"
#include "host/model/score_status.h"
#include "host/output/decision_name.h"
#include "host/reasons/text_hints.h"
#include "host/text/look_alikes.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"
#include "host/text/utf8.h"
#include "host/transform/derived_fields.h"
#include "host/transform/transformation_dictionary.h"
#include "host/xml/attributes.h"

namespace svmscore::reasons {

using MCZandor_850::FieldTreatment;
using MCZandor_850::InputCaseRecord;
using MCZandor_850::InputState;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreValue;
using transform::Program;

namespace {

// Reasons of a case, and fields that are looked at on the way from derived fields to inputs.
constexpr std::size_t kMostReasons = 1000;
constexpr std::size_t kMostSteps = 100000;
// Inputs of a derived field that are told with their values, and bytes of each.
constexpr std::size_t kInputsTold = 3;
constexpr std::size_t kLongestTold = 32;

// The variables of the vector positions, as the plug-in finds them by their names.
std::vector<const ScoreDictVar*> FieldsOf(const LoadedModel& loaded) {
  std::vector<const ScoreDictVar*> fields;
  std::unordered_set<const ScoreDictVar*> known;
  const Element* model = FindModelElement(loaded.document.Dom());
  const Element* list = FindChild(FindChild(model, "VectorDictionary"), "VectorFields");
  const auto* transformations = loaded.model->GetTransformationDictionary();
  for (const Element* at = list == nullptr ? nullptr : FirstContent(list); at != nullptr;
       at = NextContent(at)) {
    auto name = FindAttribute(at, "field");
    if (!name) name = FindAttribute(at, "name");
    if (!name) continue;
    const ScoreDictVar* var = loaded.model->GetDictionary()->FindVar(*name);
    if (var == nullptr && transformations != nullptr) var = transformations->FindVar(*name);
    if (var != nullptr && known.insert(var).second) fields.push_back(var);
  }
  return fields;
}

}  // namespace

CaseExaminer::CaseExaminer(const LoadedModel& loaded,
                           const std::vector<const ScoreDictVar*>& variables)
    : loaded_(loaded), fields_(FieldsOf(loaded)) {
  for (std::size_t i = 0; i < variables.size(); ++i) {
    positions_.emplace(variables[i], i);
    names_.insert(variables[i]->GetName());
  }
  if (const auto* transformations = loaded.model->GetTransformationDictionary()) {
    for (const Program::Input& input : transformations->GetProgram().Inputs()) {
      inputs_of_slots_.emplace(input.slot, input.var);
    }
  }
  const auto* batch = dynamic_cast<const BatchModel*>(loaded.model.get());
  for (std::size_t i = 0; batch != nullptr && i < batch->DecisionCount(); ++i) {
    decision_names_.push_back(
        output::DecisionName(loaded.output->Targets(), batch->DecisionCategories(i)));
  }
}

CaseExaminer::~CaseExaminer() = default;

// The work on one case.
class CaseExaminer::Examination {
 public:
  Examination(const CaseExaminer& examiner, const InputCaseRecord& record, const Given* given)
      : examiner_(examiner), record_(record), given_(given) {}

  std::vector<Reason> Find(const Ended& ended) {
    if (ended.model_status != 0 && ended.decisions == nullptr && IsEmptyRow()) {
      Add({.cause = Cause::kEmptyRow});
    } else if (record_.HasInvalid()) {
      FindInvalidInputs();
    } else if (ended.model_status == 0) {
      FindOutputField(ended);
    } else if (ended.own_status == 0) {
      FindResult();
    } else if (ended.decisions != nullptr) {
      FindDecisions(ended);
    } else {
      FindFields();
      if (reasons_.empty()) DecideAgain(ended);
    }
    if (reasons_.empty()) {
      Add({.cause = ended.status == MCScore::kCannotScore ? Cause::kCannotScore
                    : ended.decisions != nullptr          ? Cause::kNoCategory
                                                          : Cause::kNoResult});
    }
    return std::move(reasons_);
  }

 private:
  void Add(Reason reason) {
    if (!IsFull()) reasons_.push_back(std::move(reason));
  }
  bool IsFull() const { return reasons_.size() >= kMostReasons; }
  const ScoreModel& Model() const { return *examiner_.loaded_.model; }

  // Every text is the name of its field.
  bool IsHeader() const {
    bool any = false;
    for (std::size_t i = 0; i < record_.Size(); ++i) {
      if (given_[i].missing || given_[i].text != record_.Variable(i).GetName()) return false;
      any = true;
    }
    return any;
  }

  // As where tables with columns of different order were joined.
  bool IsOtherHeader() const {
    std::size_t names = 0;
    for (std::size_t i = 0; i < record_.Size(); ++i) {
      if (!given_[i].missing && examiner_.names_.contains(given_[i].text)) ++names;
      if (2 * (i + 1 - names) > record_.Size()) return false;
    }
    return names > 1;
  }

  void FindInvalidInputs() {
    if (IsHeader()) return Add({.cause = Cause::kHeaderRow});
    if (IsOtherHeader()) return Add({.cause = Cause::kOtherHeader});
    for (std::size_t i = 0; i < record_.Size() && !IsFull(); ++i) {
      if (record_.StateOf(i) == InputState::kInvalid) Add(ReasonOfInput(i));
    }
  }

  // What is wrong with the value that an input was given.
  Reason ReasonOfInput(std::size_t position) const {
    const ScoreDictVar& var = record_.Variable(position);
    const Given& given = given_[position];
    Reason reason{
        .cause = Cause::kNothingGiven, .field = var.GetName(), .input = &var, .text = given.text};
    if (given.missing) {
      if (!given.text.empty()) reason.cause = Cause::kMeansMissing;
      return reason;
    }
    const std::unique_ptr<ScoreValue> value =
        var.ValueFromText(given.read.empty() ? given.text : given.read);
    if (var.IsMissingValue(value.get())) {
      reason.cause = Cause::kMeansMissing;
      return reason;
    }
    reason.cause = CauseOf(var, *value);
    const bool respelled = !given.read.empty() && given.read != given.text;
    if (reason.cause == Cause::kNotFinite && IsMissingWord(given.text)) {
      reason.hint = Hint::kMissingWord;
    }
    if (reason.cause == Cause::kWrongType) {
      reason.hint = HintOfNumber(given.text);
      const std::size_t point = given.text.rfind('.');
      const std::size_t comma = given.text.rfind(',');
      const bool groups = reason.hint == Hint::kThousands && comma != std::string_view::npos &&
                          comma > point;  // 1.234,5
      if (respelled && point != std::string_view::npos && !groups) {
        reason.hint = Hint::kDecimalPoint;
      }
      const bool of_numbers = reason.hint == Hint::kDate || reason.hint == Hint::kTruthValue;
      if (of_numbers && !IsOfNumbers(var)) reason.hint = Hint::kNone;
    }
    if (reason.cause == Cause::kNotListed) reason.hint = HintOfCategory(var, given.text);
    return reason;
  }

  static Cause CauseOf(const ScoreDictVar& var, const ScoreValue& value) {
    if (value.IsInvalid()) return Cause::kWrongType;
    if (value.IsNumeric() && !std::isfinite(value.GetDouble())) return Cause::kNotFinite;
    if (var.IsDeclaredValid(value)) return Cause::kOutlier;
    const bool listed = !var.DeclaresNoValues() && var.GetTypeCode() != 0;
    if (!var.GetIntervals().empty() && var.GetTypeCode() == 0) return Cause::kOutsideInterval;
    return listed && var.GetCategoryIndex(&value) < 0 ? Cause::kNotListed : Cause::kDeclaredInvalid;
  }

  static bool IsOfNumbers(const ScoreDictVar& var) {
    const DataType type = var.GetFieldType().data;
    return type == DataType::kInteger || type == DataType::kFloat || type == DataType::kDouble;
  }

  static Hint HintOfCategory(const ScoreDictVar& var, std::string_view text) {
    if (!IsUtf8(text)) return Hint::kEncoding;
    if (IsMissingWord(text)) return Hint::kMissingWord;
    const auto is_category = [&var](std::string_view without) {
      return var.GetCategoryIndexOfText(std::string(WithoutBlanks(without))) >= 0;
    };
    for (const char* replacement : {"", " "}) {
      const std::string seen = ReplaceInvisible(text, replacement);
      if (seen != text && is_category(seen)) return Hint::kInvisible;
    }
    return is_category(text) ? Hint::kBlanks : Hint::kNone;
  }

  // Of one input alone it is told by its name.
  bool IsEmptyRow() const {
    for (std::size_t i = 0; i < record_.Size(); ++i) {
      if (!given_[i].missing || !given_[i].text.empty()) return false;
    }
    return record_.Size() > 1;
  }

  // The vector positions whose values are missing or invalid.
  void FindFields() {
    const auto* transformations = Model().GetTransformationDictionary();
    if (transformations != nullptr) {
      derived_ = transformations->GetValuesForDerivedVars(&record_, nullptr);
    }
    for (const ScoreDictVar* var : examiner_.fields_) {
      if (IsFull() || (steps_ > kMostSteps && !reasons_.empty())) break;
      const ScoreValue* value = var->IsDerived() ? nullptr : record_.GetValueOf(*var);
      if (value == nullptr && derived_ != nullptr) value = derived_->GetDerived(*var);
      if (var->IsMissingValue(value)) {
        if (!IsReplaced(*var)) FindMissing(*var);
      } else if (!var->IsValidValue(value)) {
        FindDerived(var->GetName(), Cause::kDerivedInvalid);
      }
    }
  }

  bool IsReplaced(const ScoreDictVar& var) const {
    return Model().GetMissingValuePolicy() == ScoreModel::kReplaceMissing &&
           var.GetMissingReplacement() != nullptr;
  }

  void FindMissing(const ScoreDictVar& var) {
    const auto position = examiner_.positions_.find(&var);
    if (var.IsDerived() || position == examiner_.positions_.end()) {
      return FindDerived(var.GetName(), Cause::kDerivedMissing);
    }
    Add(ReasonOfMissing(position->second));
  }

  Reason ReasonOfMissing(std::size_t position) const {
    Reason reason = ReasonOfInput(position);
    reason.effect = record_.Variable(position).GetMissingReplacement() != nullptr
                        ? Reason::Effect::kNotReplaced
                        : Reason::Effect::kMissing;
    return reason;
  }

  // The input that leaves a derived field without a value, or else what it was computed from.
  void FindDerived(const std::string& name, Cause cause) {
    const auto* transformations = Model().GetTransformationDictionary();
    const ScoreDictVar* var = transformations == nullptr ? nullptr : transformations->FindVar(name);
    if (var == nullptr || derived_ == nullptr) return Add({.cause = cause, .field = name});
    const Program& program = transformations->GetProgram();
    const Program::Step* step = program.FindStep(var->GetCasePosition());
    // One link of the chain of derived fields after the other, towards the inputs.
    for (const Program::Step* next = step; next != nullptr;) {
      step = next;
      next = nullptr;
      for (const int slot : step->reads) {
        const transform::Value& value = derived_->Values().Slot(static_cast<std::size_t>(slot));
        if (++steps_ > kMostSteps) break;
        const bool same = cause == Cause::kDerivedMissing ? value.IsMissing() : value.IsInvalid();
        if (!same) continue;
        if (const ScoreDictVar* input = InputOf(slot)) return AddBlamed(*input, var->GetName());
        next = program.FindStep(slot);
        break;
      }
    }
    Reason reason{.cause = cause, .field = var->GetName(), .derived = {}};
    if (step != nullptr) reason.detail = ComputedFrom(*step, step->name != name);
    Add(std::move(reason));
  }

  const ScoreDictVar* InputOf(int slot) const {
    const auto found = examiner_.inputs_of_slots_.find(slot);
    return found == examiner_.inputs_of_slots_.end() ? nullptr : found->second;
  }

  void AddBlamed(const ScoreDictVar& input, std::string_view derived) {
    const auto position = examiner_.positions_.find(&input);
    Reason reason{.cause = Cause::kNothingGiven, .field = input.GetName(), .input = &input};
    if (position != examiner_.positions_.end()) reason = ReasonOfInput(position->second);
    reason.derived = derived;
    const auto same = [&reason](const Reason& other) { return other.input == reason.input; };
    // An input is told once, however many derived fields need it.
    if (std::none_of(reasons_.begin(), reasons_.end(), same)) Add(std::move(reason));
  }

  std::string ComputedFrom(const Program::Step& step, bool named) const {
    std::string text = named ? ", for \"" + Printable(step.name, kLongestTold) + "\" has none" : "";
    std::size_t told = 0;
    for (const int slot : step.reads) {
      const ScoreDictVar* input = InputOf(slot);
      const auto position =
          input == nullptr ? examiner_.positions_.end() : examiner_.positions_.find(input);
      if (position == examiner_.positions_.end() || told == kInputsTold) continue;
      text += ++told == 1 ? ", computed from " : ", ";
      text += Printable(input->GetName(), kLongestTold) + " \"" +
              Printable(given_[position->second].text, kLongestTold) + '"';
    }
    return text;
  }

  void DecideAgain(const Ended& ended) {
    auto* batch = dynamic_cast<BatchModel*>(examiner_.loaded_.model.get());
    if (batch == nullptr) return;
    std::vector<double> entries(batch->EntryCount());
    std::vector<double> decisions(batch->DecisionCount());
    if (decisions.empty() || batch->ReadCase(record_, false, entries.data(), 1).IsError()) return;
    long status = 0;
    BatchResults results;
    results.status = &status;
    results.decisions = decisions.data();
    results.stride = 1;
    batch->ScoreBatch({entries.data(), 1, 1}, results);
    if (status == MCScore::kCannotScore) return;
    Ended decided = ended;
    decided.decisions = decisions.data();
    decided.stride = 1;
    FindDecisions(decided);
  }

  void FindDecisions(const Ended& ended) {
    for (std::size_t m = 0; m < examiner_.decision_names_.size(); ++m) {
      const double decision = ended.decisions[m * ended.stride];
      if (std::isfinite(decision)) continue;
      Add({.cause = Cause::kDecisionNotFinite,
           .field = examiner_.decision_names_[m],
           .detail = FormatNumber(decision)});
    }
  }

  void FindResult() {
    const auto& targets = examiner_.loaded_.output->Targets();
    const bool number = targets.GetScheme().method == output::Method::kRegression;
    Add({.cause = number ? Cause::kNotOfTargetType : Cause::kPercentsNotFinite,
         .field = targets.Target().GetName()});
  }

  void FindOutputField(const Ended& ended) {
    const auto& fields = examiner_.loaded_.output->Fields();
    if (!ended.output_field || *ended.output_field >= fields.size()) return;
    Add({.cause = Cause::kOutputField, .field = fields[*ended.output_field].name});
  }

  const CaseExaminer& examiner_;
  const InputCaseRecord& record_;
  const Given* given_;
  std::unique_ptr<MCZandor_850::DerivedCaseRecord> derived_;
  std::vector<Reason> reasons_;
  std::size_t steps_ = 0;
};

std::vector<Reason> CaseExaminer::Examine(const InputCaseRecord& record, const Given* given,
                                          const Ended& ended) const {
  return Examination(*this, record, given).Find(ended);
}

}  // namespace svmscore::reasons
