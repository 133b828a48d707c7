#include "host/output/output_reader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/transform/derived_fields.h"
#include "host/transform/transformation_dictionary.h"
#include "host/transform/value/conversion.h"
#include "host/xml/attributes.h"

namespace svmscore::output {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using transform::Field;
using transform::ValueOrder;
using xercesc::DOMElement;

constexpr const char* kField = "OutputField";

struct NamedFeature {
  std::string_view name;
  Feature feature;
};

// The features of the standard. Those that map to nothing here belong to other kinds of model, or
// are not defined for this one.
constexpr std::array kFeatures = {
    NamedFeature{"predictedValue", Feature::kPredictedValue},
    NamedFeature{"predictedDisplayValue", Feature::kDisplayValue},
    NamedFeature{"probability", Feature::kProbability},
    NamedFeature{"residual", Feature::kResidual},
    NamedFeature{"standardDeviation", Feature::kStandardDeviation},
    NamedFeature{"confidenceIntervalLower", Feature::kIntervalLower},
    NamedFeature{"confidenceIntervalUpper", Feature::kIntervalUpper},
    NamedFeature{"transformedValue", Feature::kExpression},
    NamedFeature{"decision", Feature::kExpression},
    NamedFeature{"standardError", Feature::kNothing},
    NamedFeature{"warning", Feature::kNothing},
    NamedFeature{"clusterId", Feature::kNothing},
    NamedFeature{"clusterAffinity", Feature::kNothing},
    NamedFeature{"entityId", Feature::kNothing},
    NamedFeature{"entityAffinity", Feature::kNothing},
    NamedFeature{"affinity", Feature::kNothing},
    NamedFeature{"reasonCode", Feature::kNothing},
    NamedFeature{"ruleValue", Feature::kNothing},
    NamedFeature{"antecedent", Feature::kNothing},
    NamedFeature{"consequent", Feature::kNothing},
    NamedFeature{"rule", Feature::kNothing},
    NamedFeature{"ruleId", Feature::kNothing},
    NamedFeature{"confidence", Feature::kNothing},
    NamedFeature{"support", Feature::kNothing},
    NamedFeature{"lift", Feature::kNothing},
    NamedFeature{"leverage", Feature::kNothing},
};

// True for documents of versions before 4.2, whose features have no default.
bool IsBefore42(const DOMElement* root) {
  const std::string version = FindAttribute(root, "version").value_or("");
  const std::size_t point = version.find('.');
  const double major = ParseNumber(version.substr(0, point)).value_or(9.0);
  if (major != 4.0 || point == std::string::npos) return major < 4.0;
  return version.size() > point + 1 && version[point + 1] < '2';
}

}  // namespace

OutputReader::OutputReader(const ScoreModel& model, const xercesc::DOMDocument* document,
                           Faults faults, OutputPlan& plan)
    : model_(model),
      root_(document->getDocumentElement()),
      model_element_(FindModelElement(document)),
      faults_(faults),
      plan_(plan) {
  plan_.slot_count_ = 1;
  const Element* schema = FindChild(model_element_, "MiningSchema");
  for (const Element* field : Children(schema, "MiningField")) {
    schema_.insert(FindAttribute(field, "name").value_or(""));
  }
}

void OutputReader::Read() {
  const Element* output = FindChild(model_element_, "Output");
  if (output == nullptr) return;
  std::vector<const Element*> elements;
  for (const Element* element = FirstContent(output); element != nullptr;
       element = NextContent(element)) {
    if (IsField(element, elements.size())) elements.push_back(element);
  }
  plan_.prediction_slot_ = static_cast<int>(elements.size());
  plan_.slot_count_ = elements.size() + 1;
  definitions_.AddFrom(root_->getOwnerDocument());
  for (const Element* element : elements) {
    const std::string name = RequireAttribute(element, "name");
    const bool read = Attempt(faults_, element, "output field " + name + " stays empty",
                              plan_.notes_, [&] { ReadField(element); });
    if (read) continue;
    known_.push_back({static_cast<int>(known_.size()), std::nullopt, false, nullptr});
    AddField({name, Feature::kNothing, std::nullopt, true}, {});
  }
}

