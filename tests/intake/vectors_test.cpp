// Vectors in every form that the standard allows.
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

using svmscore::IntakeMode;

std::string Sparse(const std::string& attributes, const std::string& indices,
                   const std::string& entries) {
  return "<REAL-SparseArray" + attributes + "><Indices>" + indices + "</Indices><REAL-Entries>" +
         entries + "</REAL-Entries></REAL-SparseArray>";
}

// The document with other vectors than (0.25, -1.5) and (0, 0.1).
Parts With(const std::string& first, const std::string& second = Sparse(" n='2'", "2", "0.1")) {
  Parts parts;
  parts.vectors = "<VectorInstance id='a'>" + first + "</VectorInstance><VectorInstance id='b'>" +
                  second + "</VectorInstance>";
  return parts;
}

TEST(Vectors, KeepTheirNumbersAsWritten) {
  const Reading dense = Read(With("<Array type='real' n='2'>  0.250\n      -15e-1 </Array>",
                                  "<REAL-ARRAY>0 <![CDATA[0.1]]></REAL-ARRAY>")
                                 .Text());
  EXPECT_EQ(dense.Steps(), "dense-array 2");
  EXPECT_EQ(dense.findings[0].place.element, "Array");
  EXPECT_EQ(dense.findings[0].place.line, 6);
  EXPECT_EQ(dense.Show("REAL-SparseArray", 0), Sparse(" n='2'", "1 2 ", "  0.250\n      -15e-1 "));
  EXPECT_EQ(dense.Show("REAL-SparseArray", 1), Sparse("", "1 2 ", "0 0.1"));
  const Reading whole =
      Read(With("<INT-SparseArray defaultValue='7'><Indices/><INT-Entries/></INT-SparseArray>",
                "<Array type='int'>3 -4</Array>")
               .Text());
  EXPECT_EQ(whole.Steps(), "integer-sparse-array, default-value, dense-array");
  EXPECT_EQ(whole.Show("REAL-SparseArray"), Sparse(" defaultValue='7'", "1 2 ", "7 7 "));
}

// Although elements are added before, and for, the first finding.
TEST(Vectors, AreFoundOnTheLinesOfTheFile) {
  const Reading reading =
      Read(With("<REAL-SparseArray defaultValue='7'/>", "\n<Array>3 -4</Array>").Text());
  ASSERT_EQ(reading.Steps(), "default-value, dense-array");
  EXPECT_EQ(reading.findings[1].place.line, reading.findings[0].place.line + 1);
}

// A vector without entries would be dropped with its coefficient; it is the origin.
TEST(Vectors, AllNotationsScoreTheSameBits) {
  const auto score = [](const std::string& vector) {
    Parts parts = With(vector);
    parts.kernel = "<RadialBasisKernelType gamma='1'/>";
    return Predict(parts.Text(), At("0.7", "-1.1"));
  };
  const std::string first = "<Array>0.25 -1.5</Array>";
  const std::string origin = "<Array>0 0</Array>";
  const std::pair<std::string, std::string> cases[] = {
      {Sparse("", "1 2", "0.25 -1.5"), first},
      {Sparse("", "2 1", "-1.5 0.25"), first},
      {"<REAL-SparseArray defaultValue='0.25'><Indices>2</Indices><Entries>-1.5</Entries>"
       "</REAL-SparseArray>",
       first},
      {Sparse(" n='2' defaultValue='-1.5'", "1", "0.25"), first},
      {"<REAL-SparseArray/>", origin},
      {"<REAL-SparseArray n='2'/>", origin},
      {Sparse(" n='2'", "", ""), origin},
      {"<REAL-SparseArray><Indices> </Indices><Entries/></REAL-SparseArray>", origin},
  };
  for (const auto& [vector, same] : cases) EXPECT_EQ(score(vector), score(same)) << vector;
  // The squared distances of the point from both; the coefficient is 2.
  EXPECT_NEAR(score(first) - score(origin), 2 * (std::exp(-0.3625) - std::exp(-1.7)), 1e-15);
}

