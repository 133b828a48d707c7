// The three ways to read a document side by side: to the letter, by default, strictly.
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/text/number_text.h"
#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

using svmscore::LoadChecks;

const std::string kKernel = "<LinearKernelType/>";
const std::string kLag =
    "<DerivedField name='lag' optype='continuous' dataType='double'><Lag field='x'/>"
    "</DerivedField>";

std::string Local(const std::string& content) {
  return "<LocalTransformations>" + content + "</LocalTransformations>";
}

std::string Derived(const std::string& name, const std::string& from) {
  return "<DerivedField name='" + name +
         "' optype='continuous' dataType='double'><FieldRef field='" + from + "'/></DerivedField>";
}

std::string OutputField(const std::string& attributes, const std::string& content = "") {
  return "<Output><OutputField name='o' " + attributes + ">" + content + "</OutputField></Output>";
}

std::string Findings(const std::string& text) {
  std::string names;
  for (const auto& finding : svmscore::FirstOfEachKind(Load(text, LoadChecks::kRefuse).findings)) {
    names += (names.empty() ? "" : ", ") + std::string(finding.Name());
  }
  return names;
}

// A case with both numbers and a colour.
const Case kCase = {{"x", "1"}, {"y", "2"}, {"colour", "red"}};

struct Reading3 {
  std::string part;  // of the document
  Parts parts;
  std::string findings;
  std::string strict;  // the code with which the strict reading refuses
  double letter = -5.6;
  double meant = -5.6;
};

void ExpectScoredByAll(const std::vector<Reading3>& table) {
  for (const auto& [part, parts, findings, strict, letter, meant] : table) {
    SCOPED_TRACE(part);
    const std::string text = parts.Text();
    EXPECT_EQ(Findings(text), findings);
    EXPECT_NEAR(svmscore::ParseNumber(Score(text, kCase, LoadChecks::kAsIs)).value(), letter,
                1e-12);
    EXPECT_NEAR(Predict(text, kCase), meant, 1e-12);
    EXPECT_THAT(Score(text, kCase, LoadChecks::kStrict), testing::StartsWith(strict + ' '));
  }
}

Reading3 Row(const std::string& part, const std::function<void(Parts&)>& edit,
             const std::string& findings, const std::string& strict, double letter = -5.6,
             double meant = -5.6) {
  Parts parts;
  edit(parts);
  return {part, parts, findings, strict, letter, meant};
}

