// predict MODEL CASES: scores each row of a CSV file without quotes by the C interface, and prints
// the prediction as `svmscore score` writes it.
#include <svmscore.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Row = std::vector<std::string>;

Row Cells(const std::string& line) {
  Row row;
  std::istringstream cells(line);
  for (std::string cell; std::getline(cells, cell, ',');) row.push_back(cell);
  return row;
}

void Check(int kind, svmscore_error* error) {
  if (kind == SVMSCORE_OK) return;
  std::cerr << svmscore_error_message(error).data << '\n';
  svmscore_error_free(error);
  std::exit(1);
}

std::string Text(const svmscore_value& value) {
  if (value.kind == SVMSCORE_TEXT) return {value.text, value.length};
  if (value.kind != SVMSCORE_NUMBER) return {};
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value.number).ptr};
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  svmscore_error* error = nullptr;
  svmscore_model* model = nullptr;
  Check(svmscore_load_file(arguments[1], SVMSCORE_NUL_ENDED, nullptr, &model, &error), error);
  const std::unique_ptr<svmscore_model, decltype(&svmscore_model_free)> owned(model,
                                                                              svmscore_model_free);
  auto facts = SVMSCORE_INIT(svmscore_model_facts);
  Check(svmscore_model_get_facts(model, &facts, &error), error);
  svmscore_scorer* made = nullptr;
  Check(svmscore_scorer_new(model, nullptr, &made, &error), error);
  const std::unique_ptr<svmscore_scorer, decltype(&svmscore_scorer_free)> scorer(
      made, svmscore_scorer_free);

  std::ifstream file(arguments[2]);
  std::string line;
  std::getline(file, line);
  const Row header = Cells(line);
  std::vector<std::size_t> positions;
  for (std::size_t i = 0; i < facts.input_count; ++i) {
    auto input = SVMSCORE_INIT(svmscore_input);
    Check(svmscore_model_get_input(model, i, &input, &error), error);
    const auto name = std::find(header.begin(), header.end(), input.name.data);
    positions.push_back(static_cast<std::size_t>(name - header.begin()));
  }
  while (std::getline(file, line)) {
    const Row row = Cells(line);
    std::vector<svmscore_value> values;
    for (const std::size_t position : positions) {
      svmscore_value value = {SVMSCORE_MISSING, -1, 0, 0, nullptr, 0};
      if (position < row.size() && !row[position].empty()) {
        value = {SVMSCORE_TEXT, -1, 0, 0, row[position].data(), row[position].size()};
      }
      values.push_back(value);
    }
    svmscore_value prediction;
    Check(svmscore_score_case(scorer.get(), values.data(), values.size(), &prediction, 1, &error),
          error);
    std::cout << Text(prediction) << '\n';
  }
}
