// Scores cases with a document, as a host does: from texts to output cells.
#ifndef TESTS_OUTPUT_DOCUMENT_SCORING_H_
#define TESTS_OUTPUT_DOCUMENT_SCORING_H_

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "host/model/score_case_record.h"
#include "host/model/ss_exception.h"
#include "host/output/output_plan.h"

namespace svmscore_test {

using Ending = svmscore::output::Outcome::Ending;
using Case = std::map<std::string, std::string>;

inline std::string Document(const std::string& name) {
  std::ifstream file(std::string(DATA_FOLDER "/") + name);
  if (!file) throw std::logic_error("no file " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Replaces the first match of `pattern`, or throws.
inline std::string Edit(const std::string& text, const std::string& pattern,
                        const std::string& replacement) {
  const std::regex regex(pattern);
  if (!std::regex_search(text, regex)) throw std::logic_error("nothing matches " + pattern);
  return std::regex_replace(text, regex, replacement, std::regex_constants::format_first_only);
}

class Scoring {
 public:
  explicit Scoring(const std::string& text,
                   svmscore::LoadChecks checks = svmscore::LoadChecks::kRefuse)
      : loaded_(svmscore::LoadModel(svmscore::Plugin(SVMSCORE_PLUGIN_FILE),
                                    svmscore::PmmlDocument::FromText(text, "test.pmml"), checks)),
        record_(loaded_.active, true, ReplacesMissing()),
        scratch_(*loaded_.output, ReplacesMissing()) {}

  // Scores a case, whose inputs are missing where it does not name them.
  const svmscore::output::Outcome& Score(const Case& values) {
    Fill(record_, values);
    Fill(scratch_.Extras(), values);
    MCScore::MCStatus status(MCScore::kInvalidValue, false);
    if (!record_.HasInvalid()) {
      MCZandor_850::ScoreResult* result = result_.release();
      status = loaded_.model->GetScore(&record_, result, false);
      result_.reset(result);
    }
    outcome_ = loaded_.output->Targets().Finish(status, result_.get());
    outcome_.status = loaded_.output->Evaluate(outcome_, record_, scratch_);
    return outcome_;
  }

  // The cell of an output field as text; empty where it is missing.
  std::string Text(const std::string& field) {
    return std::string(scratch_.TextOf(scratch_.Cell(Position(field))));
  }
  // The cell as a number, or nothing where it is missing.
  std::optional<double> Number(const std::string& field) const {
    const auto& cell = scratch_.Cell(Position(field));
    if (!cell.IsPresent()) return std::nullopt;
    return cell.GetNumber();
  }

  svmscore::LoadedModel& Loaded() { return loaded_; }
  const svmscore::output::OutputPlan& Plan() const { return *loaded_.output; }

 private:
  static void Fill(MCZandor_850::InputCaseRecord& record, const Case& values) {
    for (std::size_t i = 0; i < record.Size(); ++i) {
      const auto value = values.find(record.Variable(i).GetName());
      if (value == values.end()) {
        record.SetMissing(i);
      } else {
        record.SetText(i, value->second);
      }
    }
  }
  bool ReplacesMissing() const {
    return loaded_.model->GetMissingValuePolicy() == MCZandor_850::ScoreModel::kReplaceMissing;
  }
  std::size_t Position(const std::string& field) const {
    const auto& fields = loaded_.output->Fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].name == field) return i;
    }
    throw std::logic_error("no output field " + field);
  }

  svmscore::LoadedModel loaded_;
  MCZandor_850::InputCaseRecord record_;
  svmscore::output::OutputScratch scratch_;
  std::unique_ptr<MCZandor_850::ScoreResult> result_;
  svmscore::output::Outcome outcome_;
};

// How a document is refused: "CODE SENTENCE"; empty where it is not.
inline std::string Refusal(const std::string& document,
                           svmscore::LoadChecks checks = svmscore::LoadChecks::kRefuse) {
  try {
    Scoring scoring(document, checks);
  } catch (const MCZandor_850::SSException& error) {
    return std::to_string(error.GetErrorCode()) + " " + error.what();
  }
  return {};
}

}  // namespace svmscore_test

#endif  // TESTS_OUTPUT_DOCUMENT_SCORING_H_
