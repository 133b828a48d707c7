// Derived fields and vector positions.
#include <gtest/gtest.h>

#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

// A derived field that multiplies x.
std::string Scaled(const std::string& name, const std::string& field, const std::string& factor) {
  return "<DerivedField name=\"" + name + R"(" optype="continuous" dataType="double">)" +
         R"(<NormContinuous field=")" + field + R"("><LinearNorm orig="0" norm="0"/>)" +
         R"(<LinearNorm orig="1" norm=")" + factor + R"("/></NormContinuous></DerivedField>)";
}

// The decision value is the first position times 1 plus the second times 10.
Parts Sum() {
  Parts parts;
  parts.vectors = R"(<VectorInstance id="a"><REAL-SparseArray n="2"><Indices>1 2</Indices>)"
                  R"(<REAL-Entries>1 10</REAL-Entries></REAL-SparseArray></VectorInstance>)";
  parts.machines = R"(<SupportVectorMachine><SupportVectors><SupportVector vectorId="a"/>)"
                   R"(</SupportVectors><Coefficients><Coefficient value="1"/></Coefficients>)"
                   R"(</SupportVectorMachine>)";
  return parts;
}

TEST(Transformations, OfDocumentAndModelAreOneList) {
  Parts parts = Sum();
  parts.global = "<TransformationDictionary>" + Scaled("g", "x", "2") + Scaled("both", "x", "7") +
                 "</TransformationDictionary>";
  parts.local = "<LocalTransformations>" + Scaled("l", "g", "3") + Scaled("both", "y", "5") +
                "</LocalTransformations>";
  parts.positions = R"(<FieldRef field="l"/><FieldRef field="both"/>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "transformations-merged 1, derived-field-hidden 1");
  EXPECT_EQ(Score(parts.Text(), {{"x", "1"}, {"y", "1"}}), "56");  // 1 * 6 + 10 * 5
}

TEST(Transformations, DefinedFunctionsServeTheModel) {
  Parts parts = Sum();
  parts.global = R"(<TransformationDictionary><DefineFunction name="twice" optype="continuous")"
                 R"( dataType="double"><ParameterField name="p" optype="continuous")"
                 R"( dataType="double"/><Apply function="+"><FieldRef field="p"/>)"
                 R"(<FieldRef field="p"/></Apply></DefineFunction></TransformationDictionary>)";
  parts.local = R"(<LocalTransformations><DerivedField name="d" optype="continuous")"
                R"( dataType="double"><Apply function="twice"><FieldRef field="x"/></Apply>)"
                R"(</DerivedField></LocalTransformations>)";
  parts.positions = R"(<FieldRef field="d"/><FieldRef field="y"/>)";
  EXPECT_EQ(Score(parts.Text(), {{"x", "4"}, {"y", "1"}}), "18");
}

TEST(Transformations, OfOneKindStayWhereTheyAre) {
  Parts parts = Sum();
  parts.global =
      "<TransformationDictionary>" + Scaled("g", "x", "2") + "</TransformationDictionary>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  parts.local = "<LocalTransformations/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
}

TEST(VectorPositions, TakeNumbersOnly) {
  const auto refused = [](const std::string& type) {
    Parts parts;
    parts.fields = Replaced(parts.fields, R"(name="y" optype="continuous" dataType="double")",
                            R"(name="y" optype="ordinal" dataType=")" + type + '"');
    try {
      Score(parts.Text(), {{"x", "1"}, {"y", "1"}});
    } catch (const MCZandor_850::SSException& error) {
      return std::to_string(error.GetErrorCode()) + " at " + error.GetPlace();
    }
    return std::string();
  };
  for (const char* type : {"string", "date", "time", "dateTime"}) {
    EXPECT_EQ(refused(type), "260316 at element FieldRef, line 5") << type;
  }
  for (const char* type : {"boolean", "integer", "timeSeconds", "dateDaysSince[1960]"}) {
    EXPECT_EQ(refused(type), "") << type;
  }
}

TEST(VectorPositions, MissingInputsAreMapped) {
  Parts parts = Sum();
  parts.positions = R"(<FieldRef field="x" mapMissingTo="0.5"/><FieldRef field="y"/>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "map-missing-to 1");
  EXPECT_EQ(Score(parts.Text(), {{"x", "3"}, {"y", "1"}}), "13");
  EXPECT_EQ(Score(parts.Text(), {{"y", "1"}}), "10.5");
  EXPECT_EQ(Score(parts.Text(), {{"x", "3"}}), "status 90029");
  EXPECT_EQ(Score(parts.Text(), {{"x", "three"}, {"y", "1"}}), "status 90027");
}

Parts Coloured(const std::string& coefficient, const std::string& values) {
  Parts parts = Sum();
  parts.fields = R"(<DataField name="x" optype="continuous" dataType="double"/>)"
                 R"(<DataField name="colour" optype="categorical" dataType="string">)" +
                 values + "</DataField>";
  parts.schema = Replaced(parts.schema, R"(<MiningField name="y"/>)", "");
  parts.positions = R"(<FieldRef field="x"/><CategoricalPredictor name="colour" value="red")"
                    R"( coefficient=")" +
                    coefficient + "\"/>";
  return parts;
}

TEST(VectorPositions, CategoriesCountTheirCoefficient) {
  const std::string values = R"(<Value value="red"/><Value value="blue"/>)";
  const Parts weighted = Coloured("-2.5", values);
  EXPECT_EQ(Read(weighted.Text()).Steps(), "category-coefficient 1");
  EXPECT_EQ(Score(weighted.Text(), {{"x", "3"}, {"colour", "red"}}), "-22");
  EXPECT_EQ(Score(weighted.Text(), {{"x", "3"}, {"colour", "blue"}}), "3");
  EXPECT_EQ(Score(weighted.Text(), {{"x", "3"}, {"colour", "green"}}), "status 90027");
  EXPECT_EQ(Score(weighted.Text(), {{"x", "3"}}), "status 90029");
  EXPECT_EQ(Read(Coloured("1.0", values).Text()).Steps(), "");
}

// A field without a list takes every value, and its categories are nothing to compare with.
TEST(VectorPositions, UnlistedCategoriesMatchTheInput) {
  const Parts parts = Coloured("1", "");
  EXPECT_EQ(Read(parts.Text()).Steps(), "category-unlisted 1");
  EXPECT_EQ(Score(parts.Text(), {{"x", "3"}, {"colour", "red"}}), "13");
  EXPECT_EQ(Score(parts.Text(), {{"x", "3"}, {"colour", "green"}}), "3");
  Parts numeric = Sum();
  numeric.positions = R"(<FieldRef field="x"/>)"
                      R"(<CategoricalPredictor name="y" value="2.0" coefficient="1"/>)";
  EXPECT_EQ(Score(numeric.Text(), {{"x", "0"}, {"y", "2"}}), "10");
  EXPECT_EQ(Score(numeric.Text(), {{"x", "0"}, {"y", "3"}}), "0");
}

TEST(VectorPositions, NewFieldsTakeFreeNamesAndTheListInForce) {
  Parts parts = Coloured("2", R"(<Value value="red"/>)");
  parts.global =
      "<TransformationDictionary>" + Scaled("colour=red", "x", "1") + "</TransformationDictionary>";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Show("VectorFields"),
            R"x(<VectorFields><FieldRef field="x"></FieldRef>)x"
            R"x(<FieldRef field="colour=red (2)"></FieldRef></VectorFields>)x");
  EXPECT_EQ(Score(parts.Text(), {{"x", "0"}, {"colour", "red"}}), "20");
}

}  // namespace
}  // namespace svmscore_test
