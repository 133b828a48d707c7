// The scores of a table, as columns.
#ifndef CAPI_RESULT_TABLE_H_
#define CAPI_RESULT_TABLE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "capi/model_state.h"
#include "capi/svmscore.h"
#include "tools/score/cell_sink.h"
#include "tools/score/result_columns.h"

namespace svmscore::capi {

// Rows are written in blocks of kBlockRows, each by one thread, several blocks at once; one thread
// starts and finishes.
class ResultTable {
 public:
  // What a thread writes cells through.
  class Sink;
  // Of rows a word of a bitmap belongs to one block.
  static constexpr std::size_t kBlockRows = 512;

  // Of the column at a position: what its values are.
  struct Column {
    std::string name;
    tools::CellKind kind = tools::CellKind::kNumber;
    int type = SVMSCORE_F64;  // as the interface tells it
    std::vector<double> numbers;
    std::vector<std::int64_t> wholes;
    std::vector<std::int32_t> codes;  // of categories; -1 where there is none
    std::vector<std::int64_t> offsets;
    std::string text;
    std::vector<std::uint64_t> validity;  // bits
    std::size_t missing = 0;              // values

   private:
    friend class ResultTable;
    friend class Sink;
    std::vector<std::string> pieces;  // of the text, one a block, while it is written
  };

  // `model` must outlive the table, for its categories.
  // `results` hold the status, the last but for reasons.
  ResultTable(const tools::ResultColumns& results, SharedModel model, bool category_codes);

  ResultTable(const ResultTable&) = delete;
  ResultTable& operator=(const ResultTable&) = delete;

  // Makes room for `rows` rows, all missing. Fails: std::bad_alloc.
  void Start(std::size_t rows);
  // After all rows were written. Fails: std::bad_alloc.
  void Finish();

  std::size_t RowCount() const { return rows_; }
  const std::vector<Column>& Columns() const { return columns_; }
  const TextList& Categories() const { return model_->categories; }
  // The categories as a column.
  const svmscore_column& Dictionary() const { return dictionary_; }
  // As the interface tells it. Lives: until the table is started again.
  svmscore_table View() const;

 private:
  void FinishText(Column& column) const;
  void FinishCategories(Column& column) const;
  svmscore_column ViewOf(const Column& column) const;

  SharedModel model_;
  std::size_t rows_ = 0;
  std::size_t status_ = 0;  // the position of that column
  std::vector<Column> columns_;
  std::vector<svmscore_column> views_;
  std::string category_text_;
  std::vector<std::int64_t> category_offsets_;
  svmscore_column dictionary_{};
  std::uint64_t scored_ = 0;
  std::uint64_t missing_ = 0;
  std::uint64_t invalid_ = 0;
};

// Used by one thread, for the rows of one block after the other.
class ResultTable::Sink final : public tools::CellSink {
 public:
  explicit Sink(ResultTable& table) : table_(table) {}
  // What is written next is the cell of this row and column.
  Sink& At(std::size_t row, std::size_t column) {
    row_ = row;
    column_ = &table_.columns_[column];
    return *this;
  }

  void Empty() override {}
  void Text(std::string_view text) override;
  void Category(int category, std::string_view text) override;
  void Number(double number) override;
  void Whole(long number) override;

 private:
  void MarkPresent() { column_->validity[row_ / 64] |= std::uint64_t{1} << (row_ % 64); }

  ResultTable& table_;
  Column* column_ = nullptr;
  std::size_t row_ = 0;
};

}  // namespace svmscore::capi

#endif  // CAPI_RESULT_TABLE_H_
