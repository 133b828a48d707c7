#include "host/load/refusal_remark.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/model/message_codes.h"
#include "host/text/printable.h"
#include "host/text/similar_name.h"
#include "host/xml/attributes.h"
#include "host/xml/elements.h"
#include "host/xml/tags.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;
using xercesc::DOMElement;
namespace tags = MCZandor_850::PMMLModelTags;

constexpr const char* kModel = "SupportVectorMachineModel";
constexpr const char* kKernels =
    "LinearKernelType, PolynomialKernelType, RadialBasisKernelType or SigmoidKernelType";
// So many pairs of categories are named.
constexpr std::size_t kShownPairs = 5;

std::string Quoted(const std::string& name) {
  return "\"" + Shortened(name, kLongestInsert) + "\"";
}

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool IsMadeOf(const std::string& name, const std::string& input) {
  constexpr std::string_view kBetween = "_.- ";
  if (input.empty() || name.size() < input.size() + 2) return false;
  const auto is_between = [kBetween](char c) { return kBetween.find(c) != std::string::npos; };
  return (name.ends_with(input) && is_between(name[name.size() - input.size() - 1])) ||
         (name.starts_with(input) && is_between(name[input.size()]));
}

std::vector<std::string> FieldNames(const DOMElement* root, const DOMElement* model) {
  std::vector<std::string> names;
  const auto add = [&names](const DOMElement* list, const char* kind) {
    for (const DOMElement* field : Children(list, kind)) {
      names.push_back(AttributeText(field, "name"));
    }
  };
  add(FindChild(root, "DataDictionary"), "DataField");
  add(FindChild(root, "TransformationDictionary"), "DerivedField");
  add(FindChild(model, "LocalTransformations"), "DerivedField");
  return names;
}

class Refusal {
 public:
  Refusal(SSException& error, const PmmlDocument& document)
      : error_(error),
        document_(document),
        root_(document.Dom()->getDocumentElement()),
        model_(FindModelElement(document.Dom())) {}

  void Explain() {
    const std::vector<std::string>& parts = error_.GetMessageParts();
    if (parts.empty() || root_ == nullptr) return;
    switch (error_.GetErrorCode()) {
      case code::kChildMissing:
        if (parts[0] == tags::XML_ELE_SVM_KFTLINEAR && model_ != nullptr) return OfKernel();
        if (parts[0] == tags::XML_ELE_SVMMODEL) return OfModel();
        return;
      case code::kInvalidContent:
        if (parts[0] == tags::XML_ELE_TARGETS && model_ != nullptr) return OfTarget();
        return;
      case code::kUnknownField:
        if (!error_.HasRemark()) Remark(MeantField(parts[0], document_));
        return;
      default:
        return;
    }
  }

 private:
  // Where there is no better place, `at` is null.
  void Say(std::string sentence, const DOMElement* at, std::string remedy) {
    const DOMElement* place = at != nullptr ? at : model_ != nullptr ? model_ : root_;
    error_.Restate(std::move(sentence));
    error_.SetElement(place);
    document_.Locate(error_);
    error_.SetRemedy(std::move(remedy));
  }

  void Remark(const std::string& meant) {
    if (!meant.empty()) error_.AddRemark(meant);
  }
  void Suggest(const std::string& name, const std::vector<std::string>& candidates) {
    Remark(DidYouMean(name, candidates));
  }

  void OfKernel() {
    for (const DOMElement* child = FirstElement(model_); child != nullptr;
         child = NextElement(child)) {
      const std::string name = NameOf(child);
      const std::string plain = PlainName(name);
      if (plain.find("kernel") == std::string::npos) continue;
      Say(Quoted(name) + " is no kernel that is computed", child,
          std::string("write ") + kKernels + ", or train with one of these kernels");
      constexpr std::array<std::pair<const char*, const char*>, 6> kMeant = {
          {{"linear", "LinearKernelType"},
           {"poly", "PolynomialKernelType"},
           {"radial", "RadialBasisKernelType"},
           {"rbf", "RadialBasisKernelType"},
           {"gauss", "RadialBasisKernelType"},
           {"sigmoid", "SigmoidKernelType"}}};
      for (const auto& [word, meant] : kMeant) {
        if (plain.find(word) == std::string::npos) continue;
        return error_.AddRemark("did you mean \"" + std::string(meant) + "\"?");
      }
      return Suggest(name, {"LinearKernelType", "PolynomialKernelType", "RadialBasisKernelType",
                            "SigmoidKernelType"});
    }
    Say("the model has no kernel", nullptr,
        std::string("add ") + kKernels + ", or export the model again");
  }

