// What doctor concludes from cases whose outcome is known.
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/text/number_text.h"
#include "tests/doctor/patients.h"
#include "tools/base/bad_input.h"
#include "tools/doctor/labelled_cases.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

// The same numbers on every machine.
class Draws {
 public:
  explicit Draws(std::uint64_t seed) : state_(seed * 2 + 1) {
    for (int i = 0; i < 8; ++i) Uniform();
  }
  double Uniform() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return (static_cast<double>((state_ ^ (state_ >> 29U)) >> 11U) + 0.5) * 0x1p-53;
  }
  double Bell() { return std::sqrt(-2.0 * std::log(Uniform())) * std::cos(6.2831853 * Uniform()); }

 private:
  std::uint64_t state_;
};

// A model whose decision values are differences of its inputs; `extension` is that of each machine.
LoadedModel LinearModel(std::size_t categories, const std::string& extension,
                        const std::string& header = "") {
  static const Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const std::size_t inputs = categories == 0 ? 1 : categories;
  std::string fields, schema, references, vectors, values, machines;
  for (std::size_t i = 0; i < inputs; ++i) {
    fields += fmt::format("<DataField name='x{}' optype='continuous' dataType='double'/>", i);
    schema += fmt::format("<MiningField name='x{}'/>", i);
    references += fmt::format("<FieldRef field='x{}'/>", i);
    vectors += fmt::format(
        "<VectorInstance id='v{}'><REAL-SparseArray n='{}'><Indices>{}</Indices><REAL-Entries>1"
        "</REAL-Entries></REAL-SparseArray></VectorInstance>",
        i, inputs, i + 1);
    if (categories > 0) values += fmt::format("<Value value='c{}'/>", i);
    for (std::size_t j = i + 1; j < categories; ++j) {
      machines += fmt::format(
          "<SupportVectorMachine targetCategory='c{0}' alternateTargetCategory='c{1}'>{2}"
          "<SupportVectors><SupportVector vectorId='v{0}'/><SupportVector vectorId='v{1}'/>"
          "</SupportVectors><Coefficients absoluteValue='0'><Coefficient value='1'/>"
          "<Coefficient value='-1'/></Coefficients></SupportVectorMachine>",
          i, j, fmt::format(fmt::runtime(extension), i, j));
    }
  }
  if (categories == 0) {
    machines = fmt::format(
        "<SupportVectorMachine>{}<SupportVectors><SupportVector vectorId='v0'/></SupportVectors>"
        "<Coefficients absoluteValue='0'><Coefficient value='1'/></Coefficients>"
        "</SupportVectorMachine>",
        extension);
  }
  return LoadModel(
      plugin,
      PmmlDocument::FromText(
          fmt::format(
              "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header>{}</Header>"
              "<DataDictionary>{}<DataField name='y' {}>{}</DataField></DataDictionary>"
              "<SupportVectorMachineModel functionName='{}' {}maxWins='true'><MiningSchema>{}"
              "<MiningField name='y' usageType='target'/></MiningSchema><LinearKernelType/>"
              "<VectorDictionary><VectorFields>{}</VectorFields>{}</VectorDictionary>{}"
              "</SupportVectorMachineModel></PMML>",
              header, fields,
              categories > 0 ? "optype='categorical' dataType='string'"
                             : "optype='continuous' dataType='double'",
              values, categories > 0 ? "classification" : "regression",
              categories > 0 ? "classificationMethod='OneAgainstOne' " : "", schema, references,
              vectors, machines),
          "linear"));
}

std::string SigmoidOf(double a, double b) {
  return fmt::format(
      "<Extension extender='svmscore'><ResponseCategory response='c{{}}' nonResponse='c{{}}'/>"
      "<ProbabilityParameters A='{}' B='{}'/></Extension>",
      a, b);
}
std::string DeviationOf(double deviation) {
  return fmt::format(
      "<Extension extender='svmscore'><StandardDeviation>{}</StandardDeviation></Extension>",
      deviation);
}

