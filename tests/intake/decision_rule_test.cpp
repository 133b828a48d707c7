// The rules by which machines decide, from the oldest version on.
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

// A machine whose decision value is x itself, in both representations.
std::string Identity(const std::string& attributes, bool linear = false) {
  return "<SupportVectorMachine " + attributes + '>' +
         (linear ? "" : "<SupportVectors><SupportVector vectorId='a'/></SupportVectors>") +
         "<Coefficients absoluteValue='0'><Coefficient value='1'/>" +
         (linear ? "<Coefficient value='0'/>" : "") + "</Coefficients></SupportVectorMachine>";
}

Parts Deciding(char major, char minor, const std::string& model, const std::string& machines) {
  Parts parts;
  parts.Classify();
  parts.root = Version(major, minor);
  parts.model += ' ' + model;
  parts.vectors =
      "<VectorInstance id='a'><REAL-SparseArray><Indices>1 2</Indices>"
      "<REAL-Entries>1 0</REAL-Entries></REAL-SparseArray></VectorInstance>";
  parts.machines = machines;
  return parts;
}

TEST(OldTwoClassForm, GivesWayToTheNewerRule) {
  const std::string second = "alternateBinaryTargetCategory='no'";
  const std::string quarter = " threshold='0.25'";
  const std::string newer = "alternate-on-model";
  const struct {
    const char* version;
    std::string model;
    std::string machine;
    std::string steps;
    std::string lesser;  // two neighbouring values, and for which categories they decide
    std::string larger;
    std::string decided;
  } cases[] = {
      {"3.2", second, "", "two-class-rounding", "0.49999999999999994", "0.5", "no yes"},
      {"3.1", second + quarter, "", newer, "0.2", "0.25", "yes no"},
      {"3.1", second, quarter, newer, "0.2", "0.25", "yes no"},
      {"3.1", second + " maxWins='false'", "", newer, "-0.1", "0", "yes no"},
      {"3.2", Replaced(second, "no", "maybe"), " alternateTargetCategory='no'", "", "-1", "1",
       "yes no"},
      {"4.2", second, "", newer, "-0.1", "0", "yes no"},
  };
  for (const auto& [version, model, machine, steps, lesser, larger, decided] : cases) {
    const std::string text =
        Deciding(version[0], version[2], model, Identity("targetCategory='yes'" + machine)).Text();
    EXPECT_EQ(Read(text).Steps(), steps) << version << model;
    EXPECT_EQ(Score(text, At(lesser, "0")) + ' ' + Score(text, At(larger, "0")), decided)
        << version << model;
  }
  const std::string machine = Identity("targetCategory='yes'");
  EXPECT_EQ(
      Refusal(Deciding('3', '2', second, machine + machine).Text(), svmscore::IntakeMode::kStrict),
      "260304 SupportVectorMachineModel:3");
}

// Three classes, one machine a pair: f(a,b) = x, f(b,c) = x, and a third.
TEST(Method, IsInferredWhereEveryPairHasItsMachine) {
  const auto with = [](const std::string& third, const std::string& model = "",
                       bool linear = false) {
    Parts parts = Deciding('4', '1', "",
                           Identity("targetCategory='a' alternateTargetCategory='b'", linear) +
                               Identity("targetCategory='b' alternateTargetCategory='c'", linear) +
                               Identity(third, linear));
    parts.Classify({"a", "b", "c"});
    parts.model += model + (linear ? " svmRepresentation='Coefficients'" : "");
    return parts.Text();
  };
  const std::string last = "targetCategory='a' alternateTargetCategory='c'";
  for (const bool linear : {false, true}) {
    EXPECT_EQ(Read(with(last, "", linear)).Steps(),
              std::string(linear ? "coefficient-form 3, " : "") + "method-inferred");
    // Not below 0: b, c and c have the votes.
    EXPECT_EQ(Score(with(last, "", linear), At("1", "0")), "c");
    EXPECT_EQ(Score(with(last, "", linear), At("-1", "0")), "a");
  }
  EXPECT_EQ(Read(with("targetCategory='c'")).Steps(), "");
  EXPECT_EQ(Read(with("targetCategory='b' alternateTargetCategory='a'")).Steps(),
            "target-repeated");
  EXPECT_EQ(Read(with("targetCategory='c' alternateTargetCategory='d'")).Steps(),
            "unknown-category");
  EXPECT_EQ(Read(with(last, " classificationMethod='OneAgainstAll'")).Steps(),
            "method-contradicts-machines");
}

