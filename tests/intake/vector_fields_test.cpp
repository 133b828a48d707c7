// Derived fields and vector positions.
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

constexpr char kDouble[] = " optype='continuous' dataType='double'>";

// A derived field that multiplies another one.
std::string Scaled(const std::string& name, const std::string& field, const std::string& factor) {
  return "<DerivedField name='" + name + '\'' + kDouble + "<NormContinuous field='" + field +
         "'><LinearNorm orig='0' norm='0'/><LinearNorm orig='1' norm='" + factor +
         "'/></NormContinuous></DerivedField>";
}

// The decision value is the first position times 1 plus the second times 10.
Parts Sum() {
  Parts parts;
  parts.vectors =
      "<VectorInstance id='a'><REAL-SparseArray n='2'><Indices>1 2</Indices>"
      "<REAL-Entries>1 10</REAL-Entries></REAL-SparseArray></VectorInstance>";
  parts.machines =
      "<SupportVectorMachine><SupportVectors><SupportVector vectorId='a'/>"
      "</SupportVectors><Coefficients absoluteValue='0'><Coefficient value='1'/></Coefficients>"
      "</SupportVectorMachine>";
  return parts;
}

TEST(Transformations, OfDocumentAndModelAreOneList) {
  Parts parts = Sum();
  parts.global = Global(Scaled("g", "x", "2"));
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  parts.local = "<LocalTransformations/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  parts.global = Global("<DefineFunction name='twice'" + std::string(kDouble) +
                        "<ParameterField name='p' optype='continuous' dataType='double'/>"
                        "<Apply function='+'><FieldRef field='p'/><FieldRef field='p'/></Apply>"
                        "</DefineFunction>" +
                        Scaled("g", "x", "3") + Scaled("both", "x", "7"));
  parts.local = "<LocalTransformations><DerivedField name='l'" + std::string(kDouble) +
                "<Apply function='twice'><FieldRef field='g'/></Apply></DerivedField>" +
                Scaled("both", "y", "5") + "</LocalTransformations>";
  parts.positions = "<FieldRef field='l'/><FieldRef field='both'/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "transformations-merged, derived-field-hidden");
  EXPECT_EQ(Score(parts.Text(), At("1", "1")), "56");  // 1 * 6 + 10 * 5
}

TEST(VectorPositions, TakeNumbersOnly) {
  const auto score = [](const std::string& type) {
    Parts parts;
    parts.fields = Replaced(parts.fields, Field("y"), Field("y", "ordinal", type));
    return Score(parts.Text(), At("1", ""));
  };
  for (const char* type : {"string", "date", "time", "dateTime"}) {
    EXPECT_EQ(score(type), "260316 FieldRef:5") << type;
  }
  for (const char* type : {"boolean", "integer", "timeSeconds", "dateDaysSince[1960]"}) {
    EXPECT_EQ(score(type), "status 90029") << type;
  }
}

TEST(VectorPositions, MissingInputsAreMapped) {
  Parts parts = Sum();
  parts.positions = "<FieldRef field='x' mapMissingTo='0.5'/><FieldRef field='y'/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "map-missing-to");
  EXPECT_EQ(Score(parts.Text(), At("3", "1")), "13");
  EXPECT_EQ(Score(parts.Text(), At("", "1")), "10.5");
  EXPECT_EQ(Score(parts.Text(), At("3", "")), "status 90029");
  EXPECT_EQ(Score(parts.Text(), At("three", "1")), "status 90027");
}

Parts Coloured(const std::string& coefficient, const std::string& values) {
  Parts parts = Sum();
  parts.fields = Field("x") + Field("colour", "categorical", "string", values);
  parts.schema = Replaced(parts.schema, "<MiningField name='y'/>", "");
  parts.positions =
      "<FieldRef field='x'/><CategoricalPredictor name='colour' value='red'"
      " coefficient='" +
      coefficient + "'/>";
  return parts;
}

TEST(VectorPositions, CategoriesCountTheirCoefficient) {
  const std::string values = "<Value value='red'/><Value value='blue'/>";
  const auto score = [](const Parts& parts, const std::string& colour) {
    return Score(parts.Text(), {{"x", "3"}, {"colour", colour}});
  };
  const Parts weighted = Coloured("-2.5", values);
  EXPECT_EQ(Read(weighted.Text()).Steps(), "category-coefficient");
  EXPECT_EQ(score(weighted, "red"), "-22");
  EXPECT_EQ(score(weighted, "blue"), "3");
  EXPECT_EQ(score(weighted, "green"), "status 90027");
  EXPECT_EQ(score(weighted, ""), "status 90029");
  EXPECT_EQ(Read(Coloured("1.0", values).Text()).Steps(), "");

  // A field without a list takes every value, so there are no categories to compare with.
  const Parts unlisted = Coloured("1", "");
  EXPECT_EQ(Read(unlisted.Text()).Steps(), "category-unlisted");
  EXPECT_EQ(score(unlisted, "red"), "13");
  EXPECT_EQ(score(unlisted, "green"), "3");
  Parts numeric = Sum();
  numeric.positions =
      "<FieldRef field='x'/>"
      "<CategoricalPredictor name='y' value='2.0' coefficient='1'/>";
  EXPECT_EQ(Score(numeric.Text(), At("0", "2")), "10");
  EXPECT_EQ(Score(numeric.Text(), At("0", "3")), "0");
}

TEST(VectorPositions, NewFieldsTakeFreeNamesAndTheListInForce) {
  Parts parts = Coloured("2", "<Value value='red'/>");
  parts.global = Global(Scaled("colour=red", "x", "1"));
  EXPECT_EQ(Read(parts.Text()).Show("VectorFields"),
            "<VectorFields><FieldRef field='x'></FieldRef>"
            "<FieldRef field='colour=red (2)'></FieldRef></VectorFields>");
  EXPECT_EQ(Score(parts.Text(), {{"x", "0"}, {"colour", "red"}}), "20");
}

}  // namespace
}  // namespace svmscore_test
