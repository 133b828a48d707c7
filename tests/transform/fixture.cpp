#include "tests/transform/fixture.h"

#include "host/message_codes.h"
#include "host/ss_exception.h"
#include "host/transcoder.h"

namespace svmscore::transform {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

xercesc::DOMElement* Find(const PmmlDocument& document, const std::string& name) {
  return static_cast<xercesc::DOMElement*>(
      document.Dom()->getElementsByTagName(ToUtf16(name).c_str())->item(0));
}

}  // namespace

std::string DataField(const std::string& name, const std::string& data_type,
                      const std::string& op_type, const std::string& content) {
  std::string kind = op_type;
  if (kind.empty()) kind = data_type == "string" ? "categorical" : "continuous";
  return "<DataField name=\"" + name + "\" optype=\"" + kind + "\" dataType=\"" + data_type +
         "\">" + content + "</DataField>\n";
}

std::string DerivedField(const std::string& name, const std::string& data_type,
                         const std::string& expression) {
  return "<DerivedField name=\"" + name + "\" optype=\"" +
         (data_type == "string" ? "categorical" : "continuous") + "\" dataType=\"" + data_type +
         "\">" + expression + "</DerivedField>\n";
}

std::string Document(const std::string& data_fields, const std::string& transformations) {
  return "<PMML version=\"4.4\"><DataDictionary>\n" + data_fields +
         "</DataDictionary>\n<TransformationDictionary>\n" + transformations +
         "</TransformationDictionary></PMML>";
}

std::string ModelDocument(const std::string& data_fields, const std::string& mining_fields,
                          const std::string& transformations, const std::string& local,
                          const std::string& fields) {
  return "<PMML version=\"4.4\"><DataDictionary>\n" + data_fields + "</DataDictionary>\n" +
         transformations + "<SupportVectorMachineModel functionName=\"regression\"><MiningSchema>" +
         mining_fields + "</MiningSchema>\n" + local + "<VectorDictionary><VectorFields>" + fields +
         "</VectorFields></VectorDictionary></SupportVectorMachineModel></PMML>";
}

Loaded::Loaded(const std::string& document, const std::string& container)
    : document_(PmmlDocument::FromText(document, "test")) {
  document_.FixLines();
  try {
    inputs_ = translator_.ParseDictionary(Find(document_, "DataDictionary"), true);
    dictionary_.reset(
        translator_.HandleTransformationDictionary(Find(document_, container), inputs_));
  } catch (MCZandor_850::SSException& error) {
    document_.Locate(error);
    throw;
  }
  if (dictionary_) dictionary_->SetUpDerivedCaseRecord();
}

std::unique_ptr<InputCaseRecord> Loaded::Record(const Case& values, bool by_position) const {
  std::vector<const ScoreDictVar*> variables;
  for (const ScoreDictVar* var : inputs_->GetVariables()) variables.push_back(var);
  auto record = std::make_unique<InputCaseRecord>(variables, by_position, true);
  for (std::size_t i = 0; i < variables.size(); ++i) {
    const auto found = values.find(variables[i]->GetName());
    if (found == values.end()) {
      record->SetMissing(i);
    } else {
      record->SetText(i, found->second);
    }
  }
  return record;
}

std::string Loaded::Derive(const std::string& name, const Case& values) const {
  const auto record = Record(values);
  return Show(dictionary_->GetValuesForDerivedVars(record.get(), inputs_)->GetValue(name));
}

std::vector<std::string> Loaded::DeriveAll(const std::string& name,
                                           const std::vector<Case>& cases) const {
  std::vector<std::string> results;
  for (const Case& values : cases) results.push_back(Derive(name, values));
  return results;
}

std::string Refusal(const std::string& document, const std::string& container) {
  try {
    const Loaded loaded(document, container);
  } catch (const MCZandor_850::SSException& error) {
    return std::to_string(error.GetErrorCode()) + " at " + error.GetPlace() + ": " + error.what();
  }
  return {};
}

std::string Show(const MCZandor_850::ScoreValue* value) {
  if (value == nullptr || value->IsMissing()) return "missing";
  return value->IsInvalid() ? "invalid" : value->GetText();
}

}  // namespace svmscore::transform