  void OfModel() {
    const DOMElement* other = nullptr;
    for (const DOMElement* child = FirstElement(root_); child != nullptr;
         child = NextElement(child)) {
      const std::string name = NameOf(child);
      if (!SimilarName(name, {kModel}).empty()) {
        Say(Quoted(name) + " is no element of PMML", child,
            std::string("write ") + kModel + " in both tags");
        return Suggest(name, {kModel});
      }
      if (other == nullptr && PlainName(name).ends_with("model")) other = child;
    }
    if (other == nullptr && PlainName(NameOf(root_)) == "html") {
      return Say("the document is a page of HTML", root_,
                 "save the document itself, not a page that shows it");
    }
    if (other == nullptr) {
      return Say("the document has no model", nullptr,
                 std::string("export a model again with a producer that writes a ") + kModel);
    }
    if (Holds(other, kModel)) {
      return Say(std::string("the ") + kModel + " is inside the " + Quoted(NameOf(other)) +
                     ", and only a model of its own is scored",
                 other, "export the support vector machine by itself");
    }
    Say("the document has a model of another kind, " + Quoted(NameOf(other)) +
            ", and only support vector machines are scored",
        other, std::string("give a document with a ") + kModel);
  }

  static bool Holds(const DOMElement* parent, const std::string& name) {
    for (const DOMElement* child = FirstElement(parent); child != nullptr;
         child = NextElement(child)) {
      if (NameOf(child) == name || (NameOf(child) != "Extension" && Holds(child, name)))
        return true;
    }
    return false;
  }

  void OfTarget() {
    const DOMElement* field = TargetField();
    if (field == nullptr) return OfNoTarget();
    const std::string name = Quoted(AttributeText(field, "name"));
    const bool continuous = AttributeText(field, "optype") == "continuous";
    const std::size_t machines = Machines().size();
    if (AttributeText(model_, "functionName") == "regression") {
      if (!continuous) {
        return Say("the function is regression, and the target " + name + " is not continuous",
                   field, "write optype=\"continuous\", or functionName=\"classification\"");
      }
      return Say("a regression has 1 machine, and the model has " + std::to_string(machines),
                 nullptr, "correct functionName, or leave 1 SupportVectorMachine");
    }
    if (continuous) {
      return Say("the function is classification, and the target " + name + " is continuous", field,
                 "write optype=\"categorical\", or functionName=\"regression\"");
    }
    OfCategories(field, name, machines);
  }

  // No MiningField is the target: one whose usageType is a slip, or that has the machines'
  // categories, may have to be.
  void OfNoTarget() {
    const std::string what = "no field is the target";
    const std::string remedy = "write usageType=\"target\" in the MiningField of the target";
    const DOMElement* schema = FindChild(model_, "MiningSchema");
    for (const DOMElement* field : Children(schema, "MiningField")) {
      const std::string usage = AttributeText(field, "usageType");
      if (SimilarName(usage, {"target", "predicted"}).empty()) continue;
      if (DictionaryField(AttributeText(field, "name")) == nullptr) {
        const std::string name = AttributeText(field, "name");
        Say(what + ": the data dictionary does not declare " + Quoted(name), field,
            "correct the name, or declare the field");
        return Remark(MeantField(name, document_));
      }
      Say(what + ": " + Quoted(usage) + " of the MiningField " +
              Quoted(AttributeText(field, "name")) + " is no usageType",
          field, "write usageType=\"target\"");
      return Suggest(usage, {"target", "predicted"});
    }
    const std::set<std::string> named = NamedCategories();
    for (const DOMElement* field : Children(FindChild(root_, "DataDictionary"), "DataField")) {
      const std::vector<std::string> values = ValidValues(field);
      if (values.empty() || !std::all_of(values.begin(), values.end(), [&named](const auto& value) {
            return named.contains(value);
          })) {
        continue;
      }
      const std::string name = AttributeText(field, "name");
      for (const DOMElement* use : Children(schema, "MiningField")) {
        if (AttributeText(use, "name") != name) continue;
        return Say(what + "; it may be " + Quoted(name) + ", which has the machines' categories",
                   use, "write usageType=\"target\" in this MiningField");
      }
      return Say(what + "; it may be " + Quoted(name) +
                     ", which has the machines' categories and no MiningField",
                 schema, "add a MiningField of that name, with usageType=\"target\"");
    }
    Say(what, schema, remedy);
  }

