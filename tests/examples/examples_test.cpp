// Scores every example with the program and compares with what scikit-learn says about it.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A column of text cells by its name. The examples quote nothing.
using Table = std::map<std::string, std::vector<std::string>>;

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream stream(line + ',');
  for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
  return cells;
}

Table ReadTable(std::istream& stream) {
  std::string line;
  std::getline(stream, line);
  const std::vector<std::string> header = Split(line);
  Table table;
  while (std::getline(stream, line)) {
    const std::vector<std::string> cells = Split(line);
    if (cells.size() != header.size()) throw std::runtime_error("ragged row: " + line);
    for (std::size_t i = 0; i < cells.size(); ++i) table[header[i]].push_back(cells[i]);
  }
  return table;
}

double Number(const std::string& text) {
  double number = NAN;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  EXPECT_TRUE(error == std::errc() && end == text.data() + text.size()) << "'" << text << "'";
  return number;
}

// What a command writes to standard output; throws unless it succeeds.
std::string OutputOf(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string output;
  std::array<char, 4096> buffer;
  for (std::size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), n);
  }
  if (pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
  return output;
}

struct Example {
  const char* name;
  std::size_t cases;
  // The largest difference allowed in a predicted number or a probability, absolute or relative.
  double tolerance;

  friend void PrintTo(const Example& example, std::ostream* os) { *os << example.name; }
};

class ExampleTest : public testing::TestWithParam<Example> {
 protected:
  void SetUp() override {
    const std::string folder = std::string(EXAMPLES_FOLDER) + "/" + GetParam().name;
    std::ifstream file(folder + "/expected.csv");
    expected_ = ReadTable(file);
    std::istringstream output(OutputOf("'" SVMSCORE_PROGRAM "' score '" + folder +
                                       "/model.pmml' '" + folder + "/cases.csv' 2>/dev/null"));
    scored_ = ReadTable(output);
    ASSERT_EQ(expected_["prediction"].size(), GetParam().cases);
    ASSERT_EQ(scored_["prediction"].size(), GetParam().cases);
  }

  void ExpectSameNumbers(const std::string& column) {
    ASSERT_EQ(scored_[column].size(), GetParam().cases) << column;
    double largest = 0.0;
    for (std::size_t i = 0; i < GetParam().cases; ++i) {
      const double expected = Number(expected_[column][i]);
      const double difference = std::abs(Number(scored_[column][i]) - expected);
      largest = std::max(largest, difference / std::max(1.0, std::abs(expected)));
    }
    EXPECT_LE(largest, GetParam().tolerance) << column;
    std::printf("%s: largest difference %.2g\n", column.c_str(), largest);
  }

  Table expected_;
  Table scored_;
};

TEST_P(ExampleTest, EqualsScikitLearn) {
  EXPECT_EQ(scored_["status"], std::vector<std::string>(GetParam().cases, "0"));
  if (std::string(GetParam().name) == "diabetes") {
    ExpectSameNumbers("prediction");
  } else {
    EXPECT_EQ(scored_["prediction"], expected_["prediction"]);
  }
  for (const auto& [column, cells] : expected_) {
    if (column.starts_with("probability(")) ExpectSameNumbers(column);
  }
}

TEST_P(ExampleTest, ProbabilitiesAddUpToOne) {
  std::vector<double> sums(GetParam().cases, 0.0);
  std::size_t columns = 0;
  for (const auto& [column, cells] : scored_) {
    if (!column.starts_with("probability(")) continue;
    ++columns;
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += Number(cells[i]);
  }
  if (std::string(GetParam().name) == "diabetes") {
    EXPECT_EQ(columns, 0u);
    return;
  }
  EXPECT_GE(columns, 2u);
  for (const double sum : sums) EXPECT_NEAR(sum, 1.0, 1e-12);
}

// Seen: 0 for diabetes and at most 9e-16 for probabilities; exp may differ between C libraries.
INSTANTIATE_TEST_SUITE_P(All, ExampleTest,
                         testing::Values(Example{"iris", 50, 0.0}, Example{"diabetes", 100, 1e-12},
                                         Example{"digits", 200, 1e-12},
                                         Example{"tumour", 169, 1e-12}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
