#include "capi/explainer.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/document_lock.h"
#include "capi/thread_work.h"
#include "host/model/score_model.h"
#include "host/model/score_status.h"
#include "tools/base/case_columns.h"

namespace svmscore::capi {

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

// Which column is which variable's.
struct TableExplainer::TableInput {
  TableInput(const ModelState& model, const std::vector<ColumnView>& views,
             const MissingTexts& missing) {
    std::vector<std::string_view> names;
    names.reserve(views.size());
    for (const ColumnView& view : views) names.push_back(view.name);
    columns = tools::MatchColumns(names, model.loaded, {}, "");
    for (std::size_t i = 0; i < columns.variables.size(); ++i) {
      const ColumnView& view = views[columns.cells[i]];
      cells.emplace_back(view, *columns.variables[i], missing);
      view.Check();
    }
  }

  MCZandor_850::InputCaseRecord NewRecord(const ModelState& model) const {
    return {columns.variables, true, model.replaces_missing};
  }
  void Fill(MCZandor_850::InputCaseRecord& record, std::size_t row) const {
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i].Set(record, i, row);
  }

  tools::CaseColumns columns;
  std::vector<InputCell> cells;  // of columns.variables
};

// The work of one thread at a time: block after block.
class TableExplainer::TableRun {
 public:
  TableRun(const TableExplainer& explainer, const TableInput& input,
           const svmscore_explanations& out)
      : model_(*explainer.explainer_),
        input_(input),
        out_(out),
        record_(input.NewRecord(*explainer.model_)),
        capacity_(tools::CasesExplainedAtOnce(model_, out.gradients != nullptr)),
        cases_(model_, capacity_, out.gradients != nullptr) {}

  void Explain(std::size_t first, std::size_t end) {
    for (; first < end; first += statuses_.size()) {
      statuses_.clear();
      cases_.Clear();
      for (std::size_t row = first; row < end && statuses_.size() < capacity_; ++row) {
        input_.Fill(record_, row);
        statuses_.push_back(record_.HasInvalid() ? MCScore::kInvalidValue : cases_.Add(record_));
      }
      cases_.Explain();
      std::size_t place = 0;
      for (std::size_t i = 0; i < statuses_.size(); ++i) {
        const bool held = statuses_[i] == 0;
        if (held && !cases_.IsExplained(place)) statuses_[i] = MCScore::kInvalidValue;
        Write(first + i, statuses_[i], place);
        if (held) ++place;
      }
    }
  }

  double Imbalance() const { return imbalance_; }

 private:
  void Write(std::size_t row, long status, std::size_t place) {
    const bool explained = status == 0;
    const std::size_t decisions = model_.Decisions().size();
    const std::size_t players = model_.PlayerList().size();
    const std::size_t fields = model_.Fields().size();
    if (out_.status != nullptr) out_.status[row] = status;
    if (explained) imbalance_ = std::max(imbalance_, cases_.Imbalance(place));
    Copy(explained ? cases_.Decisions(place) : nullptr, decisions, out_.decisions, row);
    for (std::size_t m = 0; m < decisions; ++m) {
      const std::size_t at = row * decisions + m;
      Copy(explained ? cases_.Values(place, m) : nullptr, players, out_.values, at);
      Copy(explained ? cases_.Errors(place, m) : nullptr, players, out_.errors, at);
      Copy(explained ? cases_.Gradients(place, m) : nullptr, fields, out_.gradients, at);
    }
  }

  // The numbers become block `at` of `to`, or are NaN where there are none.
  static void Copy(const double* from, std::size_t count, double* to, std::size_t at) {
    if (to == nullptr) return;
    if (from != nullptr) {
      std::copy_n(from, count, to + at * count);
    } else {
      std::fill_n(to + at * count, count, kNoNumber);
    }
  }

  const tools::ModelExplainer& model_;
  const TableInput& input_;
  const svmscore_explanations& out_;
  MCZandor_850::InputCaseRecord record_;
  std::size_t capacity_;
  tools::CaseExplainer cases_;
  std::vector<long> statuses_;
  double imbalance_ = 0.0;
};

ExplainerSettings ReadSettings(const svmscore_explainer_options* options) {
  const svmscore_explainer_options given = Read(options, "options");
  ExplainerSettings settings;
  if (given.background != nullptr) {
    settings.background =
        ViewsOf(given.background, given.background_column_count, given.background_row_count);
    settings.background_rows = given.background_row_count;
  }
  settings.most = given.rows;
  if (given.seed != 0) settings.seed = given.seed;
  settings.orders = given.orders;
  settings.threads = ThreadsOf(given.threads);
  settings.missing = ReadMissingTexts(given.missing_texts, given.missing_text_count);
  return settings;
}