bool OutputReader::IsField(const Element* element, std::size_t position) {
  return Attempt(faults_, element, "left out of the output", plan_.notes_, [&] {
    if (!IsNamed(element, kField)) RefuseKind(element);
    const std::string name = RequireAttribute(element, "name");
    if (!positions_.emplace(name, position).second) {
      ThrowAt(element, code::kDuplicateName, name, kField);
    }
  });
}

void OutputReader::AddField(OutputField field, OutputPlan::Step step) {
  if (field.is_final) plan_.final_.push_back(static_cast<int>(plan_.fields_.size()));
  plan_.fields_.push_back(std::move(field));
  plan_.steps_.push_back(std::move(step));
}

void OutputReader::ReadField(const Element* element) {
  current_ = element;
  OutputField field;
  OutputPlan::Step step;
  field.name = RequireAttribute(element, "name");
  field.is_final = FindFlag(element, "isFinalResult", true);
  const Element* expression = FindExpression(element, step);
  ReadFeature(element, expression != nullptr, field, step);
  field.type = TypeOf(element, field);
  CheckReach(element, field);
  if (expression != nullptr) {
    step.expression = transform::CompileExpression(expression, *this, definitions_, field.type);
    computed_ += step.expression->Size();
    if (computed_ > transform::kMostComputed) {
      RefuseContent(element, "the output fields up to this one evaluate more than " +
                                 std::to_string(transform::kMostComputed) +
                                 " expressions for a case");
    }
  }
  if (field.type) {
    for (transform::Value& decision : step.decisions) {
      decision = transform::Convert(decision, *field.type, plan_.pool_);
      if (!decision.IsPresent())
        RefuseContent(element, "the value of a decision is not of the field's type");
    }
  }
  ReadOrder(element, field);
  AddField(std::move(field), std::move(step));
}

const OutputReader::Element* OutputReader::FindExpression(const Element* element,
                                                          OutputPlan::Step& step) {
  const Element* found = nullptr;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    if (IsNamed(child, "Value")) continue;
    if (IsNamed(child, "Decisions")) {
      for (const Element* decision : Children(child, "Decision")) {
        const std::string text = RequireAttribute(decision, "value");
        step.decisions.push_back(transform::Value::Text(plan_.pool_.Copy(text)));
      }
      continue;
    }
    if (!transform::IsExpression(child)) RefuseKind(child);
    if (found != nullptr) RefuseContent(child, "there is a second expression");
    found = child;
  }
  return found;
}

void OutputReader::ReadFeature(const Element* element, bool has_expression, OutputField& field,
                               OutputPlan::Step& step) {
  const auto text = FindAttribute(element, "feature");
  if (!text) {
    field.feature = has_expression ? Feature::kExpression : Feature::kPredictedValue;
    if (!has_expression && IsBefore42(root_)) {
      plan_.notes_.push_back(
          {element, "the predicted value for output field " + field.name, "feature-assumed"});
    }
    return;
  }
  const auto* named =
      std::find_if(kFeatures.begin(), kFeatures.end(),
                   [&text](const NamedFeature& feature) { return feature.name == *text; });
  if (named == kFeatures.end()) {
    if (!text->starts_with("x-")) RefuseValue(element, "feature", *text);
    LeaveEmpty(element, field, "the feature " + *text + " is specific to another system");
    return;
  }
  field.feature = named->feature;
  if (field.feature == Feature::kExpression) {
    if (!has_expression) RefuseContent(element, "there is no expression");
    return;
  }
  if (has_expression) {
    plan_.notes_.push_back({element, "output field " + field.name + " has the feature " + *text +
                                         ": its expression is not used"});
  }
  if (field.feature == Feature::kNothing) {
    LeaveEmpty(element, field, "a support vector machine does not compute the feature " + *text);
    return;
  }
  ReadCategory(element, field, step);
}

