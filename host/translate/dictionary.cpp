// PMMLTranslator::ParseDictionary and HandleTargets: declarations become variables.
#include <memory>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/field_text.h"
#include "host/translate/mining_schema.h"
#include "host/translate/translator.h"
#include "host/xml/attributes.h"
#include "host/xml/transcoder.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;
using svmscore::Children;
using svmscore::FindAttribute;
using svmscore::OpType;
using svmscore::ReadInterval;
using svmscore::RefuseValue;
using svmscore::RequireAttribute;
using xercesc::DOMElement;

void ReadValue(const DOMElement* element, ScoreDictVar& var) {
  const std::string text = RequireAttribute(element, "value");
  const std::string property = FindAttribute(element, "property").value_or("valid");
  if (property == "missing") {
    var.DeclareMissing(text);
  } else if (property == "invalid") {
    var.DeclareInvalid(text);
  } else if (property == "valid") {
    if (var.ValueFromText(text)->IsInvalid()) RefuseValue(element, "value", text);
    var.DeclareCategory(text, FindAttribute(element, "displayValue").value_or(""));
  } else {
    RefuseValue(element, "property", property);
  }
}

std::unique_ptr<ScoreDictVar> ReadField(const DOMElement* element) {
  const std::string name = RequireAttribute(element, "name");
  const std::string op_text = RequireAttribute(element, "optype");
  const auto op_type = svmscore::ParseOpType(op_text);
  if (!op_type) RefuseValue(element, "optype", op_text);
  // The oldest documents may omit the data type.
  const std::string type_text =
      FindAttribute(element, "dataType")
          .value_or(*op_type == OpType::kContinuous ? "double" : "string");
  const auto type = svmscore::ParseDataType(type_text);
  if (!type) RefuseValue(element, "dataType", type_text);
  auto var = std::make_unique<ScoreDictVar>(name, *op_type, *type);
  for (const DOMElement* value : Children(element, "Value")) ReadValue(value, *var);
  for (const DOMElement* range : Children(element, "Interval")) {
    var->DeclareInterval(ReadInterval(range));
  }
  return var;
}

}  // namespace

ScoreDictionary* PMMLTranslator::ParseDictionary(xercesc::DOMNode* data_dictionary,
                                                 bool with_mining_schema) {
  auto* element = dynamic_cast<DOMElement*>(data_dictionary);
  if (element == nullptr) return nullptr;
  auto dictionary = std::make_shared<BaseDictionary>();
  for (const DOMElement* field : Children(element, "DataField")) {
    std::unique_ptr<ScoreDictVar> var = ReadField(field);
    const std::string name = var->GetName();
    if (!dictionary->AddVar(std::move(var))) {
      svmscore::ThrowAt(field, code::kDuplicateName, name, "DataField");
    }
  }
  if (with_mining_schema) {
    const DOMElement* model = svmscore::FindModelElement(element->getOwnerDocument());
    svmscore::ApplyMiningSchema(svmscore::FindChild(model, "MiningSchema"), *dictionary);
  }
  dictionary_ = std::move(dictionary);
  return dictionary_.get();
}

void PMMLTranslator::HandleTargets(DOMElement* targets, ScoreDictionary* dictionary) {
  if (targets == nullptr || dictionary == nullptr) return;
  for (const DOMElement* target : Children(targets, "Target")) {
    const std::optional<std::string> name = FindAttribute(target, "field");
    ScoreDictVar* var = name ? dictionary->FindVar(*name) : nullptr;
    if (var == nullptr) continue;
    if (const auto text = FindAttribute(target, "optype")) {
      const auto op_type = svmscore::ParseOpType(*text);
      if (!op_type) RefuseValue(target, "optype", *text);
      var->SetOpType(*op_type);
    }
    for (const DOMElement* value : Children(target, "TargetValue")) {
      const auto text = FindAttribute(value, "value");
      if (!text) continue;
      // A target whose declaration lists no categories gets them here.
      if (var->DeclaresNoValues()) var->AddCategory(*var->ValueFromText(*text), *text);
      auto display = FindAttribute(value, "displayValue");
      if (!display) display = FindAttribute(value, "rawDataValue");
      const int category = var->GetCategoryIndexOfText(*text);
      if (display && category >= 0) {
        var->SetCategoryDisplay(static_cast<std::size_t>(category), *display);
      }
    }
  }
}

}  // namespace MCZandor_850