TEST(Modes, WhatATranslatorScoresIsScored) {
  const auto vector = [](const std::string& array) {
    return [array](Parts& parts) {
      parts.vectors = Replaced(parts.vectors,
                               "<REAL-SparseArray n='2'><Indices>1 2</Indices>"
                               "<REAL-Entries>0.25 -1.5</REAL-Entries></REAL-SparseArray>",
                               array);
    };
  };
  const auto category = [](const std::string& coefficient, char major) {
    return [coefficient, major](Parts& parts) {
      parts.root = Version(major, major == '2' ? '1' : '4');
      parts.positions =
          "<FieldRef field='x'/><CategoricalPredictor name='colour' value='red' coefficient='" +
          coefficient + "'/>";
    };
  };
  ExpectScoredByAll({
      Row(
          "a later version", [](Parts& p) { p.root = Version('5', '0'); },
          "namespace-unknown, version-unknown", "260308"),
      Row(
          "version 3 with further digits", [](Parts& p) { p.root = "version='31.2'"; },
          "namespace-missing, version-unknown", "260308"),
      Row(
          "mapMissingTo in version 2",
          [](Parts& p) {
            p.root = Version('2', '1');
            p.positions = Replaced(p.positions, "field='x'", "field='x' mapMissingTo='7'");
          },
          "version-raised, map-missing-to", "260307"),
      Row(
          "mapMissingTo of another type",
          [](Parts& p) {
            p.positions = Replaced(p.positions, "field='x'", "field='x' mapMissingTo='none'");
          },
          "map-missing-unreadable", "260153"),
      Row("a coefficient in version 2", category("2", '2'), "version-raised, category-coefficient",
          "260307", 1.0, -5.6),
      Row("an unlisted category in version 2", category("1", '2'),
          "version-raised, category-unlisted", "260307", 1.0, -2.3),
      Row("an infinite coefficient", category("INF", '4'), "number-not-finite, category-unlisted",
          "260313", 1.0, -2.3),
      Row(
          "a derived field in version 2",
          [](Parts& p) {
            p.root = Version('2', '1');
            p.global = Global(Derived("d", "y"));
            p.positions = Replaced(p.positions, "'y'", "'d'");
          },
          "version-raised", "260307", 1.0, -5.6),
      Row("an index twice",
          vector("<REAL-SparseArray n='2'><Indices>1 1 2</Indices>"
                 "<REAL-Entries>0.25 9 -1.5</REAL-Entries></REAL-SparseArray>"),
          "index-repeated", "260313"),
      Row("no number as default",
          vector("<REAL-SparseArray n='2' defaultValue='none'><Indices>1 2</Indices>"
                 "<REAL-Entries>0.25 -1.5</REAL-Entries></REAL-SparseArray>"),
          "default-value-unreadable", "260153"),
      Row("an infinite default",
          vector("<REAL-SparseArray n='2' defaultValue='INF'><Indices>2</Indices>"
                 "<REAL-Entries>-1.5</REAL-Entries></REAL-SparseArray>"),
          "default-value-unreadable", "260153", -6.1, -6.1),
      Row(
          "a vector field that the schema leaves out",
          [](Parts& p) { p.schema = Replaced(p.schema, "<MiningField name='y'/>", ""); },
          "input-not-in-schema", "260313"),
      Row(
          "a replacement that is not a number",
          [](Parts& p) {
            p.schema = Replaced(p.schema, "name='y'", "name='y' missingValueReplacement='NaN'");
          },
          "number-not-finite", "260313"),
      Row("an index outside beside a default",
          vector("<REAL-SparseArray n='2' defaultValue='-1.5'><Indices>0 1</Indices>"
                 "<REAL-Entries>7 0.25</REAL-Entries></REAL-SparseArray>"),
          "index-out-of-range, default-value", "260313", 0.4, -5.6),
      Row("a dense array of texts", vector("<Array n='3' type='string'>0.25 -1.5</Array>"),
          "count-disagrees, array-type, dense-array", "260313", -0.1, -5.6),
      Row("integers of two lengths",
          vector("<INT-SparseArray n='2'><Indices>1 2</Indices><INT-Entries>1</INT-Entries>"
                 "</INT-SparseArray>"),
          "vector-dropped, unknown-vector", "260313", -0.1, -0.1),
      Row(
          "svmRepresentation beside support vectors",
          [](Parts& p) { p.model += " svmRepresentation='Coefficients'"; },
          "coefficient-form-mistaken", "260313"),
      Row(
          "an unreadable field that nothing needs",
          [](Parts& p) { p.global = Global(kLag + Derived("of lag", "lag")); },
          "derived-field-left-out", "260313"),
      Row(
          "a circle that nothing needs",
          [](Parts& p) { p.local = Local(Derived("a", "b") + Derived("b", "a")); },
          "derived-field-left-out", "260313"),
      Row(
          "a function that nothing calls",
          [](Parts& p) { p.global = Global("<DefineFunction name='f'/>"); },
          "derived-field-left-out", "260313"),
      Row(
          "hidden transformations that cannot be built",
          [](Parts& p) {
            p.global = Global(Derived("d", "y"));
            p.local = Local(kLag);
            p.positions = Replaced(p.positions, "'y'", "'d'");
          },
          "transformations-merged, derived-field-left-out", "260313"),
      Row(
          "an input that the schema leaves out",
          [](Parts& p) {
            p.schema = Replaced(p.schema, "<MiningField name='y'/>", "");
            p.local = Local(Derived("d", "y"));
            p.positions = Replaced(p.positions, "'y'", "'d'");
          },
          "input-not-in-schema", "260313"),
      Row(
          "an unknown feature", [](Parts& p) { p.local = OutputField("feature='f'"); }, "results",
          "260313"),
      Row(
          "an unknown type", [](Parts& p) { p.local = OutputField("datatype='f'"); }, "results",
          "260313"),
      Row(
          "an expression that is not supported",
          [](Parts& p) { p.local = OutputField("", "<Lag field='x'/>"); }, "results", "260313"),
      Row(
          "no number as a factor",
          [](Parts& p) { p.local = "<Targets><Target field='t' rescaleFactor='a'/></Targets>"; },
          "results", "260313"),
  });
}

