#include "tests/calibrate/calibrated.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "host/text/number_text.h"

namespace svmscore::app {

std::string Example(const std::string& name) {
  return std::string(EXAMPLES "/") + name;
}

Calibrated Calibrate(const TemporaryFolder& folder, const std::string& document,
                     const std::string& holdout, const std::string& actual, Arguments options) {
  const std::string output = folder.Path("calibrated.pmml");
  std::filesystem::remove(output);
  Arguments arguments = {"calibrate", folder.Write("model.pmml", document), "-", "--actual", actual,
                         "--json"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  if (options.empty() || options[0] != "-o") {
    arguments.insert(arguments.end(), {"-o", output});
  }
  Calibrated calibrated;
  calibrated.run = RunProgram(arguments, holdout);
  if (calibrated.run.status != 0) return calibrated;
  calibrated.report = nlohmann::json::parse(calibrated.run.out);
  calibrated.document = ReadFile(output);
  const Ran scored = RunProgram({"score", output, "--columns", "all", "--decisions"}, holdout);
  EXPECT_EQ(scored.status, 0) << scored.err;
  calibrated.scores = ColumnsOf(scored.out);
  return calibrated;
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

const char* const kPlane = R"(<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="class" optype="categorical" dataType="string"><Value value="no"/><Value value="yes"/></DataField>
</DataDictionary>
<SupportVectorMachineModel functionName="classification"><MiningSchema><MiningField name="x"/><MiningField name="y"/>
<MiningField name="class" usageType="target"/></MiningSchema>
<Output><OutputField name="p" feature="probability" value="yes"/><OutputField name="label"/></Output>
<LinearKernelType/><VectorDictionary><VectorFields><FieldRef field="x"/><FieldRef field="y"/></VectorFields>
<VectorInstance id="a"><Array type="real" n="2">1 0</Array></VectorInstance>
<VectorInstance id="b"><Array type="real" n="2">0 0.1</Array></VectorInstance></VectorDictionary>
<SupportVectorMachine targetCategory="no" alternateTargetCategory="yes"><SupportVectors><SupportVector vectorId="a"/>
<SupportVector vectorId="b"/></SupportVectors><Coefficients><Coefficient value="1"/><Coefficient value="-10"/>
</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>
)";

std::string PlaneCases() {
  std::string table = "x,y,class\n";
  for (int i = 0; i < 40; ++i) {
    table +=
        FormatNumber(i * 0.25 - 5.0) + ",0.5," + ((i < 20) == (i % 7 != 0) ? "no" : "yes") + "\n";
  }
  return table;
}

}  // namespace svmscore::app
