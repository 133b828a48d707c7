// Vectors in every form that the standard allows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/number_text.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;
using svmscore::IntakeMode;

std::string Vectors(const std::string& first, const std::string& second = {}) {
  const std::string b = R"(<REAL-SparseArray n="2"><Indices>2</Indices>)"
                        R"(<REAL-Entries>0.1</REAL-Entries></REAL-SparseArray>)";
  return R"(<VectorInstance id="a">)" + first + R"(</VectorInstance><VectorInstance id="b">)" +
         (second.empty() ? b : second) + "</VectorInstance>";
}

std::string Sparse(const std::string& attributes, const std::string& indices,
                   const std::string& entries) {
  return "<REAL-SparseArray " + attributes + "><Indices>" + indices + "</Indices><REAL-Entries>" +
         entries + "</REAL-Entries></REAL-SparseArray>";
}

std::string With(const std::string& first, const std::string& second = {}) {
  Parts parts;
  parts.vectors = Vectors(first, second);
  return parts.Text();
}

TEST(Vectors, DenseArraysKeepTheirNumbersAsWritten) {
  const Reading reading = Read(With(R"(<Array type="real" n="2">  0.250
      -15e-1 </Array>)",
                                    "<REAL-ARRAY>0 <![CDATA[0.1]]></REAL-ARRAY>"));
  EXPECT_EQ(reading.Steps(), "dense-array 2");
  EXPECT_EQ(reading.steps[0].element, "Array");
  EXPECT_EQ(reading.steps[0].line, 6);
  EXPECT_EQ(reading.Show("REAL-SparseArray", 0),
            "<REAL-SparseArray n=\"2\"><Indices>1 2 </Indices><REAL-Entries>  0.250\n"
            "      -15e-1 </REAL-Entries></REAL-SparseArray>");
  EXPECT_EQ(reading.Show("REAL-SparseArray", 1),
            "<REAL-SparseArray><Indices>1 2 </Indices><REAL-Entries>0 0.1</REAL-Entries>"
            "</REAL-SparseArray>");
}

// 2 * (0.25 x - 1.5 y) - 3 * (0.1 y) + 0.5, in every notation of the two vectors.
TEST(Vectors, AllNotationsScoreTheSameBits) {
  const std::string expected = Score(Parts().Text(), {{"x", "0.7"}, {"y", "-1.1"}});
  const std::string b = "<Array type=\"real\">0 0.1</Array>";
  for (const std::string& document :
       {With("<Array type=\"real\">0.25 -1.5</Array>", b),
        With("<REAL-SparseArray><Indices>2 1</Indices><REAL-Entries>-1.5 0.25</REAL-Entries>"
             "</REAL-SparseArray>",
             b),
        With("<REAL-SparseArray defaultValue=\"0.25\"><Indices>2</Indices>"
             "<Entries>-1.5</Entries></REAL-SparseArray>",
             b),
        With("<REAL-SparseArray n='2' defaultValue='-1.5'><Indices>1</Indices>"
             "<REAL-Entries>0.25</REAL-Entries></REAL-SparseArray>",
             b)}) {
    EXPECT_EQ(Score(document, {{"x", "0.7"}, {"y", "-1.1"}}), expected) << document;
  }
  EXPECT_NEAR(*svmscore::ParseNumber(expected), 2 * (0.25 * 0.7 + 1.5 * 1.1) + 0.3 * 1.1 + 0.5,
              1e-15);
}

TEST(Vectors, WholeNumbersAndDefaultsFillSparseArrays) {
  const Reading reading =
      Read(With("<INT-SparseArray defaultValue=\"7\"><Indices/><INT-Entries/></INT-SparseArray>",
                "<Array type=\"int\">3 -4</Array>"));
  EXPECT_EQ(reading.Steps(), "integer-sparse-array 1, default-value 1, dense-array 1");
  EXPECT_EQ(reading.Show("REAL-SparseArray"),
            "<REAL-SparseArray defaultValue=\"7\"><Indices>1 2 </Indices><REAL-Entries>7 7 "
            "</REAL-Entries></REAL-SparseArray>");
}

// A vector without entries would be dropped with its coefficient; it is the origin.
TEST(Vectors, TheOriginIsAVector) {
  Parts parts;
  parts.kernel = R"(<RadialBasisKernelType gamma="1"/>)";
  parts.vectors = Vectors("<Array>0 0</Array>", "<Array>0 0</Array>");
  const std::string expected = Score(parts.Text(), {{"x", "1"}, {"y", "0"}});
  EXPECT_EQ(expected, svmscore_test::Score(parts.Text(), {{"x", "0"}, {"y", "-1"}}));
  for (const char* origin : {"<REAL-SparseArray/>", "<REAL-SparseArray n='2'/>",
                             "<REAL-SparseArray n='2'><Indices/><REAL-Entries/></REAL-SparseArray>",
                             "<REAL-SparseArray><Indices> </Indices><Entries/>"
                             "</REAL-SparseArray>"}) {
    parts.vectors = Vectors(origin, origin);
    EXPECT_EQ(Score(parts.Text(), {{"x", "1"}, {"y", "0"}}), expected) << origin;
  }
}

