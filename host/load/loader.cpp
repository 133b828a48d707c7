#include "host/load/loader.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "host/load/refusal_remark.h"
#include "host/load/vector_limits.h"
#include "host/model/instruction_set.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/derived_fields.h"
#include "host/transform/transformation_dictionary.h"
#include "host/xml/array_numbers.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace {

using MCZandor_850::BaseTranslator;
using MCZandor_850::PMMLTranslator;
using MCZandor_850::ScoreDictionary;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::SSException;
using MCZandor_850::TransformationDictionary;
using xercesc::DOMElement;

std::unique_ptr<ScoreModel> Translate(BaseTranslator& translator, const PmmlDocument& document) {
  try {
    if (ArrayNumbers* numbers = ArrayNumbers::Of(document.Dom()->getDocumentElement())) {
      if (dynamic_cast<ReadsArrayNumbers*>(&translator) == nullptr) numbers->PutBackAll();
      numbers->LetGo();
    }
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

// A translator silently drops transformations that cannot be built; here the reason is thrown.
void CheckTransformations(const ScoreModel& model, const PmmlDocument& document) {
  DOMElement* element = TransformationsInForce(document);
  if (element == nullptr || model.GetTransformationDictionary() != nullptr) return;
  PMMLTranslator translator("SupportVectorMachineModel");
  const std::unique_ptr<TransformationDictionary> built(
      translator.HandleTransformationDictionary(element, model.GetDictionary()));
}

// Adds a finding about `what`, or refuses it; with a remark, which may be empty.
void TellFinding(LoadedModel& loaded, bool strict, KindOfFinding kind, const DOMElement* at,
                 const std::string& what, const std::string& remark = {}) {
  const std::vector<std::string> parts = {what, NameOf(at)};
  if (strict && kind->IsRefusedWhenStrict()) RefuseStrictly(*kind, at, parts, remark);
  loaded.findings.push_back(
      {kind, {NameOf(at), loaded.document.LineOf(at)}, DetailOf(*kind, parts, remark)});
}

// What is wrong, in words that "in element NAME" may follow.
std::string WhatOf(const SSException& reason) {
  switch (reason.GetErrorCode()) {
    case code::kBadContent:
      return reason.GetMessageParts().front();
    case code::kUnknownField:
      return "the field " + reason.GetMessageParts().front() + ", which does not exist,";
    default:
      return reason.what();
  }
}

// The fields that a mining schema lists.
std::unordered_set<std::string> DeclaredNames(const DOMElement* schema) {
  std::unordered_set<std::string> declared;
  for (const DOMElement* field : Children(schema, "MiningField")) {
    declared.insert(AttributeText(field, "name"));
  }
  return declared;
}

// Reports derived fields that are not computed as written, or refuses them, and makes inputs of the
// fields that the model reads although its mining schema leaves them out.
void TellTransformations(LoadedModel& loaded, bool strict) {
  const TransformationDictionary* derived = loaded.model->GetTransformationDictionary();
  if (derived == nullptr) return;
  // To look for what is meant takes long in a document of many fields.
  constexpr int kSuggested = 5;
  int suggested = 0;
  for (const transform::Remark& remark : derived->Remarks()) {
    const bool left_out = remark.kind == transform::Remark::Kind::kNotComputed;
    const SSException& reason = remark.reason;
    const bool unknown = reason.GetErrorCode() == code::kUnknownField && ++suggested <= kSuggested;
    TellFinding(
        loaded, strict,
        left_out ? KindOfFinding("derived-field-left-out") : KindOfFinding("input-not-in-schema"),
        reason.GetElement(), WhatOf(reason),
        unknown ? MeantField(reason.GetMessageParts().front(), loaded.document) : "");
  }
  const DOMElement* model = FindModelElement(loaded.document.Dom());
  const DOMElement* schema = FindChild(model, "MiningSchema");
  if (schema == nullptr) return;
  const std::unordered_set<std::string> declared = DeclaredNames(schema);
  for (const ScoreDictVar* var : derived->GetProgram().NeededInputs()) {
    if (!declared.contains(var->GetName())) {
      loaded.model->SetVarRole(var, ScoreModel::kActiveRole);
    }
  }
}

// How messages call a vector field, by its kind of element.
std::string FieldName(const DOMElement* field) {
  const bool reference = NameOf(field) == "FieldRef";
  return FindAttribute(field, reference ? "field" : "name").value_or("");
}

// Reports vector fields that the mining schema leaves out, or refuses them.
void TellVectorFields(LoadedModel& loaded, bool strict) {
  const DOMElement* model = FindModelElement(loaded.document.Dom());
  const DOMElement* schema = FindChild(model, "MiningSchema");
  const ScoreDictionary* dictionary = loaded.model->GetDictionary();
  if (schema == nullptr || dictionary == nullptr) return;
  const std::unordered_set<std::string> declared = DeclaredNames(schema);
  const DOMElement* vectors = FindChild(model, "VectorDictionary");
  for (const DOMElement* field = FirstElement(FindChild(vectors, "VectorFields")); field != nullptr;
       field = NextElement(field)) {
    const std::string name = FieldName(field);
    if (declared.contains(name) || dictionary->FindVar(name) == nullptr) continue;
    TellFinding(loaded, strict, "input-not-in-schema", field,
                "the field " + name + ", which is a vector field and the MiningSchema leaves out,");
  }
}

// Types that count days or seconds are numbers; dates, times and both together are not.
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

// The dictionary variables that vector fields name; refuses names that no variable has, and texts
// and dates where numbers are needed.
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

void ReadOutput(LoadedModel& loaded, LoadChecks checks) {
  const bool strict = checks == LoadChecks::kStrict;
  const auto faults = strict || checks == LoadChecks::kRefuse ? output::Faults::kRefuseNames
                                                              : output::Faults::kTell;
  loaded.output = std::make_unique<output::OutputPlan>(*loaded.model, loaded.document.Dom(), faults,
                                                       checks == LoadChecks::kAsIs);
  for (const output::Note& note : loaded.output->Notes()) {
    TellFinding(loaded, strict, note.kind, note.element, note.text, note.meant);
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
  return checks == LoadChecks::kStrict ? IntakeMode::kStrict : IntakeMode::kTolerate;
}

bool SaysTheSame(const SSException& one, const SSException& other) {
  return one.GetErrorCode() == other.GetErrorCode() &&
         one.GetMessageParts() == other.GetMessageParts();
}

// Which part of the system refuses a document.
enum class Judge { kTranslator, kHost };

void TranslateReadable(LoadedModel& loaded, const std::optional<SSException>& refused) {
  try {
    loaded.model = Translate(*loaded.translator, loaded.document);
  } catch (SSException& error) {
    loaded.document.Locate(error);
    ExplainRefusal(error, loaded.document);
    if (refused && !SaysTheSame(*refused, error)) {
      error.AddRemark(std::string("besides, ") + refused->what());
    }
    throw;
  }
}

// `judge` is the part that has the document at present.
LoadedModel Load(const Plugin& plugin, PmmlDocument document, LoadChecks checks, Judge& judge) {
  RequireChosenIsa();
  LoadedModel loaded{std::move(document), plugin.GiveTranslator(), nullptr, {}, {}, {}, nullptr};
  const bool as_is = checks == LoadChecks::kAsIs;
  const bool refuses = !as_is && checks != LoadChecks::kTolerate;
  try {
    judge = Judge::kHost;
    std::optional<SSException> refused;
    if (!as_is) loaded.findings = MakeReadable(loaded.document, ModeOf(checks), &refused);
    CheckEntries(loaded.document.Dom());
    // An error of the translator comes first: no other error may hide its code.
    judge = Judge::kTranslator;
    TranslateReadable(loaded, refused);
    judge = Judge::kHost;
    if (refused && refuses) throw SSException(*refused);
    if (refuses) CheckTransformations(*loaded.model, loaded.document);
    if (!as_is) TellTransformations(loaded, checks == LoadChecks::kStrict);
    if (!as_is) TellVectorFields(loaded, checks == LoadChecks::kStrict);
    ReadOutput(loaded, checks);
    CollectInputs(loaded, CheckVectorFields(*loaded.model, loaded.document, refuses));
    if (auto* model = dynamic_cast<BatchModel*>(loaded.model.get())) model->SetFiniteOnly(!as_is);
  } catch (SSException& error) {
    if (error.GetPlace().empty()) {
      loaded.document.Locate(error);
      if (judge == Judge::kHost) ExplainRefusal(error, loaded.document);
    }
    throw;
  }
  return loaded;
}

// The document as it is written, for a default reading that ends in `error`.
LoadedModel LoadLetter(const Plugin& plugin, PmmlDocument document, const SSException& error,
                       Judge judge) {
  Judge unused = Judge::kTranslator;
  std::optional<LoadedModel> letter;
  try {
    letter.emplace(Load(plugin, std::move(document), LoadChecks::kAsIs, unused));
  } catch (SSException& own) {
    if (judge == Judge::kTranslator) throw SSException(error);
    if (!SaysTheSame(own, error)) {
      own.AddRemark(std::string("besides, ") + error.what());
    }
    throw;
  }
  if (judge == Judge::kHost) {
    SSException refused(error);
    refused.SetRemedy(refused.GetRemedy() +
                      "; --as-is scores it all the same, but not as its author meant");
    throw refused;
  }
  const DOMElement* root = letter->document.Dom()->getDocumentElement();
  letter->findings.push_back(
      {"read-to-the-letter", {NameOf(root), letter->document.LineOf(root)}, error.what()});
  if (auto* model = dynamic_cast<BatchModel*>(letter->model.get())) model->SetFiniteOnly(true);
  return *std::move(letter);
}

}  // namespace

LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document, LoadChecks checks) {
  Judge unused = Judge::kHost;
  return Load(plugin, std::move(document), checks, unused);
}

LoadedModel LoadModel(const Plugin& plugin, const std::function<PmmlDocument()>& parse,
                      LoadChecks checks) {
  PmmlDocument document = parse();
  Judge judge = Judge::kHost;
  std::optional<SSException> refused;
  try {
    return Load(plugin, std::move(document), checks, judge);
  } catch (const SSException& error) {
    // What is refused in any case is refused with the same words, however strict the reading is.
    if (checks == LoadChecks::kStrict) LoadModel(plugin, parse, LoadChecks::kRefuse);
    if (checks != LoadChecks::kRefuse) throw;
    refused = error;
  }
  return LoadLetter(plugin, parse(), *refused, judge);
}

}  // namespace svmscore
