// A model that requests are answered with: loaded, examined, and never changed afterwards.
#ifndef TOOLS_SERVE_SERVED_MODEL_H_
#define TOOLS_SERVE_SERVED_MODEL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/load/loader.h"
#include "host/reasons/case_examiner.h"
#include "host/xml/limits.h"
#include "tools/base/cell_rules.h"
#include "tools/explain/case_explainer.h"
#include "tools/score/row_scorer.h"

namespace svmscore::serve {

// Why a document is not served, in a sentence.
class ModelRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How documents are read.
struct ReadingRules {
  LoadChecks checks = LoadChecks::kRefuse;
  Limits limits;
  std::string plugin;  // its file; empty for the installed one
};

// [any thread] unless stated otherwise. Fails: std::bad_alloc.
class ServedModel {
 public:
  // `file` is the bytes of the model's file, compressed or not. Refuses a document that does not
  // load, and one whose verification records disagree with it. Fails: ModelRefused; std::bad_alloc.
  ServedModel(std::string id, std::string file, const ReadingRules& rules);
  ~ServedModel();
  ServedModel(const ServedModel&) = delete;
  ServedModel& operator=(const ServedModel&) = delete;

  const std::string& Id() const { return id_; }
  // Of the file's bytes, in lower-case hexadecimal.
  const std::string& Sha256() const { return sha256_; }
  const std::string& File() const { return file_; }
  const LoadedModel& Loaded() const { return loaded_; }
  const tools::RowPlan& Plan() const { return plan_; }
  const tools::CellRules& Cells() const { return cells_; }

  // Every field that a case may have a value of: first those of records, then those that only
  // output fields read.
  const std::vector<const MCZandor_850::ScoreDictVar*>& Inputs() const { return inputs_; }
  std::size_t RecordInputs() const { return record_inputs_; }
  std::vector<const MCZandor_850::ScoreDictVar*> RecordVariables() const;
  static constexpr std::size_t kNoInput = static_cast<std::size_t>(-1);
  std::size_t FindInput(std::string_view name) const;
  // The names of the inputs as JSON.
  const std::vector<std::string>& QuotedNames() const { return quoted_names_; }

  // Of each entry of a case the position of its input, where every entry is an input's number as it
  // is, and any number will do for every input; else empty.
  const std::vector<std::size_t>& PlainEntries() const { return plain_entries_; }
  // Of every result what stands before its value in an object: `,"NAME":`, the first without comma.
  const std::vector<std::string>& ResultKeys() const { return result_keys_; }

  // About how many multiplications a case takes.
  std::size_t Cost() const { return cost_; }
  // What describe and doctor say, as JSON.
  const std::string& Card() const { return card_; }
  const std::string& Findings() const { return findings_; }
  // The first finding that changes scores; empty where none does.
  const std::string& Doubt() const { return doubt_; }

  // Held while the document is read again, such as for an examiner of other columns.
  std::mutex& DocumentMutex() const { return document_mutex_; }
  std::shared_ptr<const reasons::CaseExaminer> Examiner() const { return examiner_; }

  // Explains cases, before a background of the model's support vectors; made at the first call.
  // Fails: BadDocument where the model cannot be explained so; std::bad_alloc.
  std::shared_ptr<const tools::ModelExplainer> Explainer() const;
  // What each decision value decides, as members of an object: `"decision_of":...,"above":...`.
  // REQUIRES: Explainer() has returned.
  const std::vector<std::string>& DecisionKeys() const { return decision_keys_; }
  static constexpr std::size_t kBackgroundRows = 100;

  // When it was loaded and last scored with, in milliseconds since 1970; 0: never.
  std::int64_t Created() const { return created_; }
  std::int64_t Accessed() const { return accessed_.load(std::memory_order_relaxed); }
  void Touch(std::int64_t now) const { accessed_.store(now, std::memory_order_relaxed); }

  // The working memory of one request at a time; back in the model's stock when it ends.
  class ScorerLease {
   public:
    ScorerLease(const ServedModel& model, bool single);
    ~ScorerLease();
    ScorerLease(const ScorerLease&) = delete;
    ScorerLease& operator=(const ScorerLease&) = delete;
    tools::RowScorer& operator*() { return *scorer_; }
    tools::RowScorer* operator->() { return scorer_.get(); }
    const tools::RowScorer* operator->() const { return scorer_.get(); }

   private:
    const ServedModel& model_;
    bool single_;
    std::unique_ptr<tools::RowScorer> scorer_;
  };

 private:
  struct Stock {
    std::mutex mutex;
    std::vector<std::unique_ptr<tools::RowScorer>> scorers;
  };

  void CollectInputs();
  void FixPositions();
  void FindPlainEntries();
  Stock& StockOf(bool single) const { return single ? singles_ : batches_; }

  std::string id_;
  std::string file_;
  std::string sha256_;
  std::string card_;
  std::string findings_;
  std::string doubt_;
  LoadedModel loaded_;
  tools::RowPlan plan_;
  tools::CellRules cells_;
  std::vector<const MCZandor_850::ScoreDictVar*> inputs_;
  std::size_t record_inputs_ = 0;
  std::unordered_map<std::string_view, std::size_t> positions_;
  std::shared_ptr<const reasons::CaseExaminer> examiner_;
  std::vector<std::string> quoted_names_;
  std::vector<std::size_t> plain_entries_;
  std::vector<std::string> result_keys_;
  std::size_t cost_ = 0;
  std::int64_t created_ = 0;
  mutable std::atomic<std::int64_t> accessed_{0};
  mutable std::mutex document_mutex_;
  mutable std::mutex explainer_mutex_;
  mutable std::shared_ptr<const tools::ModelExplainer> explainer_;
  mutable std::vector<std::string> decision_keys_;  // made before it
  mutable Stock singles_;
  mutable Stock batches_;
};

using SharedModel = std::shared_ptr<const ServedModel>;

// Milliseconds since 1970. [any thread] Fails: never.
std::int64_t Now();

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_SERVED_MODEL_H_
