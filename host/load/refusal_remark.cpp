#include "host/load/refusal_remark.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/model/message_codes.h"
#include "host/text/printable.h"
#include "host/xml/attributes.h"
#include "host/xml/elements.h"
#include "host/xml/tags.h"

namespace svmscore {
namespace {

using xercesc::DOMElement;
namespace tags = MCZandor_850::PMMLModelTags;

// The first child whose name ends with that, in any case; null without one.
const DOMElement* ChildEndingWith(const DOMElement* parent, std::string_view ending) {
  const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
  for (const DOMElement* child = FirstElement(parent); child != nullptr;
       child = NextElement(child)) {
    const std::string name = NameOf(child);
    if (name.size() >= ending.size() &&
        std::equal(ending.rbegin(), ending.rend(), name.rbegin(), same)) {
      return child;
    }
  }
  return nullptr;
}

std::string Quoted(const std::string& name) {
  return "\"" + Shortened(name, kLongestInsert) + "\"";
}

std::string OnMissingKernel(const DOMElement* model) {
  const std::string known =
      "LinearKernelType, PolynomialKernelType, RadialBasisKernelType and SigmoidKernelType";
  const DOMElement* kernel = ChildEndingWith(model, "KernelType");
  if (kernel == nullptr) kernel = ChildEndingWith(model, "Kernel");
  if (kernel == nullptr) return "the model has no kernel; there are " + known;
  return "the model has the kernel " + Quoted(NameOf(kernel)) + ", which is none of " + known;
}

std::string OnMissingModel(const DOMElement* root) {
  const DOMElement* model = ChildEndingWith(root, "Model");
  if (model == nullptr) return "the document has no model";
  return "the document has a model of another kind, " + Quoted(NameOf(model)) +
         ", and only support vector machines are scored";
}

const DOMElement* TargetField(const DOMElement* root, const DOMElement* model) {
  const DOMElement* schema = FindChild(model, "MiningSchema");
  const DOMElement* dictionary = FindChild(root, "DataDictionary");
  if (schema == nullptr || dictionary == nullptr) return nullptr;
  for (const DOMElement* field : Children(schema, "MiningField")) {
    const std::string usage = AttributeText(field, "usageType");
    if (usage != "target" && usage != "predicted") continue;
    for (const DOMElement* declared : Children(dictionary, "DataField")) {
      if (AttributeText(declared, "name") == AttributeText(field, "name")) return declared;
    }
  }
  return nullptr;
}

std::size_t CountOf(const DOMElement* parent, const char* name) {
  std::size_t count = 0;
  for ([[maybe_unused]] const DOMElement* child : Children(parent, name)) ++count;
  return count;
}

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string OnTargetsAndMachines(const DOMElement* root, const DOMElement* model) {
  const DOMElement* target = TargetField(root, model);
  if (target == nullptr) {
    return "no field of the data dictionary is the target: a MiningField of the usageType target "
           "or "
           "predicted";
  }
  const std::string name = Quoted(AttributeText(target, "name"));
  const bool continuous = AttributeText(target, "optype") == "continuous";
  const std::size_t machines = CountOf(model, "SupportVectorMachine");
  if (AttributeText(model, "functionName") == "regression") {
    if (!continuous)
      return "the function is regression, and the target " + name + " is not continuous";
    return "a regression has 1 machine, and the model has " + std::to_string(machines);
  }
  if (continuous)
    return "the function is classification, and the target " + name + " is continuous";
  std::size_t categories = 0;
  for (const DOMElement* value : Children(target, "Value")) {
    const std::string property = AttributeText(value, "property");
    if (property.empty() || property == "valid") ++categories;
  }
  if (categories < 2) {
    return "the target " + name + " lists " + Counted(categories, "value") +
           ", and a classification needs 2 or more";
  }
  return "the target " + name + " lists " + std::to_string(categories) +
         " values, for which one against one needs " +
         Counted(categories * (categories - 1) / 2, "machine") + ", and the model has " +
         std::to_string(machines);
}

}  // namespace

std::string RemarkOnRefusal(const MCZandor_850::SSException& error, const PmmlDocument& document) {
  const std::vector<std::string>& parts = error.GetMessageParts();
  const DOMElement* root = document.Dom()->getDocumentElement();
  const DOMElement* model = FindModelElement(document.Dom());
  if (parts.empty() || root == nullptr) return {};
  if (error.GetErrorCode() == code::kChildMissing) {
    if (parts[0] == tags::XML_ELE_SVM_KFTLINEAR) return OnMissingKernel(model);
    if (parts[0] == tags::XML_ELE_SVMMODEL) return OnMissingModel(root);
  }
  const bool of_targets =
      error.GetErrorCode() == code::kInvalidContent && parts[0] == tags::XML_ELE_TARGETS;
  return of_targets && model != nullptr ? OnTargetsAndMachines(root, model) : "";
}

}  // namespace svmscore