// Cases of which the categories have the odds exp(x0) : exp(x1) : ..., or whose value is x0 and a
// deviation of which the part beyond t is exp(-t).
tools::TextTable DrawCases(std::size_t categories, std::size_t count, std::uint64_t seed) {
  Draws draws(seed);
  tools::TextTable table;
  table.name = "cases";
  const std::size_t inputs = categories == 0 ? 1 : categories;
  for (std::size_t i = 0; i < inputs; ++i) table.header.push_back(fmt::format("x{}", i));
  table.header.emplace_back("y");
  for (std::size_t c = 0; c < count; ++c) {
    std::vector<std::string> row;
    std::vector<double> odds;
    double all = 0.0;
    double x = 0.0;
    for (std::size_t i = 0; i < inputs; ++i) {
      x = 1.5 * draws.Bell();
      row.push_back(FormatNumber(x));
      odds.push_back(std::exp(x));
      all += odds.back();
    }
    if (categories == 0) {
      const double deviation = -std::log(draws.Uniform());
      row.push_back(FormatNumber(x + (draws.Uniform() < 0.5 ? deviation : -deviation)));
    } else {
      double left = draws.Uniform() * all;
      std::size_t k = 0;
      while (k + 1 < categories && left >= odds[k]) left -= odds[k++];
      row.push_back(fmt::format("c{}", k));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

std::string FindingsOf(const LoadedModel& loaded, const tools::TextTable& table) {
  const tools::CellRules rules;
  tools::FindingList findings(loaded.document);
  tools::CheckCalibration(loaded, {table, "y", rules}, findings);
  std::string text;
  for (const Finding& finding : findings.Found()) {
    text += std::string(finding.Name()) + ": " + finding.detail + "\n";
  }
  return text;
}

constexpr std::uint64_t kDraws = 200;

TEST(LabelledCases, OfWhatIsCalibratedAreNoFinding) {
  const LoadedModel two = LinearModel(2, SigmoidOf(-1, 0));
  const LoadedModel four = LinearModel(4, SigmoidOf(-1, 0));
  const LoadedModel line = LinearModel(0, DeviationOf(1));
  for (std::uint64_t seed = 0; seed < kDraws; ++seed) {
    for (const std::size_t count : {50U, 400U, 3000U}) {
      if (count == 3000 && seed % 10 != 0) continue;
      EXPECT_EQ(FindingsOf(two, DrawCases(2, count, seed)), "") << seed;
      EXPECT_EQ(FindingsOf(four, DrawCases(4, count, seed)), "") << seed;
      EXPECT_EQ(FindingsOf(line, DrawCases(0, count, seed)), "") << seed;
    }
  }
}

struct Wrong {
  std::size_t categories;
  std::string extension;
  std::string finding;  // its beginning
  std::string words;    // of its detail
};
const Wrong kWrong[] = {
    {2, SigmoidOf(-4, 0), "probabilities-off", "are too sure: "},
    {2, SigmoidOf(-0.2, 0), "probabilities-off", "are not sure enough: "},
    {2, SigmoidOf(-1, -1.5), "probabilities-off", "are too high for \"c0\": "},
    {2, SigmoidOf(-1, 1.5), "probabilities-off", "are too low for \"c0\": "},
    {2, SigmoidOf(1, 0.1), "probabilities-reversed", "\"c0\" falls with the decision value"},
    {4, SigmoidOf(1, 0), "probabilities-reversed", "\"c2\" falls with the decision value"},
    {4, SigmoidOf(-5, 0), "probabilities-off", "are too sure: "},
    {0, DeviationOf(0.5), "intervals-off", "are too narrow"},
    {0, DeviationOf(3), "intervals-off", "are too wide"},
};

TEST(LabelledCases, ShowWhatIsNotCalibrated) {
  for (const Wrong& wrong : kWrong) {
    const LoadedModel loaded = LinearModel(wrong.categories, wrong.extension);
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
      const std::size_t count = wrong.categories == 4 ? 1000 : 400;
      const std::string found = FindingsOf(loaded, DrawCases(wrong.categories, count, seed));
      EXPECT_THAT(found, testing::StartsWith(wrong.finding + ": ")) << wrong.extension;
      EXPECT_THAT(found, HasSubstr(wrong.words)) << wrong.extension;
    }
    // A few cases show nothing.
    EXPECT_EQ(FindingsOf(loaded, DrawCases(wrong.categories, 19, 1)), "");
  }
}

// Of two categories the probability is that of the response, wherever it is listed.
TEST(LabelledCases, AreComparedWithTheResponse) {
  const tools::TextTable cases = DrawCases(2, 2000, 5);
  const std::string second =
      "<Extension extender='svmscore'><ResponseCategory response='c1' nonResponse='c0'/>"
      "<ProbabilityParameters A='SIGN1' B='0'/></Extension>";
  const auto with_sign = [&](const std::string& sign) {
    return LinearModel(2, std::string(second).replace(second.find("SIGN"), 4, sign));
  };
  EXPECT_EQ(FindingsOf(with_sign(""), cases), "");
  EXPECT_THAT(FindingsOf(with_sign("-"), cases),
              HasSubstr("probability of \"c1\" rises with the decision value"));
}

TEST(LabelledCases, AreComparedWithTheConfidenceOfTheHeader) {
  const std::string note =
      "<Extension extender='svmscore' name='calibration' value='made; intervals of confidence 0.8 "
      "by split conformal prediction'/>";
  const tools::TextTable cases = DrawCases(0, 1000, 3);
  // Half of 2.9957 keeps 1 - exp(-1.6) of the cases.
  const std::string narrow = DeviationOf(1.6094379124341 / 2.99573227355399);
  EXPECT_THAT(FindingsOf(LinearModel(0, narrow), cases), HasSubstr("where it should be 0.95"));
  EXPECT_EQ(FindingsOf(LinearModel(0, narrow, note), cases), "");
  EXPECT_THAT(FindingsOf(LinearModel(0, DeviationOf(3), note), cases),
              HasSubstr("where it should be 0.8"));
}

TEST(LabelledCases, ThatHoldTheVectorsAreThoseOfTheTraining) {
  tools::TextTable cases = DrawCases(2, 400, 1);
  const LoadedModel loaded = LinearModel(2, SigmoidOf(-9, 0));
  EXPECT_NE(FindingsOf(loaded, cases), "");
  cases.rows.push_back({"1", "0", "c0"});
  cases.rows.push_back({"0", "1", "c1"});
  EXPECT_EQ(FindingsOf(loaded, cases), "cases-of-training: \n");
  // Where inputs are 0 or 1, every table holds them.
  for (auto& row : cases.rows) {
    for (std::size_t i = 0; i < 2; ++i) row[i] = row[i][0] == '-' ? "0" : "1";
  }
  EXPECT_THAT(FindingsOf(loaded, cases), testing::StartsWith("probabilities-off"));
}

TEST(LabelledCases, ThatCannotBeUsedAreRefused) {
  const LoadedModel loaded = LinearModel(2, SigmoidOf(-1, 0));
  tools::TextTable cases = DrawCases(2, 30, 1);
  for (auto& row : cases.rows) row.back() = "other";
  try {
    FindingsOf(loaded, cases);
    ADD_FAILURE();
  } catch (const tools::BadCases& error) {
    EXPECT_THAT(error.what(), HasSubstr("labels are \"other\", categories \"c0\", \"c1\""));
  }
}

TEST(LabelledCases, AreCountedByTheBinomialDistribution) {
  EXPECT_NEAR(tools::LowerTail(3, 20, 0.5) / 0.0012884140014648438, 1.0, 1e-12);
  EXPECT_NEAR(tools::LowerTail(30, 1000, 0.05) / 0.0012770679174798373, 1.0, 1e-10);
  EXPECT_NEAR(tools::LowerTail(0, 148, 0.05) / std::pow(0.95, 148.0), 1.0, 1e-10);
  EXPECT_NEAR(tools::LowerTail(949000, 1000000, 0.95) / 2.41139668308123e-06, 1.0, 1e-8);
}

TEST(LabelledCases, AreAColumnOfTheInput) {
  const std::string tumour = ReadFile(Example("tumour/model.pmml"));
  const std::string cases = Example("tumour/cases.csv");
  const Edits far = {"*ProbabilityParameters A='[^']*'", "ProbabilityParameters A='-20'"};
  const Arguments given = {"--input", cases, "--actual", "diagnosis"};
  EXPECT_EQ(Diagnose(tumour, given).findings, "");
  const Diagnosis diagnosis = Diagnose(Edited(tumour, far), given);
  EXPECT_EQ(diagnosis.findings, "probabilities-off at SupportVectorMachine");
  EXPECT_THAT(diagnosis.json["findings"][0]["what"].get<std::string>(),
              HasSubstr("on 63 cases of \"malignant\" and 106 of \"benign\""));
  // With expected scores beside it, both are told.
  Arguments both = given;
  both.insert(both.end(), {"--expected", Example("tumour/expected.csv")});
  EXPECT_THAT(Diagnose(Edited(tumour, far), both).findings,
              testing::AllOf(HasSubstr("mismatch"), HasSubstr("probabilities-off")));

  const TemporaryFolder folder;
  const std::string model = Example("tumour/model.pmml");
  for (const auto& [arguments, status] : {
           std::pair<Arguments, int>{{"--input", cases}, 2},
           {{"--actual", "diagnosis"}, 2},
           {{"--input", cases, "--actual", "none"}, 5},
           {{"--input", folder.Write("c.csv", "diagnosis\nbenign\n"), "--actual", "diagnosis"}, 5},
       }) {
    Arguments all = {"doctor", model};
    all.insert(all.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(RunProgram(all).status, status) << testing::PrintToString(arguments);
  }
}

}  // namespace

std::vector<std::string> KindsOfLabelledCases() {
  std::vector<std::string> kinds = {"cases-of-training"};
  for (const Wrong& wrong : kWrong) kinds.push_back(wrong.finding);
  return kinds;
}

}  // namespace svmscore::app
