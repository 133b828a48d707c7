// What a translator would pass over in silence, and the strict reading.
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;
using svmscore::IntakeMode;

TEST(Refusals, NameWhatWouldBeDropped) {
  const struct {
    std::string pattern;
    std::string replacement;
    int code;
    std::string place;
  } cases[] = {
      {R"(vectorId="b")", R"(vectorId="c")", code::kBadContent, "element SupportVector, line 7"},
      {R"(<SupportVector vectorId="b"/>)", "", code::kLengthsDiffer,
       "element Coefficients, line 7"},
      {R"(<Coefficient value="2"/>)", "", code::kLengthsDiffer, "element Coefficients, line 7"},
      {R"(id="b")", R"(id="a")", code::kDuplicateName, "element VectorInstance, line 6"},
      {R"(id="b")", R"(id="")", code::kBadValue, "element VectorInstance, line 6"},
      {R"(value="2")", R"(value="2x")", code::kBadValue, "element Coefficient, line 7"},
      {R"(value="2")", R"(value="")", code::kBadValue, "element Coefficient, line 7"},
      {R"(absoluteValue="0.5")", R"(absoluteValue="0,5")", code::kBadValue,
       "element Coefficients, line 7"},
      {"<SupportVectorMachine ", R"(<SupportVectorMachine threshold="low")", code::kBadValue,
       "element SupportVectorMachine, line 7"},
      {R"(<FieldRef field="y"/>)", R"(<Field name="y"/>)", code::kUnsupported,
       "element Field, line 5"},
  };
  for (const auto& [pattern, replacement, code, place] : cases) {
    const std::string text = Replaced(Parts().Text(), pattern, replacement);
    const auto error = Refusal(text);
    EXPECT_EQ(error.GetErrorCode(), code) << pattern << ": " << error.what();
    EXPECT_EQ(error.GetPlace(), place) << pattern;
    EXPECT_EQ(Read(text, IntakeMode::kTolerate).Steps(), "") << pattern;
  }
}

TEST(Refusals, AnAbsentCoefficientIsZero) {
  const std::string text = Replaced(Parts().Text(), R"(value="-3")", "");
  EXPECT_EQ(Read(text).Steps(), "");
}

TEST(Strict, RefusesEveryChangeAndNoRemark) {
  Parts parts;
  parts.root = R"(version="4.3" xmlns="http://www.dmg.org/PMML-4_4")";
  EXPECT_EQ(Read(parts.Text(), IntakeMode::kStrict).Steps(), "version-disagreement 1");
  parts.vectors = R"(<VectorInstance id="a"><Array>1 2</Array></VectorInstance>)"
                  R"(<VectorInstance id="b"><Array>1 2</Array></VectorInstance>)";
  const auto error = Refusal(parts.Text(), IntakeMode::kStrict);
  EXPECT_EQ(error.GetErrorCode(), code::kNeedsIntake);
  EXPECT_EQ(error.GetPlace(), "element Array, line 6");
  EXPECT_NE(std::string(error.what()).find("dense-array"), std::string::npos);
}

TEST(Refusals, DocumentsWithoutAModelAreTheTranslators) {
  EXPECT_EQ(Read("<PMML version='4.4'/>").Steps(), "");
  EXPECT_EQ(Read("<PMML version='4.4'><SupportVectorMachineModel/></PMML>").Steps(), "");
  EXPECT_EQ(Read("<PMML version='4.4'><SupportVectorMachineModel functionName='classification'>"
                 "<VectorDictionary><VectorFields><FieldRef/></VectorFields></VectorDictionary>"
                 "<SupportVectorMachine/></SupportVectorMachineModel></PMML>")
                .Steps(),
            "");
}

}  // namespace
}  // namespace svmscore_test
