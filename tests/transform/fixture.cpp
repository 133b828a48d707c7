#include "tests/transform/fixture.h"

#include <sstream>

#include "host/model/ss_exception.h"
#include "host/xml/transcoder.h"

namespace svmscore::transform {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

xercesc::DOMElement* Find(const PmmlDocument& document, const std::string& name) {
  return static_cast<xercesc::DOMElement*>(
      document.Dom()->getElementsByTagName(ToUtf16(name).c_str())->item(0));
}

std::vector<std::string> Split(const std::string& text, char sign) {
  std::vector<std::string> parts;
  std::istringstream rest(text);
  for (std::string part; std::getline(rest, part, sign);) parts.push_back(part);
  return parts;
}

}  // namespace

std::string DataField(const std::string& name, const std::string& data_type,
                      const std::string& op_type, const std::string& content) {
  std::string kind = op_type;
  if (kind.empty()) kind = data_type == "string" ? "categorical" : "continuous";
  return "<DataField name='" + name + "' optype='" + kind + "' dataType='" + data_type + "'>" +
         content + "</DataField>\n";
}

std::string DerivedField(const std::string& name, const std::string& data_type,
                         const std::string& expression) {
  return "<DerivedField name='" + name + "' optype='" +
         (data_type == "string" ? "categorical" : "continuous") + "' dataType='" + data_type +
         "'>" + expression + "</DerivedField>\n";
}

std::string Document(const std::string& data_fields, const std::string& transformations) {
  return "<PMML version='4.4'><DataDictionary>\n" + data_fields +
         "</DataDictionary>\n<TransformationDictionary>\n" + transformations +
         "</TransformationDictionary></PMML>";
}

std::string ModelDocument(const std::string& data_fields, const std::string& mining_fields,
                          const std::string& transformations, const std::string& fields) {
  const bool local = transformations.starts_with("<LocalTransformations");
  return "<PMML version='4.4'><DataDictionary>\n" + data_fields + "</DataDictionary>\n" +
         (local ? "" : transformations) +
         "<SupportVectorMachineModel functionName='regression'><MiningSchema>" + mining_fields +
         "</MiningSchema>\n" + (local ? transformations : "") + "<VectorDictionary><VectorFields>" +
         fields + "</VectorFields></VectorDictionary></SupportVectorMachineModel></PMML>";
}

std::string Table(const std::string& columns, const std::vector<std::string>& rows) {
  const std::vector<std::string> names = Split(columns, ';');
  std::string xml = "<InlineTable>";
  for (const std::string& row : rows) {
    const std::vector<std::string> cells = Split(row, ';');
    xml += "<row>";
    for (std::size_t i = 0; i < cells.size(); ++i) {
      xml += "<" + names[i] + ">" + cells[i] + "</" + names[i] + ">";
    }
    xml += "</row>";
  }
  return xml + "</InlineTable>";
}

Loaded::Loaded(const std::string& document) : document_(PmmlDocument::FromText(document, "test")) {
  document_.FixLines();
  try {
    inputs_ = translator_.ParseDictionary(Find(document_, "DataDictionary"), true);
    xercesc::DOMElement* local = Find(document_, "LocalTransformations");
    dictionary_.reset(translator_.HandleTransformationDictionary(
        local != nullptr ? local : Find(document_, "TransformationDictionary"), inputs_));
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

std::string Loaded::DeriveEach(const std::string& texts) const {
  std::string results;
  for (const std::string& text : Split(texts, ' ')) {
    results += (results.empty() ? "" : " ") + Derive("d", text == "-" ? Case() : Case{{"x", text}});
  }
  return results;
}

std::string Refusal(const std::string& document) {
  try {
    const Loaded loaded(document);
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
