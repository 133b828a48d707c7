#include "tests/process/case_set.h"

#include <bit>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <new>
#include <string_view>

#include "host/model/score_dict_var.h"

namespace svmscore_test {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

namespace {

constexpr std::size_t kCases = 6;
constexpr std::size_t kWithInvalid = kCases - 2;
constexpr std::size_t kWithout = kCases - 1;

void Fill(InputCaseRecord& record, std::size_t number) {
  for (std::size_t i = 0; i < record.Size() && number != kWithout; ++i) {
    const ScoreDictVar& var = record.Variable(i);
    const auto& categories = var.GetCategories();
    if (number == kWithInvalid && i == 0) {
      record.SetText(i, "neither a number nor a category");
    } else if (!categories.empty()) {
      record.SetText(i, categories[(number + i) % categories.size()]->GetText());
    } else if (var.GetStorageType() == 1) {
      record.SetText(i, "Text number " + std::to_string(number) + ", größer");
    } else {
      record.SetNumber(i, 0.25 * static_cast<double>((5 * number + 3 * i) % 7) - 0.5);
    }
  }
}

void Add(Answer& answer, std::initializer_list<double> numbers) {
  for (const double number : numbers) answer.bits.push_back(std::bit_cast<std::uint64_t>(number));
}

}  // namespace

const std::vector<std::string>& Documents() {
  static const std::vector<std::string> documents = [] {
    std::vector<std::string> paths;
    for (const char* name :
         {"tests/process/data/mixed", "tests/app/data/line", "tests/app/data/two",
          "tests/app/data/three", "tests/output/data/alarm", "tests/output/data/chain",
          "tests/output/data/grades", "tests/doctor/data/sound", "examples/broken/model",
          "examples/iris/model", "examples/tumour/model", "examples/diabetes/model",
          "examples/digits/model"}) {
      paths.push_back(std::string(PROJECT_FOLDER "/") + name + ".pmml");
    }
    return paths;
  }();
  return documents;
}

const svmscore::Plugin& ThePlugin() {
  static const svmscore::Plugin plugin(SVMSCORE_PLUGIN_FILE);
  return plugin;
}

svmscore::LoadedModel Load(const std::string& path) {
  return LoadModel(ThePlugin(),
                   svmscore::PmmlDocument::FromFile(path, {}, svmscore::Arrays::kAsNumbers));
}

struct CaseSet::OneCase {
  OneCase(const svmscore::LoadedModel& loaded, bool replaces)
      : record(loaded.active, true, replaces), outputs(*loaded.output, replaces) {}

  InputCaseRecord record;
  svmscore::output::OutputScratch outputs;
  std::unique_ptr<MCZandor_850::ScoreResult> result;
  long status = 0;
  std::size_t place = 0;  // in the batch, where `batch_status` is 0
  long batch_status = 0;
  svmscore::output::Outcome outcome;
  bool evaluated = false;
};

CaseSet::CaseSet(const svmscore::LoadedModel& loaded)
    : loaded_(loaded), batch_(dynamic_cast<svmscore::BatchModel&>(*loaded.model)) {
  const bool replaces =
      loaded.model->GetMissingValuePolicy() == MCZandor_850::ScoreModel::kReplaceMissing;
  for (std::size_t i = 0; i < kCases; ++i) {
    cases_.push_back(std::make_unique<OneCase>(loaded, replaces));
    Fill(cases_.back()->record, i);
    Fill(cases_.back()->outputs.Extras(), i);
  }
  entries_.resize(batch_.EntryCount() * kCases);
  status_.resize(kCases);
  category_.resize(kCases);
  value_.resize(kCases);
  decisions_.resize(batch_.DecisionCount() * kCases);
}

CaseSet::~CaseSet() = default;

void CaseSet::Score() {
  for (const auto& one : cases_) {
    MCZandor_850::ScoreResult* result = one->result.release();
    try {
      one->status = loaded_.model->GetScore(&one->record, result, false).GetErrorCode();
    } catch (...) {
      escaped_ = true;
    }
    one->result.reset(result);
  }
  try {
    ScoreTogether();
  } catch (...) {
    escaped_ = true;
  }
  for (const auto& one : cases_) {
    one->evaluated = false;
    one->outcome = loaded_.output->Targets().Finish({one->status, false}, one->result.get());
    try {
      loaded_.output->Evaluate(one->outcome, one->record, one->outputs);
      one->evaluated = true;
    } catch (const std::bad_alloc&) {  // which host functions may throw
    } catch (...) {
      escaped_ = true;
    }
  }
}

void CaseSet::ScoreTogether() {
  std::size_t taken = 0;
  for (const auto& one : cases_) {
    one->batch_status =
        batch_.ReadCase(one->record, false, entries_.data() + taken, kCases).GetErrorCode();
    if (one->batch_status == 0) one->place = taken++;
  }
  svmscore::BatchResults results;
  results.status = status_.data();
  results.category = category_.data();
  results.value = value_.data();
  results.decisions = decisions_.data();
  results.stride = kCases;
  batch_.ScoreBatch({entries_.data(), kCases, taken}, results);
}

std::vector<Answer> CaseSet::Answers() const {
  std::vector<Answer> answers;
  for (const auto& one : cases_) {
    Answer& alone = answers.emplace_back(Answer{one->status, {}});
    if (one->status != 0 || !one->evaluated) continue;
    const auto& outcome = one->outcome;
    Add(alone, {static_cast<double>(outcome.category), outcome.confidence, outcome.std_dev});
    if (outcome.category < 0) Add(alone, {outcome.prediction.GetNumber()});
    for (std::size_t i = 0; i < loaded_.output->Fields().size(); ++i) {
      const auto& cell = one->outputs.Cell(i);
      alone.bits.push_back(
          cell.IsPresent() ? std::hash<std::string_view>()(one->outputs.TextOf(cell)) : 0);
    }
  }
  for (const auto& one : cases_) {
    const std::size_t place = one->place;
    const long status = one->batch_status != 0 ? one->batch_status : status_[place];
    Answer& together = answers.emplace_back(Answer{status, {}});
    if (status != 0) continue;
    Add(together, {static_cast<double>(category_[place]), value_[place]});
    for (std::size_t m = 0; m < batch_.DecisionCount(); ++m) {
      Add(together, {decisions_[m * kCases + place]});
    }
  }
  return answers;
}

}  // namespace svmscore_test