// What the features need of the model: a category, shares, an interval.
void OutputReader::ReadCategory(const Element* element, OutputField& field,
                                OutputPlan::Step& step) {
  const Scheme& scheme = plan_.targets_.GetScheme();
  const bool regression = scheme.method == Method::kRegression;
  const bool spread = field.feature == Feature::kStandardDeviation ||
                      field.feature == Feature::kIntervalLower ||
                      field.feature == Feature::kIntervalUpper;
  if (spread && !scheme.interval) {
    LeaveEmpty(element, field, "the model holds no standard deviation");
    return;
  }
  if (field.feature == Feature::kResidual) plan_.actual_slot_ = SlotOfActual();
  const bool shares = field.feature == Feature::kProbability ||
                      (field.feature == Feature::kResidual && !regression);
  if (!shares) return;
  if (regression) {
    LeaveEmpty(element, field, "a regression has no probabilities");
    return;
  }
  if (const auto value = FindAttribute(element, "value")) {
    step.category = plan_.targets_.Target().GetCategoryIndexOfText(*value);
    if (step.category < 0) {
      LeaveEmpty(element, field, "the target has no category " + *value,
                 MeantCategory(plan_.targets_.Target(), *value));
      return;
    }
  }
  if (scheme.percentages != Percentages::kNone) return;
  plan_.notes_.push_back({element, "output field " + field.name +
                                       " stays empty: the model computes no probabilities"});
}

// Attributes that ask for something that only documents with several models or targets have.
void OutputReader::CheckReach(const Element* element, OutputField& field) {
  if (field.feature == Feature::kExpression) return;
  const auto target = FindAttribute(element, "targetField");
  if (target && *target != plan_.targets_.Target().GetName() && !target->empty()) {
    LeaveEmpty(element, field, *target + " is not the model's target");
  }
  if (FindAttribute(element, "segmentId")) LeaveEmpty(element, field, "the model has no segments");
  if (FindAttribute(element, "rank").value_or("1") != "1") {
    plan_.notes_.push_back({element, "output field " + field.name + ": rank is not used"});
  }
}

std::optional<FieldType> OutputReader::TypeOf(const Element* element,
                                              const OutputField& field) const {
  for (const char* attribute : {"dataType", "datatype"}) {
    const auto text = FindAttribute(element, attribute);
    if (!text) continue;
    const auto type = ParseDataType(text->starts_with("xs:") ? text->substr(3) : *text);
    if (!type) RefuseValue(element, attribute, *text);
    return type;
  }
  switch (field.feature) {
    case Feature::kPredictedValue:
      return FieldOfTarget().type;
    case Feature::kDisplayValue:
      return FieldType{DataType::kString};
    case Feature::kExpression:
      if (FindAttribute(element, "feature") == "decision") return FieldType{DataType::kString};
      return std::nullopt;
    default:
      return FieldType{DataType::kDouble};
  }
}

// The values of an ordinal field are ordered like its Value children, or like the target's.
void OutputReader::ReadOrder(const Element* element, const OutputField& field) {
  Field known{static_cast<int>(known_.size()), field.type, false, nullptr};
  const auto op_type = FindOpType(element, "optype");
  known.ordinal = op_type == OpType::kOrdinal;
  if (known.ordinal && FindChild(element, "Value") != nullptr) {
    ScoreDictVar listed(field.name, *op_type, field.type.value_or(FieldType{DataType::kString}));
    for (const Element* value : Children(element, "Value")) {
      const std::string text = RequireAttribute(value, "value");
      listed.AddCategory(*listed.ValueFromText(text), text);
    }
    known.order = std::make_shared<const ValueOrder>(listed);
  } else if (field.feature == Feature::kPredictedValue) {
    const Field target = FieldOfTarget();
    known.ordinal = op_type ? known.ordinal : target.ordinal;
    if (known.ordinal) known.order = target.order;
  }
  known_.push_back(std::move(known));
}

