// Small documents to translate, and ways to damage them.
#ifndef TESTS_TRANSLATOR_DOCUMENTS_H_
#define TESTS_TRANSLATOR_DOCUMENTS_H_

#include <regex>
#include <stdexcept>
#include <string>

namespace svmscore_test {

// One machine that separates yes from no by x and by whether color is red.
inline std::string Classification() {
  return R"(<PMML version="4.1"><Header><Application name="maker" version="7.5"/></Header>)"
         R"(<DataDictionary><DataField name="x" optype="continuous" dataType="double"/>)"
         R"(<DataField name="color" optype="categorical" dataType="string"/>)"
         R"(<DataField name="cls" optype="categorical" dataType="string">)"
         R"(<Value value="yes"/><Value value="no"/></DataField></DataDictionary>)"
         R"(<SupportVectorMachineModel functionName="classification" threshold="0.25">)"
         R"(<MiningSchema><MiningField name="x"/><MiningField name="color" usageType="active"/>)"
         R"(<MiningField name="cls" usageType="predicted"/></MiningSchema>)"
         R"(<RadialBasisKernelType gamma="0.5"/>)"
         R"(<VectorDictionary><VectorFields><FieldRef field="x" mapMissingTo="0"/>)"
         R"(<CategoricalPredictor name="color" value="red" coefficient="1"/></VectorFields>)"
         R"(<VectorInstance id="a"><REAL-SparseArray n="2"><Indices>1 2</Indices>)"
         R"(<REAL-Entries>0.5 1</REAL-Entries></REAL-SparseArray></VectorInstance>)"
         R"(<VectorInstance id="b"><REAL-SparseArray n="2"><Indices>1</Indices>)"
         R"(<REAL-Entries>-2</REAL-Entries></REAL-SparseArray></VectorInstance></VectorDictionary>)"
         R"(<SupportVectorMachine targetCategory="yes" alternateTargetCategory="no">)"
         R"(<SupportVectors><SupportVector vectorId="a"/><SupportVector vectorId="b"/>)"
         R"(</SupportVectors><Coefficients absoluteValue="0.125"><Coefficient value="1.5"/>)"
         R"(<Coefficient value="-1"/></Coefficients></SupportVectorMachine>)"
         R"(</SupportVectorMachineModel></PMML>)";
}

// Replaces the first match of `pattern`.
inline std::string Edit(const std::string& text, const std::string& pattern,
                        const std::string& replacement) {
  const std::regex regex(pattern);
  if (!std::regex_search(text, regex)) throw std::logic_error("nothing matches " + pattern);
  return std::regex_replace(text, regex, replacement, std::regex_constants::format_first_only);
}

inline constexpr char kDeviation[] =
    R"(<Extension extender="svmscore"><StandardDeviation>0.35</StandardDeviation></Extension>)";
inline constexpr char kProbability[] =
    R"(<Extension extender="svmscore"><ResponseCategory response="no" nonResponse="yes"/>)"
    R"(<ProbabilityParameters A="-1.7" B="0.2"/></Extension>)";

// The same with a number y as the target, and a standard deviation.
inline std::string Regression() {
  std::string text = Edit(Classification(), "<DataField name=\"cls\".*?</DataField>",
                          R"(<DataField name="y" optype="continuous" dataType="double"/>)");
  text = Edit(text, "name=\"cls\"", "name=\"y\"");
  text = Edit(text, "classification", "regression");
  return Edit(text, "<SupportVectorMachine .*?>",
              std::string("<SupportVectorMachine>") + kDeviation);
}

// Adds an extension as the first child of the machine.
inline std::string WithExtension(const std::string& text, const std::string& extension) {
  return Edit(text, "(<SupportVectorMachine( [^>]*)?>)", "$1" + extension);
}

}  // namespace svmscore_test

#endif  // TESTS_TRANSLATOR_DOCUMENTS_H_