TEST(Modes, ARootOfAnotherNameIsRead) {
  const std::string text = Replaced(Parts().Text(), "PMML", "XMML");
  EXPECT_EQ(Findings(text), "root-name, namespace-unknown");
  EXPECT_EQ(Score(text, kCase), Score(Parts().Text(), kCase));
  EXPECT_EQ(Score(text, kCase, LoadChecks::kAsIs), Score(Parts().Text(), kCase));
  EXPECT_EQ(Score(text, kCase, LoadChecks::kStrict), "260313 XMML:1");
}

// Votes by a rule that would not fit the machines.
TEST(Modes, AMethodIsTakenForAnotherWhereItFits) {
  Parts parts;
  parts.Classify({"a", "b", "c", "d"});
  parts.machines = Parts::Machine("a", "b") + Parts::Machine("a", "c") + Parts::Machine("b", "c");
  parts.model += " classificationMethod='OneAgainstAll'";
  const auto expect_letter = [&](const std::string& findings) {
    EXPECT_EQ(Findings(parts.Text()), findings);
    EXPECT_EQ(Score(parts.Text(), kCase), "a");
    EXPECT_EQ(Score(parts.Text(), kCase, LoadChecks::kAsIs), "a");
  };
  expect_letter("method-contradicts-machines");
  parts.model = Replaced(parts.model, "'OneAgainstAll'", "'oneAgainstOne'");
  expect_letter("unknown-method");
  parts.Classify({"a", "b", "c"});
  parts.root = Version('3', '2');
  parts.model = "functionName='classification' alternateBinaryTargetCategory='d'";
  parts.machines.clear();
  for (const std::string category : {"a", "b", "c"}) {
    parts.machines += Parts::Machine("targetCategory='" + category + '\'');
  }
  expect_letter("alternate-unused");
}

TEST(Modes, WhatNobodyCanHaveMeantIsRefusedAndScoredToTheLetter) {
  const struct {
    std::string pattern;
    std::string replacement;
    std::string refusal;
  } cases[] = {
      {"<FieldRef field='y'/>", "<FieldRef field='z'/>", "260311 FieldRef:5"},
      {"<FieldRef field='y'/>", "<CategoricalPredictor name='z' value='1' coefficient='1'/>",
       "260311 CategoricalPredictor:5"},
      {"<FieldRef field='y'/>", "<FieldRef field='colour'/>", "260316 FieldRef:5"},
      {"functionName", "isScorable='0' functionName", "260281 SupportVectorMachineModel:3"},
      {"functionName", "isScorable=' False' functionName", "260281 SupportVectorMachineModel:3"},
      {"id='b'>", "id='b'><Array>1 2 3</Array></VectorInstance><VectorInstance id='b'>",
       "260313 Array:6"},
      {"<REAL-SparseArray n='2'><Indices>2</Indices><REAL-Entries>0.1</REAL-Entries>"
       "</REAL-SparseArray>",
       "<Array>1 x</Array>", "260153 Array:6"},
      {"vectorId='b'/>", "vectorId='c'/>", ""},
      {"<SupportVector vectorId='a'/><SupportVector vectorId='b'/>",
       "<SupportVector vectorId='c'/>", "260313 SupportVectorMachine:7"},
      {"absoluteValue='0.5'", "absoluteValue='0,5'", "260153 Coefficients:7"},
      {kKernel, Local(kLag) + kKernel, ""},
      {kKernel, OutputField("feature='transformedValue'", "<FieldRef field='z'/>") + kKernel,
       "260311 FieldRef:4"},
  };
  for (const auto& [pattern, replacement, refusal] : cases) {
    SCOPED_TRACE(replacement);
    const std::string text = Replaced(Parts().Text(), pattern, replacement);
    EXPECT_TRUE(svmscore::ParseNumber(Score(text, kCase, LoadChecks::kAsIs)));
    const std::string score = Score(text, kCase);
    EXPECT_EQ(svmscore::ParseNumber(score) ? "" : score, refusal);
  }
  // A derived field that is needed and cannot be computed.
  Parts parts;
  parts.local = Local(kLag);
  parts.positions = Replaced(parts.positions, "'y'", "'lag'");
  EXPECT_EQ(Score(parts.Text(), kCase), "260304 Lag:4");
  EXPECT_TRUE(svmscore::ParseNumber(Score(parts.Text(), kCase, LoadChecks::kAsIs)));
}