TEST(Vectors, WhatIsNoVectorOfTheModelIsRefusedByPlace) {
  const std::pair<std::string, std::string> cases[] = {
      {"<Array>1 2 3</Array>", "260313 Array"}, {"<Array n='2'>1</Array>", "260313 Array"},
      {"<Array>1 2,5</Array>", "260153 Array"}, {"<Array>1 0x10</Array>", "260153 Array"},
      {"<Array>1 inf</Array>", "260153 Array"}, {"<Array>1 1e</Array>", "260153 Array"},
  };
  for (const auto& [vector, refusal] : cases) {
    const std::string text = With(vector).Text();
    EXPECT_EQ(Refusal(text), refusal + ":6") << vector;
    for (const auto& finding : Read(text).findings) {
      EXPECT_NE(finding.kind->of_class, svmscore::FindingClass::kStandard) << vector;
    }
  }
  for (const char* number : {"+.5", "5.", "-1E-3", "1e+2", "1e-400", "1e+0300", "007"}) {
    EXPECT_EQ(Read(With("<Array>1 " + std::string(number) + "</Array>").Text()).Steps(),
              "dense-array")
        << number;
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
    std::string code;  // in the strict mode
  } cases[] = {
      {Sparse(" n='3'", "1 2", "0.25 -1.5"), "count-disagrees", kWhole, "260313"},
      {Sparse(" n='-1'", "1 2", "0.25 -1.5"), "count-disagrees", kWhole, "260313"},
      {"<Array n='3'>0.25 -1.5</Array>", "count-disagrees, dense-array", kWhole, "260313"},
      {"<Array n='two'>0.25 -1.5</Array>", "count-disagrees, dense-array", kWhole, "260313"},
      {"<Array type='string'>0.25 -1.5</Array>", "array-type, dense-array", kWhole, "260153"},
      {Sparse("", "2 1 2", "-1.5 0.25 7"), "index-repeated, unordered-indices", kWhole, "260313"},
      {Sparse(" defaultValue='7'", "2 1 2", "-1.5 0.25 7"), "index-repeated, unordered-indices",
       kWhole, "260313"},
      {Sparse(" defaultValue='-1.5'", "1 1", "0.25 7"), "index-repeated, default-value", kWhole,
       "260313"},
      {Sparse(" defaultValue='none'", "1", "0.25"), "default-value-unreadable", kFirstEntryOnly,
       "260153"},
      {Sparse(" defaultValue='-1.5'", "0 1 9", "7 0.25 7"), "index-out-of-range 2, default-value",
       kWhole, "260313"},
      {"<INT-SparseArray n='none'><Indices>1</Indices><INT-Entries>1</INT-Entries>"
       "</INT-SparseArray>",
       "vector-dropped, unknown-vector", kDropped, "260313"},
      {"<INT-SparseArray/>" + Sparse("", "1 2", "0.25 -1.5"), "", kWhole, ""},
      {"<REAL-SparseArray n='2' defaultValue='1'><Entries>1 2</Entries></REAL-SparseArray>",
       "no-indices", kZero, "260115"},
      {Sparse("", "1.9 2x", "0.25 -1.5"), "bad-number 2", kWhole, "260153"},
      {Sparse("", "1 2", "0.25 -1.5,0"), "bad-number", kWhole, "260153"},
      {Sparse("", "1 2", "0.25 none"), "bad-number", kFirstEntryOnly, "260153"},
      {Sparse("", "0 1 7", "9 0.25 9"), "index-out-of-range 2", kFirstEntryOnly, "260313"},
      {Sparse("", "1 4294967298", "0.25 9"), "bad-number, index-out-of-range", kFirstEntryOnly,
       "260153"},
      {Sparse("", "one 1", "9 0.25"), "bad-number, index-out-of-range", kFirstEntryOnly, "260153"},
      {"<REAL-SparseArray n='2'><Entries>1 2</Entries></REAL-SparseArray>", "no-indices", kZero,
       "260115"},
      {"<REAL-SparseArray n='1'/>", "count-disagrees", kZero, "260313"},
      {"<REAL-SparseArray n='2000000000'/>", "surplus-zeros", kZero, "260307 surplus-zeros"},
      {"<REAL-SparseArray><Entries>1 2</Entries></REAL-SparseArray>",
       "vector-dropped, unknown-vector", kDropped, "260313"},
      {"", "vector-dropped, unknown-vector", kDropped, "260313"},
      {"<Array>1 2</Array>" + Sparse("", "1 2", "0.25 -1.5"), "two-arrays", kWhole, "260313"},
  };
  for (const auto& [vector, steps, prediction, code] : cases) {
    Parts parts = With(vector);
    parts.kernel = "<PolynomialKernelType gamma='1' coef0='1' degree='1'/>";
    EXPECT_EQ(Read(parts.Text()).Steps(), steps) << vector;
    EXPECT_NEAR(Predict(parts.Text(), At("1", "2")), prediction, 1e-12) << vector;
    if (code.empty()) continue;
    EXPECT_THAT(Refusal(parts.Text(), IntakeMode::kStrict),
                testing::AllOf(testing::StartsWith(code), testing::EndsWith(":6")))
        << vector;
  }
}

}  // namespace
}  // namespace svmscore_test
