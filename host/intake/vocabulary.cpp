// The elements and attributes that a document may hold. Nothing else is read, although the author
// may have relied on it.
#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/intake/steps.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

struct Definition {
  const char* name;
  const char* attributes;
  // A star marks those that may come more than once; % means any expression, a single ? anything,
  // and a single ! a text that includes the texts of elements.
  const char* children = "";
};

// Elements without content that is read have no definition. Extensions are allowed anywhere. A
// single ? for the attributes means any attribute: kernel_parameters.cpp checks those of kernels.
constexpr std::array kDefinitions = {
    Definition{"PMML", "version",
               "Header MiningBuildTask DataDictionary TransformationDictionary*"},
    Definition{"DataDictionary", "numberOfFields", "DataField* Taxonomy*"},
    Definition{"DataField", "name displayName optype dataType datatype taxonomy isCyclic",
               "Interval* Value*"},
    Definition{"Value", "value displayValue property"},
    Definition{"Interval", "closure leftMargin rightMargin"},
    Definition{"SupportVectorMachineModel",
               "modelName functionName algorithmName svmRepresentation threshold "
               "classificationMethod maxWins isScorable alternateBinaryTargetCategory",
               "MiningSchema Output ModelStats ModelExplanation Targets LocalTransformations* "
               "LinearKernelType* PolynomialKernelType* RadialBasisKernelType* SigmoidKernelType* "
               "VectorDictionary SupportVectorMachine* ModelVerification"},
    Definition{"MiningSchema", "", "MiningField*"},
    Definition{"MiningField",
               "name usageType optype importance outliers lowValue highValue "
               "missingValueReplacement missingValueTreatment invalidValueTreatment "
               "invalidValueReplacement"},
    Definition{"Targets", "", "Target*"},
    Definition{"Target", "field optype castInteger min max rescaleConstant rescaleFactor",
               "TargetValue*"},
    Definition{"TargetValue", "value displayValue rawDataValue priorProbability defaultValue",
               "Partition"},
    Definition{"Output", "", "OutputField*"},
    Definition{"OutputField",
               "name displayName optype dataType datatype targetField feature value ruleFeature "
               "algorithm rank rankBasis rankOrder isMultiValued segmentId isFinalResult",
               "Decisions Value* %"},
    Definition{"Decisions", "businessProblem description", "Decision*"},
    Definition{"Decision", "value displayValue description"},
    Definition{"TransformationDictionary", "", "DefineFunction* DerivedField*"},
    Definition{"LocalTransformations", "", "DefineFunction* DerivedField*"},
    Definition{"DerivedField", "name displayName optype dataType datatype", "Value* %"},
    Definition{"DefineFunction", "name optype dataType datatype", "ParameterField* %"},
    Definition{"ParameterField", "name displayName optype dataType"},
    Definition{"Constant", "dataType missing"},
    Definition{"FieldRef", "field mapMissingTo"},
    Definition{"NormContinuous", "field mapMissingTo outliers", "LinearNorm*"},
    Definition{"LinearNorm", "orig norm"},
    Definition{"NormDiscrete", "field value mapMissingTo method"},
    Definition{"Discretize", "field mapMissingTo defaultValue dataType", "DiscretizeBin*"},
    Definition{"DiscretizeBin", "binValue", "Interval"},
    Definition{"MapValues", "outputColumn mapMissingTo defaultValue dataType",
               "FieldColumnPair* InlineTable* TableLocator*"},
    Definition{"FieldColumnPair", "field column"},
    Definition{"InlineTable", "", "row*"},
    Definition{"TextIndex",
               "textField localTermWeights isCaseSensitive maxLevenshteinDistance countHits "
               "wordSeparatorCharacterRE tokenize",
               "TextIndexNormalization* %"},
    Definition{"TextIndexNormalization",
               "inField outField regexField recursive isCaseSensitive maxLevenshteinDistance "
               "wordSeparatorCharacterRE tokenize",
               "InlineTable* TableLocator*"},
    Definition{"Apply", "function mapMissingTo defaultValue invalidValueTreatment", "%"},
    Definition{"LinearKernelType", "?"},
    Definition{"PolynomialKernelType", "?"},
    Definition{"RadialBasisKernelType", "?"},
    Definition{"SigmoidKernelType", "?"},
    Definition{"VectorDictionary", "numberOfVectors", "VectorFields VectorInstance*"},
    Definition{"VectorFields", "numberOfFields", "?"},  // vector_fields.cpp checks the others
    Definition{"CategoricalPredictor", "name value coefficient"},
    Definition{"VectorInstance", "id",
               "Array REAL-ARRAY NUM-ARRAY INT-ARRAY REAL-Array INT-Array REAL-SparseArray "
               "INT-SparseArray"},
    Definition{"Array", "type n", "!"},
    Definition{"REAL-ARRAY", "type n", "!"},
    Definition{"NUM-ARRAY", "type n", "!"},
    Definition{"INT-ARRAY", "type n", "!"},
    Definition{"REAL-Array", "type n", "!"},
    Definition{"INT-Array", "type n", "!"},
    Definition{"Indices", "", "!"},
    Definition{"REAL-Entries", "", "!"},
    Definition{"INT-Entries", "", "!"},
    Definition{"Entries", "", "!"},
    Definition{"REAL-SparseArray", "n defaultValue", "Indices REAL-Entries INT-Entries Entries"},
    Definition{"INT-SparseArray", "n defaultValue", "Indices REAL-Entries INT-Entries Entries"},
    Definition{"SupportVectorMachine", "targetCategory alternateTargetCategory threshold",
               "SupportVectors Coefficients"},
    Definition{"SupportVectors", "numberOfSupportVectors numberOfAttributes", "SupportVector*"},
    Definition{"SupportVector", "vectorId"},
    Definition{"Coefficients", "numberOfCoefficients absoluteValue", "Coefficient*"},
    Definition{"Coefficient", "value"},
    Definition{"ModelVerification", "recordCount fieldCount", "VerificationFields InlineTable"},
    Definition{"VerificationFields", "", "VerificationField*"},
    Definition{"VerificationField", "field column precision zeroThreshold"},
};

