// What the cells of a column mean for a field of the model.
#ifndef CAPI_INPUT_CELLS_H_
#define CAPI_INPUT_CELLS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "capi/column_view.h"
#include "host/model/score_case_record.h"

namespace svmscore::capi {

// Texts that mean a missing value.
using MissingTexts = std::vector<std::string>;
// Those of the caller: the empty text where `texts` is null.
MissingTexts ReadMissingTexts(const svmscore_text* texts, std::size_t count);

// A place of a record, filled value by value. A value becomes what its shortest text would become,
// were it a cell of a file. Read only: any number of threads may fill records of their own. Lives:
// the column, the variable and the texts, longer than it.
class InputCell {
 public:
  // Throws a Refusal that names the column where its type does not fit the variable's.
  InputCell(const ColumnView& column, const MCZandor_850::ScoreDictVar& var,
            const MissingTexts& missing);
  // Without a column: for values that come one by one.
  InputCell(const MCZandor_850::ScoreDictVar& var, const MissingTexts& missing);

  // Fails: std::bad_alloc.
  void Set(MCZandor_850::InputCaseRecord& record, std::size_t position, std::size_t row) const;
  void SetNumber(MCZandor_850::InputCaseRecord& record, std::size_t position, double number) const;
  void SetWhole(MCZandor_850::InputCaseRecord& record, std::size_t position,
                std::int64_t number) const;
  void SetText(MCZandor_850::InputCaseRecord& record, std::size_t position,
               std::string_view text) const;
  // For texts alone: of any type that is read.
  explicit InputCell(const ColumnView& column);

  bool MeansMissing(std::string_view text) const;
  // Whether the value of a row is missing, or a text that means so.
  bool IsMissing(std::size_t row) const;
  // The text that the value of a row would have in a file; empty where it is missing.
  std::string TextAt(std::size_t row) const;

  // The numbers of the column, where each is the value of the variable if only it is finite.
  const ColumnView* PlainNumbers() const;

 private:
  void SetValue(MCZandor_850::InputCaseRecord& record, std::size_t position,
                const ColumnView& column, std::size_t row) const;
  void SetBool(MCZandor_850::InputCaseRecord& record, std::size_t position, bool truth) const;
  void SetMoment(MCZandor_850::InputCaseRecord& record, std::size_t position,
                 const ColumnView& column, std::size_t row) const;

  const ColumnView* column_;
  DataType type_;
  const MissingTexts& missing_;
};

}  // namespace svmscore::capi

#endif  // CAPI_INPUT_CELLS_H_