// An error of the translator is not hidden by an error of another part.
TEST(Modes, ATranslatorsCodeComesFirst) {
  const std::string dense = "<VectorInstance id='c'><Array>1 2 3</Array></VectorInstance>";
  Parts parts;
  parts.vectors += dense;
  const struct {
    std::string pattern;
    std::string replacement;
    std::string refusal;
  } cases[] = {
      {kKernel, "", "260115 SupportVectorMachineModel:3"},
      {"functionName='regression'", "functionName='clustering'",
       "260153 SupportVectorMachineModel:3"},
      {"vectorId='b'", "id='b'", "260120 SupportVector:7"},
      {" id='a'", "", "260120 VectorInstance:6"},
      {"<REAL-Entries>0.1</REAL-Entries>", "", "260115 REAL-SparseArray:6"},
  };
  for (const auto& [pattern, replacement, refusal] : cases) {
    SCOPED_TRACE(replacement);
    for (const std::string& model : {parts.model, "isScorable='0' " + parts.model}) {
      const std::string text =
          Replaced(Replaced(parts.Text(), parts.model, model), pattern, replacement);
      EXPECT_EQ(Score(text, kCase), refusal);
      EXPECT_EQ(Score(text, kCase, LoadChecks::kAsIs), refusal);
      EXPECT_EQ(Score(text, kCase, LoadChecks::kStrict), refusal);
    }
  }
  // The intake would name the second category; the translator lacks it.
  parts.Classify();
  parts.machines = Parts::Machine("targetCategory='yes'");
  EXPECT_EQ(Score(parts.Text(), kCase), "260120 SupportVectorMachine:7");
  EXPECT_EQ(Score(Replaced(parts.Text(), dense, ""), kCase), "yes");
}

// The rewritten document is refused, and the document as written is not.
TEST(Modes, TheLetterIsScoredWhereItsMeaningCannotBe) {
  Parts parts;
  parts.machines = "<Extension>" + Parts::Machine("") +
                   "</Extension><SupportVectorMachine><Coefficients/></SupportVectorMachine>";
  EXPECT_EQ(Findings(parts.Text()), "read-to-the-letter");
  EXPECT_EQ(Score(parts.Text(), kCase), Score(Parts().Text(), kCase));
}

TEST(Modes, ANumberThatIsNotFiniteFailsItsCase) {
  Parts parts;
  parts.kernel = "<PolynomialKernelType gamma='1' coef0='0' degree='2.5'/>";
  const Case negative = At("0", "1");
  EXPECT_EQ(Score(parts.Text(), negative), "status 90027");
  EXPECT_EQ(Score(parts.Text(), negative, LoadChecks::kAsIs), "NaN");
  EXPECT_EQ(Score(parts.Text(), At("1", "0")),
            Score(parts.Text(), At("1", "0"), LoadChecks::kAsIs));
  parts.Classify();
  EXPECT_EQ(Score(parts.Text(), negative), "status 90027");
  EXPECT_EQ(Score(parts.Text(), negative, LoadChecks::kAsIs), "no");
}

}  // namespace
}  // namespace svmscore_test
