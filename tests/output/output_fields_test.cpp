// Output fields: the values of their features, and the names that their expressions may use.
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/output/document_scoring.h"
#include "tests/process/failing_memory.h"
#include "tests/transform/call_text.h"

namespace svmscore_test {
namespace {

// The document with its output fields replaced by these.
std::string WithOutput(const std::string& name, const std::string& fields) {
  return Edit(Document(name), "</MiningSchema>(\\s*<Output>[^]*</Output>)?",
              "</MiningSchema><Output>" + fields + "</Output>");
}

std::string Chain(const std::string& fields) {
  return WithOutput("chain.pmml", fields);
}

// An output field with this expression, in the notation of tests/transform/call_text.h.
std::string Derive(const std::string& name, const std::string& call) {
  return "<OutputField name='" + name + "' feature='transformedValue'>" +
         svmscore::transform::CallToXml(call) + "</OutputField>";
}

std::size_t NoteCount(const std::string& document) {
  return Scoring(document).Plan().Notes().size();
}

const Case kFirst = {{"x1", "0.7"}, {"x2", "0.3"}};  // y is 2.44125

TEST(OutputFields, TypesConvertBeforeLaterFieldsSeeThem) {
  Scoring scoring(
      Chain("<OutputField name='whole' dataType='integer'/>"
            "<OutputField name='text' optype='ordinal' datatype='xs:string' "
            "feature='predictedValue'><Value value='9.25'/><Value value='10'/></OutputField>" +
            Derive("twice", "*(whole, 2)") + Derive("below", "lessThan(text, '10')") +
            "<OutputField name='shown' feature='predictedDisplayValue'/>"));
  scoring.Score({{"x1", "3"}, {"x2", "1"}});
  EXPECT_EQ(scoring.Text("whole"), "9");
  EXPECT_EQ(scoring.Text("text"), "9.25");
  EXPECT_EQ(scoring.Number("twice"), 18.0);
  EXPECT_EQ(scoring.Text("below"), "true");
  EXPECT_EQ(scoring.Text("shown"), "9.25");
}

TEST(OutputFields, HoldTextsOfACaseToSixtyFourMebibytes) {
  std::string fields = Derive("o0", "'" + std::string(1000, 'o') + "'");
  for (int i = 1; i <= 15; ++i) {
    const std::string before = "o" + std::to_string(i - 1);
    fields += Derive("o" + std::to_string(i), "concat(" + before + ", " + before + ")");
  }
  Scoring scoring(Chain(fields + Derive("copy", "o15")));
  EXPECT_EQ(scoring.Score(kFirst).status, MCScore::kInvalidValue);
  EXPECT_EQ(scoring.Text("o15").size(), 32768000U);
  EXPECT_EQ(scoring.Text("copy"), "");
}

TEST(OutputFields, ExpressionsNameInputsDerivedFieldsAndTheTarget) {
  const std::string doubled =
      "<LocalTransformations><DerivedField name='doubled' optype='continuous' dataType='double'>" +
      svmscore::transform::CallToXml("*(x1, 2)") + "</DerivedField></LocalTransformations>";
  // From its own field on, the name x2 is that field's, not the input's.
  Scoring scoring(Edit(Chain(Derive("sum", "+(y, x2)") + Derive("late", "doubled") +
                             Derive("x2", "7") + Derive("own", "x2")),
                       "<PolynomialKernelType", doubled + "$&"));
  scoring.Score({{"x1", "1.6"}});
  EXPECT_NEAR(scoring.Number("sum").value(), 1.4865625 + 0.25, 1e-12);
  EXPECT_EQ(scoring.Number("late"), 3.2);
  EXPECT_EQ(scoring.Number("own"), 7.0);
  EXPECT_EQ(scoring.Plan().NeededInputs().size(), 1U);
}

TEST(OutputFields, AFailureInsideAnExpressionStaysThere) {
  Scoring scoring(Chain(Derive("bad", "ln(-1)") + Derive("after", "if(isMissing(bad), 5)") +
                        "<OutputField name='y_hat' feature='predictedValue'/>"));
  EXPECT_EQ(scoring.Score(kFirst).status, 90027);
  EXPECT_FALSE(scoring.Number("bad"));
  EXPECT_EQ(scoring.Text("after"), "5");
  EXPECT_TRUE(scoring.Number("y_hat"));
  // An expression is evaluated even without a prediction, but not after an invalid input.
  EXPECT_EQ(scoring.Score({}).status, 90029);
  EXPECT_EQ(scoring.Text("after"), "5");
  EXPECT_EQ(scoring.Score({{"x1", "abc"}}).status, 90027);
  EXPECT_EQ(scoring.Text("after"), "");
}

TEST(OutputFields, ProbabilitiesAreThoseThatTheModelComputes) {
  Scoring votes(WithOutput("grades.pmml",
                           "<OutputField name='best' feature='probability'/>"
                           "<OutputField name='mid' feature='probability' value='mid'/>"
                           "<OutputField name='none' feature='probability' value='other'/>"));
  EXPECT_EQ(votes.Plan().Notes().size(), 1U);
  votes.Score({{"colour", "blue"}, {"grade", "B"}});
  EXPECT_DOUBLE_EQ(votes.Number("best").value(), 2.0 / 3);
  EXPECT_DOUBLE_EQ(votes.Number("mid").value(), 1.0 / 3);
  EXPECT_FALSE(votes.Number("none"));

  const std::string two =
      WithOutput("alarm.pmml",
                 "<OutputField name='label'/><OutputField name='best' feature='probability'/>"
                 "<OutputField name='alarm' feature='probability' value='alarm'/>");
  Scoring plain(two);
  EXPECT_EQ(plain.Plan().Notes().size(), 2U);
  const Case first = {{"temp", "30"}, {"load", "85"}};
  plain.Score(first);
  EXPECT_FALSE(plain.Number("best"));
  EXPECT_FALSE(plain.Number("alarm"));

  // The response category is the target's second.
  Scoring calibrated(Edit(two, "<SupportVectors ",
                          "<Extension extender='svmscore'><ResponseCategory response='alarm' "
                          "nonResponse='ok'/><ProbabilityParameters A='2' B='0'/></Extension>$&"));
  const auto& outcome = calibrated.Score(first);
  const double expected = 1 / (1 + std::exp(2 * -0.555782955751627));
  EXPECT_EQ(calibrated.Text("label"), "alarm");
  EXPECT_NEAR(calibrated.Number("alarm").value(), expected, 1e-12);
  EXPECT_EQ(calibrated.Number("best"), outcome.confidence);
}

// Those of a regression are tested with the whole program.
TEST(OutputFields, ResidualsOfACategoryNeedTheActualOne) {
  Scoring label(WithOutput("grades.pmml",
                           "<OutputField name='r' feature='residual'/>"
                           "<OutputField name='low' feature='residual' value='low'/>"));
  label.Score({{"colour", "blue"}, {"grade", "B"}, {"class", "low"}});
  EXPECT_DOUBLE_EQ(label.Number("r").value(), -2.0 / 3);
  EXPECT_DOUBLE_EQ(label.Number("low").value(), 1.0);
  // An invalid actual value does not make the inputs invalid.
  EXPECT_EQ(label.Score({{"colour", "blue"}, {"grade", "B"}, {"class", "none"}}).status, 0);
  EXPECT_FALSE(label.Number("r"));
}

TEST(OutputFields, FeaturesThatNoSuchModelComputesAreMissingAndTold) {
  EXPECT_EQ(NoteCount(Chain("<OutputField name='a' feature='standardError'/>"
                            "<OutputField name='b' feature='warning'/>"
                            "<OutputField name='c' feature='standardDeviation'/>"
                            "<OutputField name='d' feature='probability'/>"
                            "<OutputField name='e' targetField='z'/>"
                            "<OutputField name='f' feature='x-odd'/>")),
            6U);
  Scoring scoring(Chain("<OutputField name='a' feature='reasonCode' dataType='string'/>"));
  EXPECT_EQ(scoring.Score(kFirst).status, 0);
  EXPECT_EQ(scoring.Text("a"), "");
  // Before 4.2 a field without a feature had no value.
  EXPECT_EQ(NoteCount(Edit(Chain("<OutputField name='a'/>"), "4.4", "4.1")), 1U);
  EXPECT_EQ(NoteCount(Chain("<OutputField name='a'/>")), 0U);
}

// By default only a name that no field has is refused; what else is wrong leaves its column empty.
TEST(OutputFields, WhatIsWrongIsToldOrRefusedByNameAndPlace) {
  const std::string refused[][2] = {
      {Derive("a", "b") + Derive("b", "1"),
       "output field a refers to b, which comes after it in element OutputField"},
      {Derive("a", "a"), "output field a refers to itself"},
      {Derive("a", "nobody"), "refers to the field nobody"},
      {"<OutputField name='a'/><OutputField name='a'/>", "a of element OutputField is used twice"},
      {"<OutputField name='a' feature='transformedValue'/>", "there is no expression"},
      {"<OutputField name='a'><Constant>1</Constant><Constant>2</Constant></OutputField>",
       "there is a second expression"},
      {"<OutputField name='a'><Aggregate field='x1' function='sum'/></OutputField>", "Aggregate"},
      {"<OutputField name='a' feature='predictedvalue'/>", "predictedvalue"},
      {"<OutputField name='a' dataType='number'/>", "number"},
      {"<OutputField feature='predictedValue'/>", "attribute name is missing"},
      {"<Field name='a'/>", "element Field in element Output is not supported"},
  };
  for (const auto& [fields, complaint] : refused) {
    const std::string message = Refusal(Chain(fields), svmscore::LoadChecks::kStrict);
    EXPECT_NE(message.find(complaint), std::string::npos) << message;
    EXPECT_NE(message.find("line "), std::string::npos) << message;
    if (complaint.find("nobody") != std::string::npos) {
      EXPECT_EQ(Refusal(Chain(fields)), message);
      continue;
    }
    const std::string good = "<OutputField name='good'/>";
    Scoring scoring(Chain(fields + good));
    ASSERT_GE(scoring.Plan().Notes().size(), 1U) << fields;
    EXPECT_NE(scoring.Plan().Notes()[0].text.find(complaint), std::string::npos) << fields;
    scoring.Score(kFirst);
    EXPECT_NEAR(scoring.Number("good").value(), 2.44125, 1e-12) << fields;
    const auto& first = scoring.Plan().Fields()[0];
    EXPECT_TRUE(first.name == "good" || scoring.Text(first.name).empty() ||
                fields.find("name='a'/><") != std::string::npos)
        << fields;
  }
  // A field of the dictionary that the mining schema leaves out may be read all the same.
  const std::string unused = "<DataField name='z' optype='continuous' dataType='double'/>$&";
  const std::string text = Edit(Chain(Derive("a", "z")), "</DataDictionary>", unused);
  EXPECT_THAT(Refusal(Edit(text, " numberOfFields=.[0-9]+.", ""), svmscore::LoadChecks::kStrict),
              testing::HasSubstr("z"));
  Scoring scoring(text);
  EXPECT_EQ(scoring.Plan().Notes().size(), 1U);
  scoring.Score({{"x1", "0.7"}, {"x2", "0.3"}, {"z", "5"}});
  EXPECT_EQ(scoring.Number("a"), 5.0);
}

// One evaluator: an expression has one answer, whether an output field or a derived field holds it.
TEST(OutputFields, AnExpressionMeansWhatItMeansInADerivedField) {
  const std::vector<std::string> calls = {"isValid(x2)", "isNotValid(x2)", "lessThan(level, 'mid')",
                                          "greaterOrEqual(level, 'mid')", "isValid(note)"};
  std::string derived =
      "<DerivedField name='level' optype='ordinal' dataType='string'>" +
      svmscore::transform::CallToXml("if(lessThan(x1, 1), 'high', 'low')") +
      "<Value value='low'/><Value value='mid'/><Value value='high'/></DerivedField>";
  std::string fields;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const std::string number = std::to_string(i);
    derived += "<DerivedField name='d" + number + "' optype='categorical' dataType='boolean'>" +
               svmscore::transform::CallToXml(calls[i]) + "</DerivedField>";
    fields += Derive("through" + number, "d" + number) + Derive("direct" + number, calls[i]);
  }
  std::string text = Edit(Chain(fields), "<PolynomialKernelType",
                          "<LocalTransformations>" + derived + "</LocalTransformations>$&");
  text = Edit(text, "(name=\"x2\" [^>]*)/>",
              "$1><Interval closure='closedClosed' leftMargin='0' rightMargin='1'/></DataField>"
              "<DataField name='note' optype='categorical' dataType='string'><Value value='a'/>"
              "</DataField>");
  text = Edit(text, "numberOfFields=\"3\"", "numberOfFields='4'");
  text = Edit(text, "missingValueReplacement=\"0.25\"/>",
              "invalidValueTreatment='asIs'/>"
              "<MiningField name='note' usageType='supplementary' invalidValueTreatment='asIs'/>");
  Scoring scoring(text);
  const struct {
    Case given;
    std::vector<std::string> answers;
  } rows[] = {
      {{{"x1", "0.5"}, {"x2", "0.5"}, {"note", "a"}}, {"true", "false", "false", "true", "true"}},
      {{{"x1", "2"}, {"x2", "7"}, {"note", "b"}}, {"false", "true", "true", "false", "false"}},
  };
  for (const auto& [given, answers] : rows) {
    EXPECT_EQ(scoring.Score(given).status, 0);
    for (std::size_t i = 0; i < calls.size(); ++i) {
      // The records of this test have supplementary fields for output fields only.
      if (calls[i] != "isValid(note)") {
        EXPECT_EQ(scoring.Text("through" + std::to_string(i)), answers[i]) << calls[i];
      }
      EXPECT_EQ(scoring.Text("direct" + std::to_string(i)), answers[i]) << calls[i];
    }
  }
}

TEST(OutputFields, NumbersCostNoAllocation) {
  Scoring scoring(Chain("<OutputField name='y_hat'/>" + Derive("log", "ln(y_hat)")));
  MCZandor_850::InputCaseRecord record(scoring.Loaded().active, true, true);
  svmscore::output::OutputScratch scratch(scoring.Plan(), true);
  const svmscore::output::Outcome outcome = scoring.Score(kFirst);
  scoring.Plan().Evaluate(outcome, record, scratch);
  const long before = Allocations();
  for (int i = 0; i < 100; ++i) scoring.Plan().Evaluate(outcome, record, scratch);
  EXPECT_EQ(Allocations() - before, 0);
}

}  // namespace
}  // namespace svmscore_test