TableExplainer::TableExplainer(SharedModel model, ExplainerSettings settings)
    : model_(std::move(model)), settings_(std::move(settings)) {
  const DocumentLock lock(model_->document_mutex);
  tools::Explainable explainable = tools::ExplainableOf(model_->loaded);
  const tools::Background background = MakeBackground(explainable);
  explainer_ = std::make_unique<tools::ModelExplainer>(
      model_->loaded, std::move(explainable), background, settings_.seed, settings_.orders);
  settings_.background.reset();  // it is the caller's memory
  rows_used_ = background.count;
  for (const tools::Player& player : explainer_->PlayerList()) players_.Add(player.name);
  players_.Finish();
  for (const std::string& field : explainer_->Fields()) fields_.Add(field);
  fields_.Finish();
  for (std::size_t m = 0; m < explainer_->Decisions().size(); ++m) {
    bases_.push_back(explainer_->Values().Base(m));
  }
}

tools::Background TableExplainer::MakeBackground(const tools::Explainable& explainable) {
  if (!settings_.background) {
    const std::string why = tools::WhyNoVectorBackground(explainable.model, explainable.players);
    if (!why.empty()) {
      RefuseArgument("the model does not say what cases are like: " + why, "options.background",
                     "give a table of some as the background");
    }
    tools::Background background = tools::VectorBackground(explainable.batch, explainable.model,
                                                           settings_.most, settings_.seed);
    rows_seen_ = background.rows_seen;
    rows_left_out_ = background.left_out;
    return background;
  }
  const TableInput input(*model_, *settings_.background, settings_.missing);
  MCZandor_850::InputCaseRecord record = input.NewRecord(*model_);
  tools::BackgroundReader reader(explainable.batch, settings_.most, settings_.seed);
  for (std::size_t row = 0; row < settings_.background_rows; ++row) {
    input.Fill(record, row);
    ++(reader.Add(record).status == 0 ? rows_seen_ : rows_left_out_);
  }
  if (rows_seen_ == 0) {
    throw Refusal(SVMSCORE_TABLE,
                  rows_left_out_ == 0 ? "the background has no rows"
                                      : "no row of the background can be scored",
                  "options.background", "give cases that the model can score");
  }
  return reader.Take();
}

svmscore_explainer_facts TableExplainer::Facts() const {
  svmscore_explainer_facts facts{};
  facts.player_count = players_.size();
  facts.players = players_.data();
  facts.field_count = fields_.size();
  facts.fields = fields_.data();
  facts.machine_count = bases_.size();
  facts.bases = bases_.data();
  facts.sampled = explainer_->Values().IsSampled() ? 1 : 0;
  facts.background_rows = rows_used_;
  facts.background_rows_seen = rows_seen_;
  facts.background_rows_left_out = rows_left_out_;
  return facts;
}

void TableExplainer::Explain(const std::vector<ColumnView>& columns, std::size_t rows,
                             svmscore_explanations& out) {
  const TableInput input(*model_, columns, settings_.missing);
  const std::size_t block = tools::CasesExplainedAtOnce(*explainer_, out.gradients != nullptr);
  const std::size_t blocks = (rows + block - 1) / block;
  std::vector<double> imbalances(std::max<std::size_t>(std::min(settings_.threads, blocks), 1));
  ShareWork(blocks, imbalances.size(), [&](std::size_t thread) {
    return [&, run = std::make_shared<TableRun>(*this, input, out), thread](std::size_t number) {
      run->Explain(number * block, std::min((number + 1) * block, rows));
      imbalances[thread] = run->Imbalance();
    };
  });
  out.imbalance = *std::max_element(imbalances.begin(), imbalances.end());
}

}  // namespace svmscore::capi

using namespace svmscore::capi;

int svmscore_explainer_new(const svmscore_model* model, const svmscore_explainer_options* options,
                           svmscore_explainer** explainer, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    Require(explainer, "explainer");
    *explainer = new svmscore_explainer{TableExplainer(model->state, ReadSettings(options))};
  });
}

void svmscore_explainer_free(svmscore_explainer* explainer) {
  delete explainer;
}

int svmscore_explainer_get_facts(const svmscore_explainer* explainer,
                                 svmscore_explainer_facts* facts, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(explainer, "explainer");
    Write(explainer->explainer.Facts(), facts, "facts");
  });
}

int svmscore_explain(svmscore_explainer* explainer, const svmscore_column* columns,
                     size_t column_count, size_t row_count, svmscore_explanations* explanations,
                     svmscore_error** error) {
  return Guarded(error, [&] {
    Require(explainer, "explainer");
    Require(explanations, "explanations");
    svmscore_explanations out = Read(explanations, "explanations");
    explainer->explainer.Explain(ViewsOf(columns, column_count, row_count), row_count, out);
    Write(out, explanations, "explanations");
  });
}