void OutputReader::LeaveEmpty(const Element* element, OutputField& field, const std::string& reason,
                              const std::string& meant) {
  field.feature = Feature::kNothing;
  plan_.notes_.push_back(
      {element, "output field " + field.name + " stays empty: " + reason, "results", meant});
}

std::optional<Field> OutputReader::Find(const std::string& name) {
  const auto output = positions_.find(name);
  if (output != positions_.end() && output->second < known_.size()) return known_[output->second];
  if (name == plan_.targets_.Target().GetName()) return FieldOfTarget();
  const auto* dictionary = model_.GetDictionary();
  const ScoreDictVar* input = dictionary != nullptr ? dictionary->FindVar(name) : nullptr;
  const bool hidden = input != nullptr && (!schema_.contains(name) || input->IsHiddenByDerived());
  const auto* transformations = model_.GetTransformationDictionary();
  const ScoreDictVar* derived =
      transformations == nullptr ? nullptr : transformations->FindVar(name);
  if (derived != nullptr && (input == nullptr || hidden)) {
    return FieldOfDerived(*derived);
  }
  if (input != nullptr && (schema_.contains(name) || faults_ != Faults::kRefuse)) {
    return FieldOfInput(*input);
  }
  if (output != positions_.end()) {
    const std::string field = RequireAttribute(current_, "name");
    RefuseContent(current_,
                  output->second == known_.size()
                      ? "output field " + field + " refers to itself"
                      : "output field " + field + " refers to " + name + ", which comes after it");
  }
  return std::nullopt;
}

Field OutputReader::FieldOfTarget() const {
  const ScoreDictVar& target = plan_.targets_.Target();
  Field field{plan_.prediction_slot_, target.GetFieldType(), false, nullptr};
  const bool number = plan_.targets_.GetScheme().method == Method::kRegression;
  if (number && field.type->data == DataType::kString) field.type = FieldType{DataType::kDouble};
  field.ordinal = target.GetTypeCode() == static_cast<int>(OpType::kOrdinal);
  if (field.ordinal && !target.GetCategories().empty()) {
    field.order = std::make_shared<const ValueOrder>(target);
  }
  return field;
}

Field OutputReader::FieldOfInput(const ScoreDictVar& var) {
  const auto known = read_.find(&var);
  if (known != read_.end()) return known->second;
  if (!schema_.contains(var.GetName())) {
    plan_.notes_.push_back(
        {current_, "it reads the field " + var.GetName() +
                       ", which the MiningSchema leaves out: cases may still supply it"});
  }
  Field field{NewSlot(), var.GetFieldType(), false, nullptr};
  field.ordinal = var.GetTypeCode() == static_cast<int>(OpType::kOrdinal);
  if (field.ordinal && !var.GetCategories().empty()) {
    field.order = std::make_shared<const ValueOrder>(var);
  }
  if (model_.GetVarRole(&var) == ScoreModel::kActiveRole) {
    plan_.needed_.push_back(&var);
    plan_.reads_.push_back({&var, field.slot});
  } else {
    plan_.extra_.push_back(&var);
    plan_.extra_reads_.push_back({&var, field.slot});
  }
  read_.emplace(&var, field);
  return field;
}

Field OutputReader::FieldOfDerived(const ScoreDictVar& var) {
  const auto known = read_.find(&var);
  if (known != read_.end()) return known->second;
  Field field{NewSlot(), var.GetFieldType(), false, nullptr};
  field.ordinal = var.GetTypeCode() == static_cast<int>(OpType::kOrdinal);
  plan_.transformations_ = model_.GetTransformationDictionary();
  const auto* step = plan_.transformations_->GetProgram().FindStep(var.GetCasePosition());
  if (field.ordinal && step != nullptr) field.order = step->order;
  plan_.derived_.push_back({static_cast<std::size_t>(var.GetCasePosition()), field.slot});
  read_.emplace(&var, field);
  return field;
}

int OutputReader::SlotOfActual() {
  return FieldOfInput(plan_.targets_.Target()).slot;
}

}  // namespace svmscore::output
