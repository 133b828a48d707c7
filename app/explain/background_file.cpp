#include "app/explain/background_file.h"

#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/base/messages.h"
#include "app/files/input_file.h"
#include "app/pipeline/case_cells.h"
#include "app/pipeline/failures.h"
#include "app/table/broken_row.h"
#include "app/table/row_blocks.h"
#include "host/model/score_model.h"
#include "host/reasons/case_examiner.h"
#include "tools/base/case_columns.h"

namespace svmscore::app {

tools::Background ReadBackground(const std::string& path, const LoadedModel& loaded,
                                 BatchModel& model, const BackgroundChoice& choice) {
  InputFile file(path);
  RowBlocks input(file, choice.form);
  RowBlock block;
  const tools::CaseColumns columns = tools::MatchColumns(
      ReadColumnNames(input, choice.form, file.Name(), block), loaded, {}, file.Name());
  const bool replaces =
      loaded.model->GetMissingValuePolicy() == MCZandor_850::ScoreModel::kReplaceMissing;
  CaseCells values(columns, choice.cells, replaces);
  const reasons::CaseExaminer examiner(loaded, columns.variables);
  model.FixPositions(values.Record());

  tools::BackgroundReader reader(model, choice.most, choice.seed);
  Failures failures;
  RowLikeCells row_like_cells;
  std::vector<std::string_view> cells;
  std::uint64_t rows = 0;
  std::uint64_t left_out = 0;
  try {
    while (input.Next(block)) {
      CsvRows table(block.text.data(), block.text.size(), block.first_line, choice.form);
      Failures of_block;
      std::uint64_t row = 0;
      for (; table.Next(cells, columns.width); ++row) {
        const tools::BackgroundCase added = reader.Add(values.Read(cells.data()));
        if (added.status == 0) continue;
        ++left_out;
        const reasons::Ended ended{
            added.status, added.status, added.status, added.decisions, 1, {}};
        of_block.Add(row, table.RowLine(), values.ReasonsOf(examiner, cells.data(), ended));
      }
      failures.Add(of_block, rows);
      rows += row;
      row_like_cells.Add(table.CellsLikeRows());
    }
  } catch (const CsvError& error) {
    throw BrokenRow(file.Name(), error);
  }
  if (left_out == rows) {
    throw Failure(
        kInputError,
        fmt::format("{}: {}; the background needs cases that the model can score", file.Name(),
                    rows == 0 ? "there is no row below the header" : "no row can be scored"),
        TextOf(failures, row_like_cells, file.Name()));
  }
  if (left_out > 0) {
    Tell(fmt::format("{}: {} of {} rows cannot be scored and are left out of the background:",
                     file.Name(), left_out, rows));
  }
  TellAsItIs(TextOf(failures, row_like_cells, file.Name()));
  return reader.Take();
}

}  // namespace svmscore::app