// Attributes whose values are not checked where they are read; all others are.
struct Words {
  const char* element;
  const char* attribute;
  const char* words;
};

constexpr std::array kWords = {
    Words{"SupportVectorMachineModel", "svmRepresentation", "SupportVectors Coefficients"},
    Words{"Array", "type", "int real string"},
    Words{"DefineFunction", "optype", "continuous ordinal categorical"},
    Words{"ParameterField", "optype", "continuous ordinal categorical"},
};

constexpr std::array<const char*, 10> kExpressions = {
    "Constant",  "FieldRef",  "NormContinuous", "NormDiscrete", "Discretize",
    "MapValues", "TextIndex", "Apply",          "Aggregate",    "Lag"};

struct Child {
  WideText name;
  bool repeats;
};

struct Entry {
  std::vector<WideText> attributes;
  std::vector<Child> children;
  bool any_attributes = false;
  bool open = false;
  bool text = false;
  std::vector<std::pair<WideText, std::vector<WideText>>> words;  // by attribute
};

std::vector<std::string> WordsOf(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    words.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

Entry EntryOf(const Definition& definition) {
  Entry entry;
  for (const std::string& word : WordsOf(definition.attributes)) {
    entry.attributes.push_back(ToUtf16(word));
  }
  entry.any_attributes = std::string_view(definition.attributes) == "?";
  entry.open = std::string_view(definition.children) == "?";
  entry.text = std::string_view(definition.children) == "!";
  for (std::string& word : WordsOf(definition.children)) {
    if (word == "%") {
      for (const char* name : kExpressions) entry.children.push_back({ToUtf16(name), true});
      continue;
    }
    const bool repeats = word.back() == '*';
    if (repeats) word.pop_back();
    entry.children.push_back({ToUtf16(word), repeats});
  }
  return entry;
}

class Vocabulary {
 public:
  explicit Vocabulary(Intake& intake) : intake_(intake) {
    for (const Definition& definition : kDefinitions) {
      entries_.emplace(ToUtf16(definition.name), EntryOf(definition));
    }
    for (const Words& words : kWords) {
      auto& [attribute, known] =
          entries_.at(ToUtf16(words.element))
              .words.emplace_back(ToUtf16(words.attribute), std::vector<WideText>());
      for (const std::string& word : WordsOf(words.words)) known.push_back(ToUtf16(word));
    }
  }

  void Check() {
    bool skip = false;
    for (TreeWalk walk(intake_.Root()); walk.At() != nullptr; walk.Next(skip)) {
      DOMElement* at = walk.At();
      const Entry* entry = Find(at->getNodeName());
      skip = entry == nullptr || (walk.Parent() == intake_.Root() && IsOtherModel(at));
      if (skip) continue;
      if (!AttributesAreKnown(at, *entry)) TellAttributes(at, *entry);
      if (!entry->open) skip = CheckChildren(at, *entry);
    }
  }

 private:
  // Null for elements whose content is not checked. A document keeps one copy of each name.
  const Entry* Find(const XMLCh* name) {
    if (name == last_name_) return last_entry_;
    last_name_ = name;
    return last_entry_ = Look(name);
  }

  const Entry* Look(const XMLCh* name) {
    const auto [known, is_new] = by_name_.try_emplace(name, nullptr);
    if (is_new) {
      const auto found = entries_.find(name);
      if (found != entries_.end()) known->second = &found->second;
    }
    return known->second;
  }

  bool IsOtherModel(const DOMElement* element) const {
    return element != intake_.Model() && NameOf(element) == NameOf(intake_.Model());
  }

  static bool IsKnown(WideView name, const Entry& entry) {
    const auto& known = entry.attributes;
    return std::find(known.begin(), known.end(), name) != known.end() || name.starts_with(u"x-") ||
           name.starts_with(u"xmlns") || name.find(u':') != WideView::npos;
  }

  // Whether nothing is to be told of the element's attributes; their words count as unknown.
  static bool AttributesAreKnown(const DOMElement* element, const Entry& entry) {
    if (entry.any_attributes) return true;
    if (!entry.words.empty()) return false;
    const xercesc::DOMNamedNodeMap* attributes = element->getAttributes();
    const XMLSize_t count = attributes->getLength();
    for (XMLSize_t i = 0; i < count; ++i) {
      if (!IsKnown(attributes->item(i)->getNodeName(), entry)) return false;
    }
    return true;
  }

  void TellAttributes(const DOMElement* element, const Entry& entry) {
    const xercesc::DOMNamedNodeMap* attributes = element->getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const WideView name = attributes->item(i)->getNodeName();
      if (!IsKnown(name, entry)) {
        intake_.Tell("attribute-ignored", element, "attribute " + Narrow(name), NameOf(element));
      }
    }
    for (const auto& [name, words] : entry.words) {
      const WideView text = AttributeView(element, Narrow(name));
      if (text.data() == nullptr || std::find(words.begin(), words.end(), text) != words.end()) {
        continue;
      }
      intake_.Tell("attribute-value-ignored", element, Narrow(text), Narrow(name), NameOf(element));
    }
  }

  // True if there is nothing to tell of the children's own attributes and children, so that the
  // many that long lists have need no second look.
  bool CheckChildren(DOMElement* element, const Entry& entry) {
    if (FirstElement(element) == nullptr) return true;
    bool all_known = true;
    std::vector<bool> seen(entry.children.size());
    const XMLCh* last = nullptr;  // many children have the name of the one before
    auto found = entry.children.end();
    for (const DOMElement* child = FirstElement(element); child != nullptr;
         child = NextElement(const_cast<DOMElement*>(child))) {
      const XMLCh* name = child->getNodeName();
      const Entry* of_child = Find(name);
      all_known = all_known && (of_child == nullptr || (AttributesAreKnown(child, *of_child) &&
                                                        FirstElement(child) == nullptr));
      if (name != last) {
        found = std::find_if(entry.children.begin(), entry.children.end(),
                             [name](const Child& known) { return known.name == name; });
        last = name;
      }
      if (found == entry.children.end()) {
        if (entry.text) {
          intake_.Tell("element-in-text", child, "element " + NameOf(child), NameOf(element));
        } else if (!IsPassedOver(element, name)) {
          TellUnknown(child, element);
        }
      } else if (const auto at = static_cast<std::size_t>(found - entry.children.begin());
                 seen[at] && !found->repeats) {
        const bool list = NameOf(element) == "SupportVectorMachine";
        intake_.Tell(list ? Kind("second-list") : Kind("element-repeated"), child,
                     "a second " + NameOf(child), NameOf(element));
      } else {
        seen[at] = true;
        // Only a DataField has values that are missing or invalid.
        if (found->name == u"Value" && NameOf(element) != "DataField" &&
            AttributeView(child, "property").data() != nullptr) {
          intake_.Tell("attribute-ignored", child, "attribute property of element Value",
                       NameOf(element));
        }
      }
    }
    return all_known;
  }

  // model_choice.cpp checks models, kernel_parameters.cpp kernels.
  bool IsPassedOver(const DOMElement* parent, WideView name) const {
    return name == u"Extension" || name.starts_with(u"X-") ||
           (parent == intake_.Root() && IsModelName(Narrow(name))) ||
           (parent == intake_.Model() && IsKernelName(Narrow(name)));
  }

  void TellUnknown(const DOMElement* child, const DOMElement* parent) {
    intake_.Tell("element-ignored", child, "element " + NameOf(child), NameOf(parent));
  }

  Intake& intake_;
  std::unordered_map<WideText, Entry> entries_;
  std::unordered_map<const XMLCh*, const Entry*> by_name_;
  const XMLCh* last_name_ = nullptr;  // many elements have the name of the one before
  const Entry* last_entry_ = nullptr;
};

}  // namespace

void CheckVocabulary(Intake& intake) {
  Vocabulary(intake).Check();
}

}  // namespace svmscore::intake
