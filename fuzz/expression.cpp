// Derived fields of any expression, computed twice for odd cases.
#include <bit>
#include <memory>

#include "fuzz/grammar.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"
#include "host/model/score_case_record.h"
#include "host/model/ss_exception.h"
#include "host/transform/transformation_dictionary.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"
#include "host/xml/elements.h"

namespace svmscore::fuzz {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictionary;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreValue;
using MCZandor_850::SSException;
using MCZandor_850::TransformationDictionary;

Node MakeDocument(Choices& choices) {
  Node root("PMML");
  root.Set("version", "4.4");
  Names fields;
  Node& dictionary = root.Add("DataDictionary");
  for (std::size_t i = 0, count = 1 + choices.Below(4); i < count; ++i) {
    fields.push_back("x" + std::to_string(i));
    dictionary.Add(DataField(fields.back(), choices));
  }
  root.Add(Transformations("TransformationDictionary", "d", fields, choices));
  return root;
}

bool IsSame(const ScoreValue* a, const ScoreValue* b) {
  if (a == nullptr || b == nullptr) return a == b;
  if (a->IsNumeric() != b->IsNumeric() || a->IsMissing() != b->IsMissing() ||
      a->IsInvalid() != b->IsInvalid()) {
    return false;
  }
  if (a->IsMissing() || !a->IsNumeric()) return a->GetText() == b->GetText();
  return std::bit_cast<std::uint64_t>(a->GetDouble()) ==
         std::bit_cast<std::uint64_t>(b->GetDouble());
}

void Fill(InputCaseRecord& record, Choices choices) {
  for (std::size_t i = 0; i < record.Size(); ++i) {
    const std::size_t kind = choices.Below(8);
    if (kind < 4) {
      record.SetText(i, NumberText(choices));
    } else if (kind < 6) {
      record.SetText(i, Word(choices));
    } else if (kind == 6) {
      record.SetNumber(i, OddNumber(choices));
    } else {
      record.SetMissing(i);
    }
  }
}

// The same case, computed by position, once more, and by name, gives the same bits.
void Compute(const TransformationDictionary& derived, const ScoreDictionary& inputs,
             Choices& choices) {
  std::vector<const ScoreDictVar*> variables;
  for (const ScoreDictVar* var : inputs.GetVariables()) variables.push_back(var);
  InputCaseRecord by_position(variables, true, choices.Half());
  InputCaseRecord by_name(variables, false, false);
  do {
    const Choices values = choices;
    Fill(by_position, values);
    const auto first = derived.GetValuesForDerivedVars(&by_position, &inputs);
    const auto second = derived.GetValuesForDerivedVars(&by_position, &inputs);
    Fill(by_name, values);
    const auto third = derived.GetValuesForDerivedVars(&by_name, &inputs);
    for (const ScoreDictVar* var : derived.GetVariables()) {
      const ScoreValue* value = first->GetDerived(*var);
      Promise(IsSame(value, second->GetDerived(*var)), "a field is computed the same again");
      Promise(IsSame(value, third->GetDerived(*var)), "a field is computed the same by name");
    }
    for (std::size_t used = 1 + 4 * variables.size(); used > 0; --used) choices.Byte();
  } while (!choices.IsEmpty());
}

void Load(const std::string& text, Choices& choices) {
  try {
    const PmmlDocument document = PmmlDocument::FromText(text, "model.pmml");
    auto* root = document.Dom()->getDocumentElement();
    MCZandor_850::PMMLTranslator translator("SupportVectorMachineModel");
    const ScoreDictionary* inputs =
        translator.ParseDictionary(FindChild(root, "DataDictionary"), true);
    const std::unique_ptr<TransformationDictionary> derived(
        translator.HandleTransformationDictionary(FindChild(root, "TransformationDictionary"),
                                                  inputs));
    if (derived == nullptr || inputs == nullptr) return;
    derived->SetUpDerivedCaseRecord();
    Compute(*derived, *inputs, choices);
  } catch (const SSException& error) {
    Promise(error.GetErrorCode() != 0 && *error.what() != '\0', "a refusal has code and sentence");
  }
}

}  // namespace
}  // namespace svmscore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  Choices choices(data, size);
  Choices cases = choices.SplitOff(1, 4);
  Choices damage = choices.SplitOff(1, 8);
  Node document = MakeDocument(choices);
  Mutate(document, damage);
  Load(XmlOf(document), cases);
  return 0;
}
