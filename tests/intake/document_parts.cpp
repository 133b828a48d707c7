#include "tests/intake/document_parts.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/load/loader.h"
#include "host/model/message_codes.h"
#include "host/model/score_case_record.h"
#include "host/model/score_result.h"
#include "host/text/number_text.h"
#include "host/xml/transcoder.h"

namespace svmscore_test {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;
using MCZandor_850::SSException;
using svmscore::ToUtf8;
using xercesc::DOMNode;

void Write(const DOMNode* node, std::string& out) {
  const std::string name = ToUtf8(node->getNodeName());
  out += '<' + name;
  const xercesc::DOMNamedNodeMap* attributes = node->getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const DOMNode* attribute = attributes->item(i);
    out += ' ' + ToUtf8(attribute->getNodeName()) + "='" + ToUtf8(attribute->getNodeValue()) + '\'';
  }
  out += '>';
  for (const DOMNode* child = node->getFirstChild(); child != nullptr;
       child = child->getNextSibling()) {
    if (child->getNodeType() == DOMNode::ELEMENT_NODE) {
      Write(child, out);
    } else if (const std::string text = ToUtf8(child->getNodeValue());
               text.find_first_not_of(" \n") != std::string::npos) {
      out += text;
    }
  }
  out += "</" + name + '>';
}

std::string CodeAndPlace(const SSException& error) {
  const std::string text = std::to_string(error.GetErrorCode()) + ' ';
  const bool of_step = error.GetErrorCode() == svmscore::code::kNeedsIntake;
  return text + (of_step ? error.GetMessageParts().at(0) + ' ' : "") + error.Where().element + ':' +
         std::to_string(error.Where().line);
}

}  // namespace

std::string Version(char major, char minor) {
  return std::string("version='") + major + '.' + minor + "' xmlns='http://www.dmg.org/PMML-" +
         major + '_' + minor + '\'';
}

std::string Field(const std::string& name, const std::string& optype, const std::string& type,
                  const std::string& values) {
  return "<DataField name='" + name + "' optype='" + optype + "' dataType='" + type + "'>" +
         values + "</DataField>";
}

std::string Sigmoid(const std::string& response, const std::string& other, int a, int b) {
  return "<Extension extender='svmscore'><ResponseCategory response='" + response +
         "' nonResponse='" + other + "'/><ProbabilityParameters A='" + std::to_string(a) + "' B='" +
         std::to_string(b) + "'/></Extension>";
}

std::string Parts::Machine(const std::string& attributes) {
  return "<SupportVectorMachine " + attributes +
         "><SupportVectors><SupportVector vectorId='a'/><SupportVector vectorId='b'/>"
         "</SupportVectors><Coefficients absoluteValue='0.5'><Coefficient value='2'/>"
         "<Coefficient value='-3'/></Coefficients></SupportVectorMachine>";
}

std::string Parts::Machine(const std::string& category, const std::string& alternate) {
  return Machine("targetCategory='" + category + "' alternateTargetCategory='" + alternate + '\'');
}

void Parts::Classify() {
  Classify({"yes", "no"});
  machines = Machine("yes", "no");
}

void Parts::Classify(const std::vector<std::string>& categories, const std::string& type) {
  std::string values;
  for (const std::string& category : categories) values += "<Value value='" + category + "'/>";
  target = Field("t", "categorical", type, values);
  model = "functionName='classification'";
}

std::string Parts::Text() const {
  return "<PMML " + root + ">\n<Header/><DataDictionary>" + fields + target +
         "</DataDictionary>\n" + global + "<SupportVectorMachineModel " + model +
         ">\n<MiningSchema>" + schema + "</MiningSchema>" + local + kernel +
         "<VectorDictionary>\n<VectorFields>" + positions + "</VectorFields>\n" + vectors +
         "</VectorDictionary>\n" + machines + "</SupportVectorMachineModel></PMML>";
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  for (; at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string Reading::Steps() const {
  std::string text;
  for (const svmscore::Finding& finding : svmscore::FirstOfEachKind(findings)) {
    if (!text.empty()) text += ", ";
    text += finding.Name();
    if (finding.more > 0) text += ' ' + std::to_string(finding.more + 1);
  }
  return text;
}

std::string Reading::Show(const std::string& name, std::size_t n) const {
  const DOMNode* node = document.Dom()
                            ->getElementsByTagName(svmscore::ToUtf16(name).c_str())
                            ->item(static_cast<XMLSize_t>(n));
  std::string text;
  if (node != nullptr) Write(node, text);
  return text;
}

Reading Unread(const std::string& text) {
  return {svmscore::PmmlDocument::FromText(text, "test.pmml"), {}};
}

Reading Read(const std::string& text, svmscore::IntakeMode mode) {
  Reading reading = Unread(text);
  reading.findings = svmscore::MakeReadable(reading.document, mode);
  const std::string once = reading.Show("PMML");
  for (const auto& finding : svmscore::MakeReadable(reading.document, mode)) {
    EXPECT_NE(finding.kind->of_class, svmscore::FindingClass::kStandard)
        << "not readable after one reading: " << finding.Name();
  }
  EXPECT_EQ(reading.Show("PMML"), once) << "a second reading changes the document";
  return reading;
}

std::string Refusal(const std::string& text, svmscore::IntakeMode mode) {
  auto document = svmscore::PmmlDocument::FromText(text, "test.pmml");
  try {
    std::optional<SSException> refused;
    svmscore::MakeReadable(document, mode, &refused);
    if (refused) throw SSException(*refused);
  } catch (SSException& error) {
    document.Locate(error);
    return CodeAndPlace(error);
  }
  return "not refused";
}

Case At(const std::string& x, const std::string& y) {
  return {{"x", x}, {"y", y}};
}

double Predict(const std::string& text, const Case& inputs) {
  return svmscore::ParseNumber(Score(text, inputs)).value();
}

svmscore::LoadedModel Load(const std::string& text, svmscore::LoadChecks checks) {
  static const svmscore::Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const auto parse = [&text] {
    return svmscore::PmmlDocument::FromText(text, "test.pmml", {}, svmscore::Arrays::kAsNumbers);
  };
  return svmscore::LoadModel(plugin, parse, checks);
}

std::string Score(const std::string& text, const Case& inputs, svmscore::LoadChecks checks) try {
  const svmscore::LoadedModel loaded = Load(text, checks);
  InputCaseRecord record(loaded.needed, false,
                         loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing);
  record.Clear();
  for (const auto& [name, value] : inputs) {
    for (std::size_t i = 0; i < record.Size(); ++i) {
      if (record.Variable(i).GetName() == name && !value.empty()) record.SetText(i, value);
    }
  }
  if (record.HasInvalid()) return "status 90027";
  ScoreResult* made = nullptr;
  const MCScore::MCStatus status = loaded.model->GetScore(&record, made, false);
  const std::unique_ptr<ScoreResult> result(made);
  if (status.IsError()) return "status " + std::to_string(status.GetErrorCode());
  return result->GetPrediction()->GetText();
} catch (const SSException& error) {
  return CodeAndPlace(error);
}

}  // namespace svmscore_test
