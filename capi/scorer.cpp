#include "capi/scorer.h"

#include <utility>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/document_lock.h"
#include "capi/thread_work.h"

namespace svmscore::capi {
namespace {

tools::ColumnChoice ChoiceOf(int columns) {
  switch (columns) {
    case SVMSCORE_COLUMNS_AUTO:
      return tools::ColumnChoice::kDocument;
    case SVMSCORE_COLUMNS_RAW:
      return tools::ColumnChoice::kComputed;
    case SVMSCORE_COLUMNS_ALL:
      return tools::ColumnChoice::kAll;
    default:
      RefuseArgument("options.columns is no enum svmscore_choice", "options.columns");
  }
}

Scorer& Of(svmscore_scorer* scorer) {
  Require(scorer, "scorer");
  return scorer->scorer;
}

}  // namespace

ScorerSettings ReadSettings(const svmscore_scorer_options* options) {
  const svmscore_scorer_options given = Read(options, "options");
  ScorerSettings settings;
  settings.choice = ChoiceOf(given.columns);
  settings.decisions = given.decisions != 0;
  settings.reasons = given.reasons != 0;
  settings.category_codes = given.category_codes != 0;
  settings.threads = ThreadsOf(given.threads);
  settings.missing = ReadMissingTexts(given.missing_texts, given.missing_text_count);
  return settings;
}

std::shared_ptr<const reasons::CaseExaminer> ScoringPlan::ExaminerOf(
    const std::vector<const MCZandor_850::ScoreDictVar*>& variables) const {
  if (!gives_reasons) return nullptr;
  const DocumentLock lock(model->document_mutex);
  return std::make_shared<const reasons::CaseExaminer>(model->loaded, variables);
}

Scorer::Scorer(SharedModel model, ScorerSettings settings)
    : settings_(std::move(settings)),
      plan_(std::move(model), settings_.choice, settings_.decisions, settings_.reasons),
      table_(std::make_shared<ResultTable>(plan_.results, plan_.model, settings_.category_codes)) {
  if (settings_.decisions && plan_.model->batch == nullptr) {
    RefuseArgument("the plug-in's model does not give decision values", "options.decisions");
  }
}

std::shared_ptr<ResultTable> Scorer::TakeTable() {
  auto next = std::make_shared<ResultTable>(plan_.results, plan_.model, settings_.category_codes);
  std::swap(next, table_);
  return next;
}

}  // namespace svmscore::capi

using namespace svmscore::capi;

int svmscore_scorer_new(const svmscore_model* model, const svmscore_scorer_options* options,
                        svmscore_scorer** scorer, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    Require(scorer, "scorer");
    *scorer = new svmscore_scorer{Scorer(model->state, ReadSettings(options))};
  });
}

void svmscore_scorer_free(svmscore_scorer* scorer) {
  delete scorer;
}

size_t svmscore_scorer_output_count(const svmscore_scorer* scorer) {
  return scorer == nullptr ? 0 : scorer->scorer.Outputs().Columns().size();
}

int svmscore_scorer_get_output(const svmscore_scorer* scorer, size_t index, svmscore_output* output,
                               svmscore_error** error) {
  return Guarded(error, [&] {
    Require(scorer, "scorer");
    const Scorer& with = scorer->scorer;
    const ResultTable& table = with.Outputs();
    if (index >= table.Columns().size()) RefuseArgument("there is no such output", "index");
    const ResultTable::Column& column = table.Columns()[index];
    svmscore_output told{};
    told.name = TextOf(with.Plan().results[index]->Name());  // tables are handed over
    told.type = column.type;
    told.of_categories = column.kind == svmscore::tools::CellKind::kCategory ? 1 : 0;
    if (told.of_categories != 0) {
      told.categories = table.Categories().data();
      told.category_count = table.Categories().size();
    }
    Write(told, output, "output");
  });
}

int svmscore_score(svmscore_scorer* scorer, const svmscore_column* columns, size_t column_count,
                   size_t row_count, svmscore_table* table, svmscore_error** error) {
  return Guarded(error, [&] {
    Scorer& with = Of(scorer);
    Require(table, "table");
    CheckSize(SizeOf(table), sizeof(svmscore_table), "table");
    const std::vector<ColumnView> views = ViewsOf(columns, column_count, row_count);
    Write(with.ScoreTable(views, row_count).View(), table, "table");
  });
}

int svmscore_score_case(svmscore_scorer* scorer, const svmscore_value* inputs, size_t input_count,
                        svmscore_value* outputs, size_t output_count, svmscore_error** error) {
  return Guarded(error, [&] {
    Scorer& with = Of(scorer);
    if (input_count > 0) Require(inputs, "inputs");
    if (output_count > 0) Require(outputs, "outputs");
    with.ScoreCase(inputs, input_count, outputs, output_count);
  });
}

int svmscore_score_numbers(svmscore_scorer* scorer, const double* inputs, size_t input_count,
                           double* outputs, size_t output_count, svmscore_error** error) {
  return Guarded(error, [&] {
    Scorer& with = Of(scorer);
    if (input_count > 0) Require(inputs, "inputs");
    if (output_count > 0) Require(outputs, "outputs");
    with.ScoreNumbers(inputs, input_count, outputs, output_count);
  });
}