// Machines that name two categories each are pairs, whatever else the target lists.
TEST(Method, LeavesOutCategoriesThatNoMachineNames) {
  const auto pair = [](const char* first, const char* second) {
    return Identity(std::string("targetCategory='") + first + "' alternateTargetCategory='" +
                    second + '\'');
  };
  const std::string three = pair("a", "b") + pair("b", "c") + pair("a", "c");
  const struct {
    const char* title;
    std::vector<std::string> listed;
    std::string machines;
    std::string model;
    std::string steps;
    std::string decided;  // at -1 and 1
  } cases[] = {
      {"one pair of three", {"a", "z", "b"}, pair("a", "b"), "", "category-unused", "a b"},
      {"three pairs of four",
       {"z", "a", "b", "c"},
       three,
       "",
       "category-unused, method-inferred",
       "a c"},
      {"a method that is named",
       {"a", "z", "b"},
       pair("a", "b"),
       " classificationMethod='OneAgainstAll'",
       "machine-count",
       "a a"},
      {"by an older attribute",
       {"a", "z", "b"},
       Identity("targetCategory='a'"),
       " alternateBinaryTargetCategory='b'",
       "alternate-on-model, category-unused",
       "a b"},
      {"pairs that are incomplete",
       {"a", "b", "c"},
       pair("a", "b") + pair("b", "c"),
       "",
       "machine-count",
       "a a"},
  };
  for (const auto& [title, listed, machines, model, steps, decided] : cases) {
    Parts parts = Deciding('4', '2', "", machines);
    parts.Classify(listed);
    parts.model += model;
    const std::string text = parts.Text();
    EXPECT_EQ(Read(text).Steps(), steps) << title;
    EXPECT_EQ(Score(text, At("-1", "0")) + ' ' + Score(text, At("1", "0")), decided) << title;
  }
}

// Coefficients by field, and as the support vectors that they sum up.
TEST(CoefficientForm, ScoresTheSumOfItsCoefficients) {
  Parts parts;
  parts.model += " svmRepresentation='Coefficients'";
  EXPECT_EQ(Refusal(parts.Text(), svmscore::IntakeMode::kStrict), "260313 SupportVectors:7");
  parts.vectors = Replaced(parts.vectors, "id='a'", "id='machine 1'");
  parts.machines =
      "<SupportVectorMachine><Coefficients absoluteValue='0.9'>"
      "<Coefficient value='0.1'/><Coefficient/></Coefficients></SupportVectorMachine>";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "coefficient-form");
  EXPECT_EQ(reading.Show("SupportVectorMachine"),
            "<SupportVectorMachine><SupportVectors><SupportVector vectorId='machine 2'>"
            "</SupportVector></SupportVectors><Coefficients absoluteValue='0.9'>"
            "<Coefficient value='1'></Coefficient></Coefficients></SupportVectorMachine>");
  double sum = 0.1 * 0.7;
  sum += 0 * 3.0;
  EXPECT_EQ(Predict(parts.Text(), At("0.7", "3")), sum + 0.9);

  const std::string unreadable = Replaced(parts.Text(), "'0.1'", "'0.1 2'");
  EXPECT_EQ(Read(unreadable).Steps(), "bad-coefficient, coefficient-form");
  EXPECT_EQ(Predict(unreadable, At("0.7", "3")), 0.9);

  // A translator reports that there are no support vectors.
  parts.machines = Replaced(parts.machines, "<Coefficient/>", "");
  EXPECT_EQ(Refusal(parts.Text()), "260251 Coefficients:7");
  EXPECT_EQ(Score(parts.Text(), At("0.7", "3")), "260115 SupportVectorMachine:7");
  parts.kernel = "<RadialBasisKernelType/>";
  EXPECT_EQ(Refusal(parts.Text()), "260304 SupportVectorMachineModel:3");
  EXPECT_EQ(Score(parts.Text(), At("0.7", "3")), "260115 SupportVectorMachine:7");
  // A translator reports that there is no kernel.
  parts.kernel = "";
  parts.machines =
      Replaced(parts.machines, "</Coefficients>", "<Coefficient value='1'/></Coefficients>");
  EXPECT_EQ(Read(parts.Text()).Steps(), "coefficient-form");
}

TEST(Kernel, ParametersOfMinusOneAreNotTakenForAbsent) {
  Parts parts;
  parts.kernel = "<PolynomialKernelType gamma='-1.0' coef0='-1' degree='2'/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "kernel-minus-one 2");
  const double to_a = 0.25 * 2;
  EXPECT_NEAR(Predict(parts.Text(), At("2", "0")), 2 * (-to_a - 1) * (-to_a - 1) - 3 + 0.5, 1e-14);
  parts.kernel = "<RadialBasisKernelType gamma='2' coef0='-1' degree='-1'/>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "attribute-ignored 2");
}

}  // namespace
}  // namespace svmscore_test
