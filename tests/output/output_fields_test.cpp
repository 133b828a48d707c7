// Output fields: what their features give, and what their expressions may name.
#include <cmath>

#include <gtest/gtest.h>

#include "host/ss_exception.h"
#include "tests/output/scoring.h"
#include "tests/transform/allocation_count.h"

namespace svmscore_test {
namespace {

// The document with these output fields instead of its own.
std::string WithOutput(const std::string& document, const std::string& fields) {
  const std::string output = "<Output>" + fields + "</Output>";
  if (document.find("<Output>") == std::string::npos) {
    return Edit(document, "</MiningSchema>", "</MiningSchema>" + output);
  }
  return Edit(document, "<Output>[^]*</Output>", output);
}

std::string Chain(const std::string& fields) {
  return WithOutput(Document("chain.pmml"), fields);
}

std::string Derive(const std::string& name, const std::string& expression,
                   const std::string& more = "") {
  return "<OutputField name=\"" + name + "\" feature=\"transformedValue\" " + more + ">" +
         expression + "</OutputField>";
}

std::string Refusal(const std::string& document) {
  try {
    Scoring scoring(document);
  } catch (const MCZandor_850::SSException& error) {
    return error.what();
  }
  return {};
}

std::size_t NoteCount(const std::string& document) {
  return Scoring(document).Plan().Notes().size();
}

const Case kFirst = {{"x1", "0.7"}, {"x2", "0.3"}};  // y is 2.44125

TEST(OutputFields, TypesConvertBeforeLaterFieldsSeeThem) {
  Scoring scoring(
      Chain(R"(<OutputField name="whole" dataType="integer"/>)"
            R"(<OutputField name="text" datatype="xs:string" feature="predictedValue"/>)" +
            Derive("twice", R"(<Apply function="*"><FieldRef field="whole"/><Constant>2</Constant>
                         </Apply>)") +
            R"(<OutputField name="shown" feature="predictedDisplayValue"/>)"));
  scoring.Score({{"x1", "3"}, {"x2", "1"}});
  EXPECT_EQ(scoring.Text("whole"), "9");
  EXPECT_EQ(scoring.Text("text"), "9.25");
  EXPECT_EQ(scoring.Number("twice"), 18.0);
  EXPECT_EQ(scoring.Text("shown"), "9.25");
}

TEST(OutputFields, ExpressionsNameInputsDerivedFieldsAndTheTarget) {
  std::string document = Chain(
      Derive("sum", R"(<Apply function="+"><FieldRef field="y"/><FieldRef field="x2"/></Apply>)") +
      Derive("late", R"(<FieldRef field="doubled"/>)") +
      // From here on the name x2 is the field's, not the input's.
      Derive("x2", R"(<Constant>7</Constant>)") + Derive("own", R"(<FieldRef field="x2"/>)"));
  document = Edit(document, "<PolynomialKernelType",
                  R"(<LocalTransformations><DerivedField name="doubled" optype="continuous"
                     dataType="double"><Apply function="*"><FieldRef field="x1"/><Constant>2</Constant>
                     </Apply></DerivedField></LocalTransformations><PolynomialKernelType)");
  Scoring scoring(document);
  scoring.Score({{"x1", "1.6"}});
  EXPECT_NEAR(scoring.Number("sum").value(), 1.4865625 + 0.25, 1e-12);
  EXPECT_EQ(scoring.Number("late"), 3.2);
  EXPECT_EQ(scoring.Number("own"), 7.0);
  EXPECT_EQ(scoring.Plan().NeededInputs().size(), 1U);
}

TEST(OutputFields, AFailureInsideAnExpressionStaysThere) {
  Scoring scoring(Chain(Derive("bad", R"(<Apply function="ln"><Constant>-1</Constant></Apply>)") +
                        Derive("after", R"(<FieldRef field="bad" mapMissingTo="5"/>)") +
                        R"(<OutputField name="y_hat" feature="predictedValue"/>)"));
  EXPECT_EQ(scoring.Score(kFirst).status, 90027);
  EXPECT_FALSE(scoring.Number("bad"));
  EXPECT_EQ(scoring.Text("after"), "5");
  EXPECT_TRUE(scoring.Number("y_hat"));
  // Without a prediction an expression is evaluated, after an invalid input it is not.
  EXPECT_EQ(scoring.Score({}).status, 90029);
  EXPECT_EQ(scoring.Text("after"), "5");
  EXPECT_EQ(scoring.Score({{"x1", "abc"}}).status, 90027);
  EXPECT_EQ(scoring.Text("after"), "");
}

TEST(OutputFields, HiddenFieldsAreComputedAndNotFinal) {
  Scoring scoring(Chain(R"(<OutputField name="raw" isFinalResult="false"/>)" +
                        Derive("out", R"(<FieldRef field="raw"/>)")));
  scoring.Score(kFirst);
  EXPECT_EQ(scoring.Plan().FinalFields(), std::vector<int>{1});
  EXPECT_NEAR(scoring.Number("out").value(), 2.44125, 1e-12);
}

TEST(OutputFields, ProbabilitiesAreThoseThatTheModelComputes) {
  const std::string fields = R"(<OutputField name="best" feature="probability"/>)"
                             R"(<OutputField name="mid" feature="probability" value="mid"/>)"
                             R"(<OutputField name="none" feature="probability" value="other"/>)";
  Scoring votes(WithOutput(Document("grades.pmml"), fields));
  EXPECT_EQ(votes.Plan().Notes().size(), 1U);
  votes.Score({{"colour", "blue"}, {"grade", "B"}});
  EXPECT_DOUBLE_EQ(votes.Number("best").value(), 2.0 / 3);
  EXPECT_DOUBLE_EQ(votes.Number("mid").value(), 1.0 / 3);
  EXPECT_FALSE(votes.Number("none"));

  const std::string two =
      WithOutput(Document("alarm.pmml"),
                 R"(<OutputField name="label"/><OutputField name="best" feature="probability"/>)"
                 R"(<OutputField name="alarm" feature="probability" value="alarm"/>)");
  Scoring plain(two);
  EXPECT_EQ(plain.Plan().Notes().size(), 2U);
  const Case first = {{"temp", "30"}, {"load", "85"}};
  plain.Score(first);
  EXPECT_FALSE(plain.Number("best"));
  EXPECT_FALSE(plain.Number("alarm"));

  // The category that responds is the target's second.
  Scoring calibrated(Edit(two, "<SupportVectors ",
                          R"(<Extension extender="svmscore"><ResponseCategory response="alarm"
                             nonResponse="ok"/><ProbabilityParameters A="2" B="0"/></Extension>
                             <SupportVectors )"));
  const auto& outcome = calibrated.Score(first);
  const double expected = 1 / (1 + std::exp(2 * -0.555782955751627));
  EXPECT_EQ(calibrated.Text("label"), "alarm");
  EXPECT_NEAR(calibrated.Number("alarm").value(), expected, 1e-12);
  EXPECT_EQ(calibrated.Number("best"), outcome.confidence);
}

TEST(OutputFields, ResidualsNeedTheActualValue) {
  Scoring number(Chain(R"(<OutputField name="r" feature="residual"/>)"));
  ASSERT_EQ(number.Plan().ExtraInputs().size(), 1U);
  number.Score({{"x1", "0.7"}, {"x2", "0.3"}, {"y", "3"}});
  EXPECT_NEAR(number.Number("r").value(), 3 - 2.44125, 1e-12);
  number.Score(kFirst);
  EXPECT_FALSE(number.Number("r"));
  // What is wrong with the actual value says nothing against the inputs.
  EXPECT_EQ(number.Score({{"x1", "0.7"}, {"x2", "0.3"}, {"y", "abc"}}).status, 0);
  EXPECT_FALSE(number.Number("r"));

  Scoring label(WithOutput(Document("grades.pmml"),
                           R"(<OutputField name="r" feature="residual"/>)"
                           R"(<OutputField name="low" feature="residual" value="low"/>)"));
  label.Score({{"colour", "blue"}, {"grade", "B"}, {"class", "low"}});
  EXPECT_DOUBLE_EQ(label.Number("r").value(), -2.0 / 3);
  EXPECT_DOUBLE_EQ(label.Number("low").value(), 1.0);
  label.Score({{"colour", "blue"}, {"grade", "B"}, {"class", "none"}});
  EXPECT_FALSE(label.Number("r"));
}

TEST(OutputFields, FeaturesThatNoSuchModelComputesAreMissingAndTold) {
  EXPECT_EQ(NoteCount(Chain(R"(<OutputField name="a" feature="standardError"/>)"
                            R"(<OutputField name="b" feature="warning"/>)"
                            R"(<OutputField name="c" feature="standardDeviation"/>)"
                            R"(<OutputField name="d" feature="probability"/>)"
                            R"(<OutputField name="e" targetField="z"/>)"
                            R"(<OutputField name="f" feature="x-odd"/>)")),
            6U);
  Scoring scoring(Chain(R"(<OutputField name="a" feature="reasonCode" dataType="string"/>)"));
  EXPECT_EQ(scoring.Score(kFirst).status, 0);
  EXPECT_EQ(scoring.Text("a"), "");
  // Before 4.2 a field without a feature had no value.
  EXPECT_EQ(NoteCount(Edit(Chain(R"(<OutputField name="a"/>)"), "4.4", "4.1")), 1U);
  EXPECT_EQ(NoteCount(Chain(R"(<OutputField name="a"/>)")), 0U);
}

TEST(OutputFields, WhatIsWrongIsRefusedByNameAndPlace) {
  const std::string refused[][2] = {
      {Derive("a", R"(<FieldRef field="b"/>)") + Derive("b", "<Constant>1</Constant>"),
       "output field a refers to b, which stands after it in element OutputField"},
      {Derive("a", R"(<FieldRef field="a"/>)"), "output field a refers to itself"},
      {Derive("a", R"(<FieldRef field="nobody"/>)"), "no field of the name nobody"},
      {R"(<OutputField name="a"/><OutputField name="a"/>)",
       "a of element OutputField is used twice"},
      {R"(<OutputField name="a" feature="transformedValue"/>)", "there is no expression"},
      {Derive("a", "<Constant>1</Constant><Constant>2</Constant>"), "there is a second expression"},
      {Derive("a", "<Aggregate field=\"x1\" function=\"sum\"/>"), "Aggregate"},
      {R"(<OutputField name="a" feature="predictedvalue"/>)", "predictedvalue"},
      {R"(<OutputField name="a" dataType="number"/>)", "number"},
      {R"(<OutputField feature="predictedValue"/>)", "attribute name is missing"},
      {R"(<Field name="a"/>)", "element Field in element Output is not supported"},
  };
  for (const auto& [fields, complaint] : refused) {
    const std::string message = Refusal(Chain(fields));
    EXPECT_NE(message.find(complaint), std::string::npos) << message;
    EXPECT_NE(message.find("line "), std::string::npos) << message;
  }
  // A field of the dictionary that the mining schema leaves out is none of the model's.
  EXPECT_NE(Refusal(Edit(Chain(Derive("a", R"(<FieldRef field="z"/>)")), "</DataDictionary>",
                         R"(<DataField name="z" optype="continuous" dataType="double"/>
                            </DataDictionary>)"))
                .find("no field of the name z"),
            std::string::npos);
}

TEST(OutputFields, NumbersCostNoAllocation) {
  Scoring scoring(Chain(R"(<OutputField name="y_hat"/>)" +
                        Derive("log", R"(<Apply function="ln"><FieldRef field="y_hat"/></Apply>)",
                               "dataType=\"double\"")));
  MCZandor_850::InputCaseRecord record(scoring.Loaded().active, true, true);
  svmscore::output::OutputScratch scratch(scoring.Plan(), true);
  const svmscore::output::Outcome outcome = scoring.Score(kFirst);
  scoring.Plan().Evaluate(outcome, record, scratch);
  const long before = svmscore::transform::AllocationCount();
  for (int i = 0; i < 100; ++i) scoring.Plan().Evaluate(outcome, record, scratch);
  EXPECT_EQ(svmscore::transform::AllocationCount() - before, 0);
}

}  // namespace
}  // namespace svmscore_test
