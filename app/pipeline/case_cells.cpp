#include "app/pipeline/case_cells.h"

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/table/broken_row.h"
#include "app/table/csv_row.h"

namespace svmscore::app {

using MCZandor_850::InputCaseRecord;

CaseCells::CaseCells(const tools::CaseColumns& columns, const tools::CellRules& rules,
                     bool replace_missing)
    : columns_(columns),
      rules_(rules),
      replace_missing_(replace_missing),
      record_(columns.variables, true, replace_missing) {
  record_.Clear();
}

const InputCaseRecord& CaseCells::Read(const std::string_view* cells) {
  const std::vector<std::size_t>& positions = columns_.cells;
  for (std::size_t i = 0; i < positions.size(); ++i) Set(record_, i, cells, positions[i]);
  return record_;
}

void CaseCells::Set(InputCaseRecord& record, std::size_t position, const std::string_view* cells,
                    std::size_t cell) {
  if (cell == tools::kNoCell) {
    record.SetMissing(position);
  } else {
    rules_.Set(record, position, cells[cell], number_text_);
  }
}

std::vector<reasons::Reason> CaseCells::ReasonsOf(const reasons::CaseExaminer& examiner,
                                                  const std::string_view* cells,
                                                  const reasons::Ended& ended) {
  const std::vector<std::size_t>& positions = columns_.cells;
  if (failed_ == nullptr) {
    failed_ = std::make_unique<InputCaseRecord>(columns_.variables, true, replace_missing_);
    given_.resize(positions.size());
    read_.resize(positions.size());
  }
  for (std::size_t i = 0; i < positions.size(); ++i) {
    Set(*failed_, i, cells, positions[i]);
    const std::string_view cell = cells[positions[i]];
    const MCZandor_850::ScoreDictVar& var = *columns_.variables[i];
    given_[i] = {cell, rules_.IsMissing(cell, var)};
    if (rules_.HasDecimalComma()) given_[i].read = rules_.TextOf(cell, var, read_[i]);
  }
  return examiner.Examine(*failed_, given_.data(), ended);
}

std::vector<std::string_view> ReadColumnNames(RowBlocks& input, const RowForm& form,
                                              const std::string& input_name, RowBlock& header) {
  std::vector<std::string_view> names;
  try {
    if (!input.ReadHeader(header)) {
      throw Failure(kInputError, fmt::format("{}: the input is empty; it needs at least a header "
                                             "line with the names of the columns",
                                             input_name));
    }
    CsvRows(header.text.data(), header.text.size(), header.first_line, form).Next(names);
  } catch (const CsvError& error) {
    throw BrokenRow(input_name, error);
  }
  return names;
}

}  // namespace svmscore::app
