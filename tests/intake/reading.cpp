#include "tests/intake/reading.h"

#include <memory>
#include <regex>

#include <gtest/gtest.h>

#include "host/pmml/loader.h"
#include "host/score_case_record.h"
#include "host/score_result.h"
#include "host/transcoder.h"

namespace svmscore_test {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;
using svmscore::ToUtf8;
using xercesc::DOMNode;

void Write(const DOMNode* node, std::string& out) {
  const std::string name = ToUtf8(node->getNodeName());
  out += '<' + name;
  const xercesc::DOMNamedNodeMap* attributes = node->getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const DOMNode* attribute = attributes->item(i);
    out += ' ' + ToUtf8(attribute->getNodeName()) + "=\"" + ToUtf8(attribute->getNodeValue()) + '"';
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

}  // namespace

std::string Parts::Machine(const std::string& attributes) {
  return "<SupportVectorMachine " + attributes +
         R"(><SupportVectors><SupportVector vectorId="a"/><SupportVector vectorId="b"/>)"
         R"(</SupportVectors><Coefficients absoluteValue="0.5"><Coefficient value="2"/>)"
         R"(<Coefficient value="-3"/></Coefficients></SupportVectorMachine>)";
}

void Parts::Classify() {
  target = R"(<DataField name="t" optype="categorical" dataType="string">)"
           R"(<Value value="yes"/><Value value="no"/></DataField>)";
  model = R"(functionName="classification")";
  machines = Machine(R"(targetCategory="yes" alternateTargetCategory="no")");
}

std::string Parts::Text() const {
  std::string name;
  if (root.find("xmlns=") == std::string::npos) {
    std::smatch version;
    const bool stated = std::regex_search(root, version, std::regex(R"re(="(\d)\.(\d))re"));
    name = " xmlns=\"http://www.dmg.org/PMML-" +
           (stated ? version[1].str() + '_' + version[2].str() : "4_4") + '"';
  }
  return "<PMML " + root + name + ">\n<Header/><DataDictionary>" + fields + target +
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
  for (const svmscore::IntakeStep& step : steps) {
    text += (text.empty() ? "" : ", ") + step.name + ' ' + std::to_string(step.count);
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

Reading Read(const std::string& text, svmscore::IntakeMode mode) {
  Reading reading{svmscore::PmmlDocument::FromText(text, "test.pmml"), {}};
  reading.steps = svmscore::MakeReadable(reading.document, mode);
  return reading;
}

MCZandor_850::SSException Refusal(const std::string& text, svmscore::IntakeMode mode) {
  auto document = svmscore::PmmlDocument::FromText(text, "test.pmml");
  try {
    svmscore::MakeReadable(document, mode);
  } catch (MCZandor_850::SSException& error) {
    document.Locate(error);
    return error;
  }
  ADD_FAILURE() << "not refused: " << text;
  return MCZandor_850::SSException(nullptr);
}

std::string Score(const std::string& text, Case inputs) {
  static const svmscore::Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const svmscore::LoadedModel loaded =
      svmscore::LoadModel(plugin, svmscore::PmmlDocument::FromText(text, "test.pmml"));
  InputCaseRecord record(loaded.needed, false,
                         loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing);
  record.Clear();
  for (const auto& [name, value] : inputs) {
    for (std::size_t i = 0; i < record.Size(); ++i) {
      if (record.Variable(i).GetName() == name) record.SetText(i, value);
    }
  }
  if (record.HasInvalid()) return "status 90027";
  ScoreResult* made = nullptr;
  const MCScore::MCStatus status = loaded.model->GetScore(&record, made, false);
  const std::unique_ptr<ScoreResult> result(made);
  if (status.IsError()) return "status " + std::to_string(status.GetErrorCode());
  return result->GetPrediction()->GetText();
}

}  // namespace svmscore_test
