#include "tests/capi/columns.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <map>

#include <gtest/gtest.h>

#include "host/text/number_text.h"

namespace svmscore_test {

Rows RowsOf(const std::string& csv) {
  Rows rows;
  bool quoted = false;
  bool starts = true;
  for (std::size_t i = 0; i < csv.size(); ++i) {
    const char c = csv[i];
    if (starts) rows.emplace_back().emplace_back();
    starts = false;
    if (c == '"' && quoted && csv.compare(i + 1, 1, "\"") == 0) {
      rows.back().back() += csv[++i];
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == ',' && !quoted) {
      rows.back().emplace_back();
    } else if (c == '\n' && !quoted) {
      starts = true;
    } else {
      rows.back().back() += c;
    }
  }
  return rows;
}

std::string CsvOf(const Rows& rows) {
  std::string csv;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) csv += (i == 0 ? "\"" : ",\"") + row[i] + '"';
    csv += '\n';
  }
  return csv;
}

std::string Difference(const Rows& got, const Rows& expected) {
  for (std::size_t r = 0; r < std::min(got.size(), expected.size()); ++r) {
    if (got[r] != expected[r]) {
      return "row " + std::to_string(r) + ": " + CsvOf({got[r]}) + "instead of " +
             CsvOf({expected[r]});
    }
  }
  return got.size() == expected.size() ? "" : "another number of rows";
}

template <typename T>
T* Columns::Keep(std::size_t count) {
  auto& words = kept_.emplace_back((count * sizeof(T)) / 8 + 2);
  return reinterpret_cast<T*>(words.data());
}

void Columns::AddTexts(svmscore_column& column, const std::vector<std::string>& cells, bool wide) {
  std::string all;
  auto* offsets = Keep<std::int64_t>(cells.size() + 1);
  auto* narrow = Keep<std::int32_t>(cells.size() + 1);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    all += cells[i];
    offsets[i + 1] = static_cast<std::int64_t>(all.size());
    narrow[i + 1] = static_cast<std::int32_t>(all.size());
  }
  char* text = Keep<char>(all.size());
  std::memcpy(text, all.data(), all.size());
  column.type = wide ? SVMSCORE_UTF8_64 : SVMSCORE_UTF8;
  column.data = text;
  column.data_size = all.size();
  column.offsets = wide ? static_cast<void*>(offsets) : narrow;
  column.offsets_size = (cells.size() + 1) * (wide ? 8 : 4);
}

void Columns::AddNumbers(svmscore_column& column, const std::vector<std::string>& cells, bool odd) {
  std::vector<double> numbers;
  bool whole = true;
  for (const std::string& cell : cells) {
    numbers.push_back(cell.empty() ? 0.0 : svmscore::ParseNumber(cell).value());
    whole = whole && std::fabs(numbers.back()) < 1e6 &&
            numbers.back() == std::trunc(numbers.back()) && !std::signbit(numbers.back());
  }
  constexpr std::size_t kStride = 3;  // values
  constexpr std::size_t kBefore = 5;
  column.stride = !odd ? 0 : kStride * (whole ? 4 : 8);
  column.offset = odd ? kBefore : 0;
  const std::size_t count = odd ? (numbers.size() + kBefore) * kStride : numbers.size();
  const auto place = [odd](std::size_t i) { return odd ? (i + kBefore) * kStride : i; };
  if (odd && whole) {
    column.type = SVMSCORE_I32;
    auto* data = Keep<std::int32_t>(count);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      data[place(i)] = static_cast<std::int32_t>(numbers[i]);
    }
    column.data = data;
    column.data_size = count * 4;
  } else {
    column.type = SVMSCORE_F64;
    auto* data = Keep<double>(count);
    for (std::size_t i = 0; i < cells.size(); ++i) data[place(i)] = numbers[i];
    column.data = data;
    column.data_size = count * 8;
  }
}

Columns::Columns(const Rows& table, Form form) : rows(table.size() - 1) {
  // In another order than the model's.
  for (std::size_t c = table[0].size(); c-- > 0;) {
    std::vector<std::string> cells;
    for (std::size_t r = 1; r < table.size(); ++r) cells.push_back(table[r][c]);
    svmscore_column column = SVMSCORE_INIT(svmscore_column);
    const std::string& name = names_.emplace_back(table[0][c]);
    column.name = name.data();
    column.name_length = name.size();
    column.length = rows;
    const bool numbers = std::all_of(cells.begin(), cells.end(), [](const std::string& cell) {
      return cell.empty() || svmscore::ParseNumber(cell);
    });
    if (form == Form::kDictionary) {
      std::map<std::string, std::int32_t> codes;
      std::vector<std::string> texts;
      auto* data = Keep<std::int32_t>(rows);
      for (std::size_t r = 0; r < rows; ++r) {
        const auto [code, is_new] = codes.emplace(cells[r], static_cast<int>(texts.size()));
        if (is_new) texts.push_back(cells[r]);
        data[r] = code->second;
      }
      svmscore_column& dictionary = dictionaries_.emplace_back();
      dictionary = SVMSCORE_INIT(svmscore_column);
      dictionary.length = texts.size();
      AddTexts(dictionary, texts, false);
      column.type = SVMSCORE_DICTIONARY;
      column.code_type = SVMSCORE_I32;
      column.data = data;
      column.data_size = rows * 4;
      column.dictionary = &dictionary;
    } else if (numbers && (form == Form::kNumbers || form == Form::kMixed)) {
      AddNumbers(column, cells, form == Form::kMixed);
    } else {
      AddTexts(column, cells, form == Form::kLongTexts);
    }
    if (std::any_of(cells.begin(), cells.end(), [](const auto& cell) { return cell.empty(); })) {
      auto* bits = Keep<std::uint8_t>((rows + column.offset) / 8 + 1);
      for (std::size_t r = 0; r < rows; ++r) {
        const std::size_t bit = r + column.offset;
        if (!cells[r].empty())
          bits[bit / 8] = static_cast<std::uint8_t>(bits[bit / 8] | 1U << bit % 8);
      }
      column.validity = bits;
      column.validity_size = (rows + column.offset + 7) / 8;
    }
    views.push_back(column);
  }
}

