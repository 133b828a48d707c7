// embed MODEL CASES: scores a table from a program of one's own, on several threads, and prints
// the predictions. docs/embedding.md explains each step.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "host/model/score_case_record.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"

namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;
using svmscore::LoadedModel;
using svmscore::output::Outcome;

constexpr std::size_t kThreads = 4;

// Rows of cells; the first names the columns. Cells hold no commas here.
using Table = std::vector<std::vector<std::string>>;

Table ReadTable(const char* path) {
  Table table;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream cells(line);
    auto& row = table.emplace_back();
    for (std::string cell; std::getline(cells, cell, ',');) row.push_back(cell);
  }
  return table;
}

// Scores with a shared model. One for each thread: the record and the result are the thread's own.
class Scorer {
 public:
  Scorer(const LoadedModel& loaded, const std::vector<std::string>& header)
      : loaded_(loaded), record_(loaded.needed, true, ReplacesMissing(*loaded.model)) {
    for (std::size_t i = 0; i < record_.Size(); ++i) {
      const auto name = std::find(header.begin(), header.end(), record_.Variable(i).GetName());
      columns_.push_back(static_cast<std::size_t>(name - header.begin()));
    }
  }

  std::string Score(const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (columns_[i] < row.size() && !row[columns_[i]].empty()) {
        record_.SetText(i, row[columns_[i]]);
      } else {
        record_.SetMissing(i);
      }
    }
    MCScore::MCStatus status(MCScore::kInvalidValue, false);
    if (!record_.HasInvalid()) {
      ScoreResult* result = result_.release();  // null at first: the model makes one
      status = loaded_.model->GetScore(&record_, result, false);
      result_.reset(result);
    }
    const Outcome outcome = loaded_.output->Targets().Finish(status, result_.get());
    if (!outcome.IsPredicted()) return "status " + std::to_string(outcome.status);
    if (outcome.category < 0) return svmscore::FormatNumber(outcome.prediction.GetNumber());
    const auto category = static_cast<std::size_t>(outcome.category);
    return loaded_.model->GetTargetVar()->GetCategories()[category]->GetText();
  }

 private:
  static bool ReplacesMissing(const ScoreModel& model) {
    return model.GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
  }

  const LoadedModel& loaded_;
  InputCaseRecord record_;
  std::vector<std::size_t> columns_;
  std::unique_ptr<ScoreResult> result_;
};

std::vector<std::string> ScoreAll(const LoadedModel& loaded, const Table& table) {
  std::vector<std::string> predictions(table.size());
  if (table.size() < 2) return {};
  // One case alone fixes where the model finds its variables in records. Empty cells are missing,
  // and so never keep a case from the model, as an invalid one in the first row would.
  Scorer(loaded, table[0]).Score({});
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      Scorer scorer(loaded, table[0]);
      for (std::size_t row = 1 + t; row < table.size(); row += kThreads) {
        predictions[row] = scorer.Score(table[row]);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  predictions.erase(predictions.begin());
  return predictions;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  try {
    svmscore::StartXerces();
    const svmscore::Plugin plugin;
    const LoadedModel loaded = LoadModel(plugin, svmscore::PmmlDocument::FromFile(arguments[1]));
    for (const std::string& prediction : ScoreAll(loaded, ReadTable(arguments[2]))) {
      std::puts(prediction.c_str());
    }
    return 0;
  } catch (const MCZandor_850::SSException& error) {
    std::fprintf(stderr, "[%d] %s. %s.\n", error.GetErrorCode(), error.what(),
                 error.GetRemedy().c_str());
  } catch (const std::bad_alloc&) {
    std::fputs("out of memory\n", stderr);
  }
  return 1;
}