  void OfCategories(const DOMElement* field, const std::string& name, std::size_t machines) {
    const std::vector<std::string> listed = ValidValues(field);
    const std::set<std::string> categories(listed.begin(), listed.end());
    for (const std::string& category : NamedCategories()) {
      if (categories.contains(category)) continue;
      Say("machines decide for the category " + Quoted(category) + ", which the target " + name +
              " does not list",
          field, "add a Value for it, or correct the machines");
      return Suggest(category, listed);
    }
    if (categories.size() < 2) {
      return Say("the target " + name + " lists " + Counted(categories.size(), "value") +
                     ", and a classification needs 2 or more",
                 field, "list the categories of the target");
    }
    const std::size_t needed = categories.size() * (categories.size() - 1) / 2;
    const std::string counts =
        "the target " + name + " lists " + std::to_string(categories.size()) +
        " values, for which one against one needs " + Counted(needed, "machine") +
        ", and the model has " + std::to_string(machines);
    const std::string lacking = PairsWithoutMachine(categories, needed);
    if (lacking.empty()) return Say(counts, nullptr, "leave one machine for each pair");
    Say("no machine decides between " + lacking + ": " + counts, nullptr,
        "add the machine of each pair, or export the model again");
  }

  std::string PairsWithoutMachine(const std::set<std::string>& categories,
                                  std::size_t needed) const {
    std::set<std::pair<std::string, std::string>> pairs;
    for (const DOMElement* machine : Machines()) {
      std::string first = AttributeText(machine, "targetCategory");
      std::string second = AttributeText(machine, "alternateTargetCategory");
      if (first.empty() || second.empty() || first == second) return {};
      if (second < first) std::swap(first, second);
      pairs.emplace(std::move(first), std::move(second));
    }
    if (pairs.size() >= needed) return {};
    std::size_t shown = 0;
    std::string text;
    for (auto a = categories.begin(); a != categories.end(); ++a) {
      for (auto b = std::next(a); b != categories.end(); ++b) {
        if (pairs.contains({*a, *b})) continue;
        if (shown++ == kShownPairs) {
          return text + " and " + std::to_string(needed - pairs.size() - kShownPairs) + " more";
        }
        text += (text.empty() ? "" : ", ") + Quoted(*a) + " and " + Quoted(*b);
      }
    }
    return text;
  }

  std::vector<const DOMElement*> Machines() const {
    std::vector<const DOMElement*> machines;
    for (const DOMElement* machine : Children(model_, "SupportVectorMachine")) {
      machines.push_back(machine);
    }
    return machines;
  }

  std::set<std::string> NamedCategories() const {
    std::set<std::string> named;
    for (const DOMElement* machine : Machines()) {
      for (const char* attribute : {"targetCategory", "alternateTargetCategory"}) {
        named.insert(AttributeText(machine, attribute));
      }
    }
    named.erase("");
    return named;
  }

  static std::vector<std::string> ValidValues(const DOMElement* field) {
    std::vector<std::string> values;
    for (const DOMElement* value : Children(field, "Value")) {
      const std::string property = AttributeText(value, "property");
      if (property.empty() || property == "valid") values.push_back(AttributeText(value, "value"));
    }
    return values;
  }

  const DOMElement* DictionaryField(const std::string& name) const {
    for (const DOMElement* field : Children(FindChild(root_, "DataDictionary"), "DataField")) {
      if (AttributeText(field, "name") == name) return field;
    }
    return nullptr;
  }

  const DOMElement* TargetField() const {
    for (const DOMElement* field : Children(FindChild(model_, "MiningSchema"), "MiningField")) {
      const std::string usage = AttributeText(field, "usageType");
      if (usage != "target" && usage != "predicted") continue;
      if (const DOMElement* declared = DictionaryField(AttributeText(field, "name"))) {
        return declared;
      }
    }
    return nullptr;
  }

  SSException& error_;
  const PmmlDocument& document_;
  const DOMElement* root_;
  const DOMElement* model_;
};

}  // namespace

// A vector field is not meant by a second name, and a name that is made of an input's, as that of a
// scaled field is, does not mean the input: it would be scored unscaled.
std::string MeantField(const std::string& name, const PmmlDocument& document) {
  const DOMElement* root = document.Dom()->getDocumentElement();
  const DOMElement* model = FindModelElement(document.Dom());
  std::set<std::string> used;
  const DOMElement* vectors = FindChild(FindChild(model, "VectorDictionary"), "VectorFields");
  for (const DOMElement* field : Children(vectors, "FieldRef")) {
    used.insert(AttributeText(field, "field"));
  }
  if (!used.contains(name)) used.clear();
  std::string computed_from;
  for (const DOMElement* field : Children(FindChild(root, "DataDictionary"), "DataField")) {
    const std::string input = AttributeText(field, "name");
    if (!IsMadeOf(name, input)) continue;
    used.insert(input);
    computed_from = input;
  }
  std::vector<std::string> names = FieldNames(root, model);
  std::erase_if(names, [&used](const std::string& other) { return used.contains(other); });
  std::string meant = DidYouMean(name, names);
  if (!meant.empty() || computed_from.empty()) return meant;
  return "the DerivedField that computes it from " + Quoted(computed_from) + " may be lost";
}

void ExplainRefusal(SSException& error, const PmmlDocument& document) {
  Refusal(error, document).Explain();
}

}  // namespace svmscore