std::string CellOf(const svmscore_column& column, std::size_t row) {
  if (column.validity != nullptr && (column.validity[row / 8] >> (row % 8) & 1) == 0) return "";
  switch (column.type) {
    case SVMSCORE_F64:
      return svmscore::FormatNumber(static_cast<const double*>(column.data)[row]);
    case SVMSCORE_I64:
      return std::to_string(static_cast<const std::int64_t*>(column.data)[row]);
    case SVMSCORE_DICTIONARY:
      return CellOf(*column.dictionary,
                    static_cast<std::size_t>(static_cast<const std::int32_t*>(column.data)[row]));
    default: {
      const auto* offsets = static_cast<const std::int64_t*>(column.offsets);
      return {static_cast<const char*>(column.data) + offsets[row],
              static_cast<std::size_t>(offsets[row + 1] - offsets[row])};
    }
  }
}

Rows RowsOf(const svmscore_table& table) {
  Rows rows(table.row_count + 1);
  for (std::size_t c = 0; c < table.column_count; ++c) {
    const svmscore_column& column = table.columns[c];
    rows[0].emplace_back(column.name, column.name_length);
    for (std::size_t r = 0; r < table.row_count; ++r) rows[r + 1].push_back(CellOf(column, r));
  }
  return rows;
}

std::string StringOf(const svmscore_text& text) {
  return {text.data, text.length};
}

Failure FailureOf(svmscore_error* error) {
  Failure failure{svmscore_error_kind(error),
                  svmscore_error_code(error),
                  StringOf(svmscore_error_sentence(error)),
                  StringOf(svmscore_error_place(error)),
                  StringOf(svmscore_error_remedy(error)),
                  StringOf(svmscore_error_message(error))};
  svmscore_error_free(error);
  return failure;
}

Model LoadFile(const std::string& path, const svmscore_load_options* options) {
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  const int status = svmscore_load_file(path.data(), path.size(), options, &model, &error);
  EXPECT_EQ(status, SVMSCORE_OK) << path << ": " << FailureOf(error).message;
  return Model(model);
}

Scorer NewScorer(const svmscore_model* model, const svmscore_scorer_options* options) {
  svmscore_scorer* scorer = nullptr;
  svmscore_error* error = nullptr;
  const int status = svmscore_scorer_new(model, options, &scorer, &error);
  EXPECT_EQ(status, SVMSCORE_OK) << FailureOf(error).message;
  return Scorer(scorer);
}

Rows Score(svmscore_scorer* scorer, const Columns& columns) {
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_error* error = nullptr;
  const int status = svmscore_score(scorer, columns.views.data(), columns.views.size(),
                                    columns.rows, &table, &error);
  EXPECT_EQ(status, SVMSCORE_OK) << FailureOf(error).message;
  return status == SVMSCORE_OK ? RowsOf(table) : Rows();
}

Rows CasesFor(const svmscore_model* model, std::size_t count, bool with_odd) {
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  EXPECT_EQ(svmscore_model_get_facts(model, &facts, nullptr), SVMSCORE_OK);
  Rows rows(count + 1);
  for (std::size_t i = 0; i < facts.input_count; ++i) {
    svmscore_input input = SVMSCORE_INIT(svmscore_input);
    EXPECT_EQ(svmscore_model_get_input(model, i, &input, nullptr), SVMSCORE_OK);
    rows[0].push_back(StringOf(input.name));
    for (std::size_t r = 0; r < count; ++r) {
      const std::size_t odd =
          with_odd ? (r * 37 + i * 11) % (facts.input_count > 20 ? 1009 : 101) : 100;
      std::string cell;
      if (odd == 0) {
        cell = "";
      } else if (odd == 1 && i % 3 == 1) {
        cell = "no such thing";
      } else if (odd < 4) {
        cell = std::vector<std::string>{"INF", "-0", "1e+300", "NaN"}[(r + i) % 4];
      } else if (input.category_count > 0) {
        cell = StringOf(input.categories[(r + i) % input.category_count]);
      } else if (StringOf(input.type) == "string") {
        cell = "Text number " + std::to_string(r % 7);
      } else if (StringOf(input.type) == "integer") {
        cell = std::to_string((r * 5 + i * 3) % 17);
      } else {
        cell = svmscore::FormatNumber(0.25 * static_cast<double>((5 * r + 3 * i) % 23) - 0.5);
      }
      rows[r + 1].push_back(std::move(cell));
    }
  }
  return rows;
}

std::string NameOfDocument(const testing::TestParamInfo<std::string>& document) {
  std::string name = document.param.substr(sizeof(PROJECT_FOLDER));
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

}  // namespace svmscore_test
