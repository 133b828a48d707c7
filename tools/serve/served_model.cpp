#include "tools/serve/served_model.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "host/load/plugin.h"
#include "host/model/batch_model.h"
#include "host/model/score_result.h"
#include "host/model/ss_exception.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/base/decompression.h"
#include "tools/base/document_source.h"
#include "tools/base/error_text.h"
#include "tools/base/json_string.h"
#include "tools/base/sha256.h"
#include "tools/describe/machine_sides.h"
#include "tools/describe/summary_json.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/report_json.h"
#include "tools/score/case_batch.h"
#include "tools/serve/answer_text.h"

namespace svmscore::serve {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreResult;
using MCZandor_850::SSException;

// So many scorers wait for requests; those of more threads are made anew.
constexpr std::size_t kMostInStock = 16;

std::string Inflate(const std::string& file, const Limits& limits) {
  const auto decompressor =
      tools::DecompressorFor(std::string_view(file).substr(0, tools::kCompressionMark));
  if (decompressor == nullptr) {
    if (file.size() > limits.document_size) {
      throw BeyondLimit(limits, &Limits::document_size);
    }
    return file;
  }
  std::string text;
  std::array<char, 65536> out;
  std::string_view ahead = file;
  while (true) {
    const std::size_t count = decompressor->Read(ahead, out.data(), out.size());
    text.append(out.data(), count);
    if (text.size() > limits.document_size) throw BeyondLimit(limits, &Limits::document_size);
    if (count < out.size()) break;
  }
  if (!decompressor->IsComplete()) {
    throw ModelRefused(
        fmt::format("the file ends before its {} stream does", decompressor->Format()));
  }
  return text;
}

// `findings`: what doctor says; `doubt`: of what changes scores, the first.
LoadedModel Load(const std::string& id, const std::string& file, const ReadingRules& rules,
                 std::string& findings, std::string& doubt) {
  std::optional<tools::DocumentSource> source;
  try {
    source.emplace(id, Inflate(file, rules.limits), rules.limits);
    const Plugin plugin(rules.plugin);
    // Records are run by a model of their own: the first case fixes the layout of all later ones.
    const tools::OpenedDocument opened = tools::OpenDocument(plugin, *source);
    if (opened.IsRead()) {
      const tools::Examination examined = tools::Examine(opened, plugin, *source, std::nullopt);
      for (const Finding& finding : examined.findings) {
        if (finding.Name() != "verification-disagrees") continue;
        throw ModelRefused(fmt::format(
            "the document's own verification records disagree with it: {}", finding.What()));
      }
      const auto first = std::find_if(examined.findings.begin(), examined.findings.end(),
                                      [](const Finding& finding) { return finding.IsError(); });
      if (first != examined.findings.end()) {
        doubt = fmt::format("{}: {}", first->Name(), first->What());
      }
      findings = tools::FindingsJson(examined.findings);
    }
    return LoadModel(
        plugin, [&source] { return source->Parse(Arrays::kAsNumbers); }, rules.checks);
  } catch (const SSException& error) {
    throw ModelRefused(source ? tools::Explain(error, *source) : tools::Explain(error));
  } catch (const tools::BrokenCompression& error) {
    throw ModelRefused(error.what());
  }
}

void AppendCategory(std::string& out, std::string_view name, int position,
                    const std::vector<std::string>& categories) {
  out += name;
  if (position < 0) {
    out += "null";
  } else {
    tools::AppendJsonString(out, categories.at(static_cast<std::size_t>(position)));
  }
}

std::vector<std::string> DecisionKeysOf(const tools::ModelSummary& summary,
                                        const tools::ModelExplainer& explainer) {
  std::vector<std::string> keys;
  for (std::size_t d = 0; d < explainer.Decisions().size(); ++d) {
    const tools::MachineSides sides =
        tools::SidesOf(summary, explainer.Batch().DecisionCategories(d), d);
    std::string& key = keys.emplace_back("\"decision_of\":");
    tools::AppendJsonString(key, explainer.Decisions()[d]);
    AppendCategory(key, ",\"above\":", sides.above, summary.categories);
    AppendCategory(key, ",\"below\":", sides.below, summary.categories);
    key += ",\"threshold\":";
    JsonSink(key).Number(sides.threshold);
  }
  return keys;
}

}  // namespace