TEST(Vectors, WhatIsNoVectorOfTheModelIsRefusedByPlace) {
  const struct {
    std::string vector;
    int code;
    std::string place;
  } cases[] = {
      {"<Array>1 2 3</Array>", code::kBadContent, "element Array, line 6"},
      {"<Array n='3'>1 2</Array>", code::kBadContent, "element Array, line 6"},
      {"<Array n='2'>1</Array>", code::kBadContent, "element Array, line 6"},
      {"<Array n='two'>1 2</Array>", code::kBadValue, "element Array, line 6"},
      {"<Array>1 2,5</Array>", code::kBadValue, "element Array, line 6"},
      {"<Array>1 0x10</Array>", code::kBadValue, "element Array, line 6"},
      {"<Array>1 inf</Array>", code::kBadValue, "element Array, line 6"},
      {"<Array>1 1e</Array>", code::kBadValue, "element Array, line 6"},
      {"<Array type='string'>\"1\" 2</Array>", code::kBadValue, "element Array, line 6"},
      {Sparse("", "2 2", "1 1"), code::kBadContent, "element Indices, line 6"},
      {Sparse("", "2 1 2", "1 1 1"), code::kBadContent, "element Indices, line 6"},
      {Sparse("defaultValue='none'", "1", "1"), code::kBadValue,
       "element REAL-SparseArray, line 6"},
      {Sparse("defaultValue='1'", "0", "1"), code::kBadContent, "element Indices, line 6"},
      {"<REAL-SparseArray defaultValue='1'><Entries>1 2</Entries></REAL-SparseArray>",
       code::kChildMissing, "element REAL-SparseArray, line 6"},
  };
  for (const auto& [vector, code, place] : cases) {
    const auto error = Refusal(With(vector));
    EXPECT_EQ(error.GetErrorCode(), code) << vector << ": " << error.what();
    EXPECT_EQ(error.GetPlace(), place) << vector;
    for (const auto& step : Read(With(vector), IntakeMode::kTolerate).steps) {
      EXPECT_FALSE(step.changes) << vector;
    }
  }
}

// The first vector should be (0.25, -1.5), and the kernel is x y + 1. By what a translator makes of
// the first vector the prediction for (1, 2) is one of these.
TEST(Vectors, WhatATranslatorReadsInItsOwnWayIsToldAndScored) {
  constexpr double kWhole = -6.6;
  constexpr double kFirstEntryOnly = -0.6;
  constexpr double kZero = -1.1;
  constexpr double kDropped = -3.1;
  const struct {
    std::string vector;
    std::string steps;
    double prediction;
    int code;  // in the strict mode
  } cases[] = {
      {Sparse("n='3'", "1 2", "0.25 -1.5"), "array-length 1", kWhole, code::kBadContent},
      {Sparse("n='-1'", "1 2", "0.25 -1.5"), "array-length 1", kWhole, code::kBadContent},
      {Sparse("", "1.9 2x", "0.25 -1.5"), "unreadable-number 2", kWhole, code::kBadValue},
      {Sparse("", "1 2", "0.25 -1.5,0"), "unreadable-number 1", kWhole, code::kBadValue},
      {Sparse("", "1 2", "0.25 none"), "unreadable-number 1", kFirstEntryOnly, code::kBadValue},
      {Sparse("", "0 1 7", "9 0.25 9"), "index-outside 2", kFirstEntryOnly, code::kBadContent},
      {Sparse("", "1 4294967298", "0.25 9"), "unreadable-number 1, index-outside 1",
       kFirstEntryOnly, code::kBadValue},
      {Sparse("", "one 1", "9 0.25"), "unreadable-number 1, index-outside 1", kFirstEntryOnly,
       code::kBadValue},
      {"<REAL-SparseArray n='2'><Entries>1 2</Entries></REAL-SparseArray>",
       "entries-without-indices 1", kZero, code::kChildMissing},
      {"<REAL-SparseArray n='1'/>", "array-length 1", kZero, code::kBadContent},
      {"<REAL-SparseArray n='2000000000'/>", "surplus-zeros 1", kZero, code::kNeedsIntake},
      {"<REAL-SparseArray><Entries>1 2</Entries></REAL-SparseArray>", "vector-without-values 1",
       kDropped, code::kChildMissing},
      {"<REAL-SparseArray n='0'/>", "vector-without-values 1", kDropped, code::kChildMissing},
      {"", "vector-without-values 1", kDropped, code::kChildMissing},
      {"<Array>1 2</Array>" + Sparse("", "1 2", "0.25 -1.5"), "two-arrays 1", kWhole,
       code::kBadContent},
  };
  for (const auto& [vector, steps, prediction, code] : cases) {
    Parts parts;
    parts.kernel = R"(<PolynomialKernelType gamma="1" coef0="1" degree="1"/>)";
    parts.vectors = Vectors(vector);
    EXPECT_EQ(Read(parts.Text()).Steps(), steps) << vector;
    EXPECT_EQ(Read(parts.Text(), IntakeMode::kTolerate).Steps(), steps) << vector;
    EXPECT_NEAR(*svmscore::ParseNumber(Score(parts.Text(), {{"x", "1"}, {"y", "2"}})), prediction,
                1e-12)
        << vector;
    const auto error = Refusal(parts.Text(), IntakeMode::kStrict);
    EXPECT_EQ(error.GetErrorCode(), code) << vector << error.what();
    EXPECT_THAT(error.GetPlace(), testing::EndsWith(", line 6")) << vector;
  }
}

TEST(Vectors, NumbersOfTheStandardAreTaken) {
  for (const char* number : {"+.5", "5.", "-1E-3", "1e+2", "INF", "-INF", "NaN", "007"}) {
    EXPECT_EQ(Read(With("<Array>1 " + std::string(number) + "</Array>")).Steps(), "dense-array 1")
        << number;
  }
}

}  // namespace
}  // namespace svmscore_test
