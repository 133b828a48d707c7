// Tables of cells as the C interface takes and gives them.
#ifndef TESTS_CAPI_COLUMNS_H_
#define TESTS_CAPI_COLUMNS_H_

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capi/svmscore.h"

namespace svmscore_test {

// Rows of cells; the first names the columns.
using Rows = std::vector<std::vector<std::string>>;
// Quoted cells may hold quotes; those that are written must not.
Rows RowsOf(const std::string& csv);
std::string CsvOf(const Rows& rows);
// Where the tables differ first; empty where they do not.
std::string Difference(const Rows& got, const Rows& expected);

// How cells are handed over.
enum class Form {
  kTexts,       // every column
  kLongTexts,   // by 64-bit offsets
  kNumbers,     // numbers where all of a column that are there are such, else texts
  kMixed,       // numbers, of whichever width holds them, with a stride and an offset
  kDictionary,  // of texts
};

// The columns of a table, with the memory that they look at.
class Columns {
 public:
  // Empty cells are missing.
  Columns(const Rows& rows, Form form);
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  std::vector<svmscore_column> views;
  std::size_t rows = 0;

 private:
  void AddTexts(svmscore_column& column, const std::vector<std::string>& cells, bool wide);
  void AddNumbers(svmscore_column& column, const std::vector<std::string>& cells, bool odd);
  template <typename T>
  T* Keep(std::size_t count);

  std::deque<std::vector<std::uint64_t>> kept_;  // aligned for everything
  std::deque<std::string> names_;
  std::deque<svmscore_column> dictionaries_;
};

// A cell as the program writes it.
std::string CellOf(const svmscore_column& column, std::size_t row);
// The names and cells of a scored table.
Rows RowsOf(const svmscore_table& table);

// Handles that free themselves.
struct Freed {
  void operator()(svmscore_model* model) const { svmscore_model_free(model); }
  void operator()(svmscore_scorer* scorer) const { svmscore_scorer_free(scorer); }
  void operator()(svmscore_error* error) const { svmscore_error_free(error); }
};
using Model = std::unique_ptr<svmscore_model, Freed>;
using Scorer = std::unique_ptr<svmscore_scorer, Freed>;

// Fail the test, and return null, where the library fails.
Model LoadFile(const std::string& path, const svmscore_load_options* options = nullptr);
Scorer NewScorer(const svmscore_model* model, const svmscore_scorer_options* options = nullptr);
// What the library says failed; frees it.
struct Failure {
  int kind = SVMSCORE_OK;
  long code = 0;
  std::string sentence, place, remedy, message;
};
Failure FailureOf(svmscore_error* error);

std::string StringOf(const svmscore_text& text);
// Scores, and compares nothing. Fails the test where the library fails.
Rows Score(svmscore_scorer* scorer, const Columns& columns);

// A table of ordinary values for the inputs of a model, and of odd ones among them.
Rows CasesFor(const svmscore_model* model, std::size_t count, bool with_odd = true);

// For tests of the documents of tests/process/case_set.h.
std::string NameOfDocument(const testing::TestParamInfo<std::string>& document);

}  // namespace svmscore_test

#endif  // TESTS_CAPI_COLUMNS_H_