std::int64_t Now() {
  using std::chrono::milliseconds;
  using std::chrono::system_clock;
  return std::chrono::duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

ServedModel::ServedModel(std::string id, std::string file, const ReadingRules& rules)
    : id_(std::move(id)),
      file_(std::move(file)),
      loaded_(Load(id_, file_, rules, findings_, doubt_)),
      plan_(loaded_, tools::ColumnChoice::kDocument, false, false),
      created_(Now()) {
  tools::Sha256 digest;
  digest.Add(file_.data(), file_.size());
  sha256_ = digest.Hex();
  CollectInputs();
  FixPositions();
  FindPlainEntries();
  const std::vector<const ScoreDictVar*> variables = RecordVariables();
  examiner_ = std::make_shared<const reasons::CaseExaminer>(loaded_, variables);
  for (const auto& column : plan_.results) {
    std::string& key = result_keys_.emplace_back(result_keys_.empty() ? "" : ",");
    tools::AppendJsonString(key, column->Name());
    key += ':';
  }
  const tools::ModelSummary summary = tools::Summarise(loaded_);
  cost_ = std::max<std::size_t>(summary.vectors, 1) * summary.vector_fields;
  card_ = tools::JsonOf(summary);
  singles_.scorers.reserve(kMostInStock);
  batches_.scorers.reserve(kMostInStock);
}

std::vector<const ScoreDictVar*> ServedModel::RecordVariables() const {
  return {inputs_.begin(), inputs_.begin() + static_cast<std::ptrdiff_t>(record_inputs_)};
}

ServedModel::~ServedModel() = default;

void ServedModel::CollectInputs() {
  inputs_ = tools::InputsOf(loaded_);
  record_inputs_ = inputs_.size();
  for (const ScoreDictVar* var : loaded_.output->ExtraInputs()) inputs_.push_back(var);
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    positions_.emplace(inputs_[i]->GetName(), i);
    tools::AppendJsonString(quoted_names_.emplace_back(), inputs_[i]->GetName());
  }
}

// Which the first case would do alone.
void ServedModel::FixPositions() {
  const InputCaseRecord record(loaded_.needed, true, plan_.replaces_missing);
  if (plan_.batch != nullptr) return plan_.batch->FixPositions(record);
  ScoreResult* result = nullptr;
  loaded_.model->GetScore(&record, result, false);
  delete result;
}

void ServedModel::FindPlainEntries() {
  if (plan_.batch == nullptr || plan_.reads_inputs) return;
  const auto takes_all = [](const ScoreDictVar* var) { return var->TakesEveryNumber(); };
  const std::vector<const ScoreDictVar*> variables = RecordVariables();
  if (!std::all_of(variables.begin(), variables.end(), takes_all)) return;
  std::vector<std::size_t> entries;
  for (std::size_t e = 0; e < plan_.batch->EntryCount(); ++e) {
    const auto found = std::find(variables.begin(), variables.end(), plan_.batch->PlainEntry(e));
    if (found == variables.end()) return;
    entries.push_back(static_cast<std::size_t>(found - variables.begin()));
  }
  plain_entries_ = std::move(entries);
}

std::shared_ptr<const tools::ModelExplainer> ServedModel::Explainer() const {
  constexpr std::uint64_t kSeed = 1;
  constexpr std::size_t kOrders = 0;  // as many as the model thinks fit
  const std::lock_guard lock(explainer_mutex_);
  if (explainer_ == nullptr) {
    tools::Explainable explainable = tools::ExplainableOf(loaded_);
    const std::string why = tools::WhyNoVectorBackground(explainable.model, explainable.players);
    if (!why.empty()) {
      throw tools::BadDocument("the model does not say what cases are like: " + why +
                               "; svmscore explain takes a table of some with --background");
    }
    const tools::Background background =
        tools::VectorBackground(explainable.batch, explainable.model, kBackgroundRows, kSeed);
    auto explainer = std::make_shared<const tools::ModelExplainer>(loaded_, std::move(explainable),
                                                                   background, kSeed, kOrders);
    decision_keys_ = DecisionKeysOf(tools::Summarise(loaded_), *explainer);
    explainer_ = std::move(explainer);
  }
  return explainer_;
}

std::size_t ServedModel::FindInput(std::string_view name) const {
  const auto found = positions_.find(name);
  return found == positions_.end() ? kNoInput : found->second;
}

ServedModel::ScorerLease::ScorerLease(const ServedModel& model, bool single)
    : model_(model), single_(single) {
  Stock& stock = model.StockOf(single);
  {
    const std::lock_guard lock(stock.mutex);
    if (!stock.scorers.empty()) {
      scorer_ = std::move(stock.scorers.back());
      stock.scorers.pop_back();
    }
  }
  if (scorer_ != nullptr) return;
  const std::size_t capacity =
      single ? 1 : tools::CasesAtOnce(model.plan_.batch, model.record_inputs_);
  scorer_ = std::make_unique<tools::RowScorer>(model.plan_, model.RecordVariables(), capacity,
                                               model.examiner_);
}

ServedModel::ScorerLease::~ScorerLease() {
  Stock& stock = model_.StockOf(single_);
  const std::lock_guard lock(stock.mutex);
  if (stock.scorers.size() < kMostInStock) stock.scorers.push_back(std::move(scorer_));
}

}  // namespace svmscore::serve
