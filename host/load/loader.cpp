#include "host/load/loader.h"

#include <unordered_set>
#include <utility>

#include "host/load/vector_limits.h"
#include "host/model/instruction_set.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/derived_fields.h"
#include "host/transform/transformation_dictionary.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace {

using MCZandor_850::BaseTranslator;
using MCZandor_850::PMMLTranslator;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::SSException;
using MCZandor_850::TransformationDictionary;
using xercesc::DOMElement;

std::unique_ptr<ScoreModel> Translate(BaseTranslator& translator, const PmmlDocument& document) {
  try {
    return std::unique_ptr<ScoreModel>(translator.ParseFromTree(document.Dom(), "UTF-8"));
  } catch (SSException& error) {
    if (error.GetElement() == nullptr && error.GetPlace().empty()) {
      error.SetElement(translator.GetLastElement());
    }
    throw;
  }
}

// The element whose derived fields a translator uses, or null: only documents of versions 3 and 4
// have any, and those of the document hide those of the model.
DOMElement* TransformationsInForce(const PmmlDocument& document) {
  const DOMElement* root = document.Dom()->getDocumentElement();
  const std::string version = FindAttribute(root, "version").value_or("");
  if (!version.starts_with('3') && !version.starts_with('4')) return nullptr;
  DOMElement* global = FindChild(root, "TransformationDictionary");
  if (global != nullptr) return global;
  return FindChild(FindModelElement(document.Dom()), "LocalTransformations");
}

// A translator drops transformations that cannot be built without a word; here the reason is
// thrown.
void CheckTransformations(const ScoreModel& model, const PmmlDocument& document) {
  DOMElement* element = TransformationsInForce(document);
  if (element == nullptr || model.GetTransformationDictionary() != nullptr) return;
  PMMLTranslator translator("SupportVectorMachineModel");
  const std::unique_ptr<TransformationDictionary> built(
      translator.HandleTransformationDictionary(element, model.GetDictionary()));
}

// What a vector field is called, by its kind of element.
std::string FieldName(const DOMElement* field) {
  const bool reference = NameOf(field) == "FieldRef";
  return FindAttribute(field, reference ? "field" : "name").value_or("");
}

// The kinds that count days or seconds are numbers; a day, a clock time and a moment are none.
bool IsNumeric(const ScoreDictVar& var) {
  switch (var.GetFieldType().data) {
    case DataType::kString:
    case DataType::kDate:
    case DataType::kTime:
    case DataType::kDateTime:
      return false;
    default:
      return true;
  }
}

// The dictionary variables that vector fields name; refuses those that name nothing, and texts and
// dates that would have to serve as numbers.
std::unordered_set<const ScoreDictVar*> CheckVectorFields(const ScoreModel& model,
                                                          const PmmlDocument& document,
                                                          bool refuse) {
  std::unordered_set<const ScoreDictVar*> named;
  const DOMElement* vectors = FindChild(FindModelElement(document.Dom()), "VectorDictionary");
  const TransformationDictionary* derived = model.GetTransformationDictionary();
  for (DOMElement* field = FirstElement(FindChild(vectors, "VectorFields")); field != nullptr;
       field = NextElement(field)) {
    const bool reference = NameOf(field) == "FieldRef";
    if (!reference && NameOf(field) != "CategoricalPredictor") continue;
    const std::string name = FieldName(field);
    const ScoreDictVar* var =
        model.GetDictionary() == nullptr ? nullptr : model.GetDictionary()->FindVar(name);
    if (var != nullptr) {
      named.insert(var);
    } else if (derived != nullptr) {
      var = derived->FindVar(name);
    }
    if (!refuse) continue;
    if (var == nullptr) ThrowAt(field, code::kUnknownField, name, NameOf(field));
    if (reference && !IsNumeric(*var)) {
      ThrowAt(field, code::kFieldNotNumeric, name,
              std::string(DataTypeName(var->GetFieldType().data)), NameOf(field));
    }
  }
  return named;
}

void ReadOutput(LoadedModel& loaded, bool refuse) {
  try {
    loaded.output = std::make_unique<output::OutputPlan>(*loaded.model, loaded.document.Dom());
  } catch (const SSException&) {
    if (refuse) throw;
  }
}

void CollectInputs(LoadedModel& loaded, std::unordered_set<const ScoreDictVar*> needed) {
  if (loaded.output != nullptr) {
    for (const ScoreDictVar* var : loaded.output->NeededInputs()) needed.insert(var);
  }
  const TransformationDictionary* derived = loaded.model->GetTransformationDictionary();
  if (derived != nullptr) {
    for (const ScoreDictVar* var : derived->GetProgram().NeededInputs()) needed.insert(var);
  }
  if (loaded.model->GetDictionary() == nullptr) return;
  bool replaces = false;
  for (const ScoreDictVar* var : loaded.model->GetDictionary()->GetVariables()) {
    const bool active = loaded.model->GetVarRole(var) == ScoreModel::kActiveRole;
    if (active) loaded.active.push_back(var);
    if (needed.contains(var)) loaded.needed.push_back(var);
    replaces = replaces || (active && var->GetMissingReplacement() != nullptr);
  }
  // Replacements that the mining schema attached count like those that the translator read.
  if (replaces) loaded.model->SetMissingValuePolicy(ScoreModel::kReplaceMissing);
}

IntakeMode ModeOf(LoadChecks checks) {
  switch (checks) {
    case LoadChecks::kTolerate:
      return IntakeMode::kTolerate;
    case LoadChecks::kStrict:
      return IntakeMode::kStrict;
    case LoadChecks::kRefuse:
      break;
  }
  return IntakeMode::kRefuse;
}

}  // namespace

LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document, LoadChecks checks) {
  RequireChosenIsa();
  LoadedModel loaded{std::move(document), plugin.GiveTranslator(), nullptr, {}, {}, {}, nullptr};
  try {
    loaded.findings = MakeReadable(loaded.document, ModeOf(checks));
    CheckEntries(loaded.document.Dom());
    loaded.model = Translate(*loaded.translator, loaded.document);
    const bool refuse = checks != LoadChecks::kTolerate;
    if (refuse) CheckTransformations(*loaded.model, loaded.document);
    ReadOutput(loaded, refuse);
    CollectInputs(loaded, CheckVectorFields(*loaded.model, loaded.document, refuse));
  } catch (SSException& error) {
    loaded.document.Locate(error);
    throw;
  }
  return loaded;
}

}  // namespace svmscore
