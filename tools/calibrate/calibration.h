// Calibrating a model by a hold-out: the calibrated document, and what it is worth.
#ifndef TOOLS_CALIBRATE_CALIBRATION_H_
#define TOOLS_CALIBRATE_CALIBRATION_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "host/xml/document.h"
#include "tools/base/cell_rules.h"
#include "tools/base/text_table.h"
#include "tools/calibrate/figures.h"
#include "tools/calibrate/sigmoid_fit.h"

namespace svmscore::tools {

// So many parts has a cross-validation: case i of a category is in part i modulo this.
inline constexpr std::size_t kFolds = 5;

struct CalibrationOrder {
  const LoadedModel& loaded;    // the model, read as LoadChecks::kRefuse reads it
  const Plugin& plugin;         // that it came from
  const std::string& document;  // the bytes that it was loaded from
  std::string name;             // what messages call it
  const Limits& limits;
  const TextTable& holdout;
  std::string actual;  // the column of the hold-out with labels
  const CellRules& rules;
  double confidence = 0.95;  // of a regression's intervals; between 0 and 1
  std::string made_at;       // the date that the document gets
};

// The sigmoid of a pair of categories.
struct PairCalibration {
  std::string response;  // the earlier category of the target
  std::string other;
  std::size_t response_cases = 0;
  std::size_t other_cases = 0;
  Sigmoid sigmoid;
  std::size_t machine = 0;  // its number in the document as it was, from 1
};

// What became of the document's verification records.
enum class RecordsFate {
  kNone,
  kKept,
  kRewritten,
  kDroppedAsWrong,  // they did not agree with the model before
  kDropped,         // they cannot be made anew
};

struct CalibrationResult {
  std::string document;
  RecordsFate records = RecordsFate::kNone;
  std::vector<std::string> remarks;  // sentences

  std::size_t rows = 0;
  std::size_t unlabelled = 0;
  std::size_t unknown_labels = 0;
  std::size_t unscored = 0;
  std::size_t used = 0;

  bool classification = true;
  // Of a classification.
  std::vector<std::string> categories;
  std::vector<std::size_t> cases;  // of each category
  std::vector<PairCalibration> pairs;
  std::size_t moved = 0;    // machines that have another place now
  std::size_t changed = 0;  // cases of the hold-out whose prediction is another now
  ClassFigures before;
  ClassFigures after;  // by cross-validation
  // Of a regression.
  double confidence = 0.0;
  std::size_t rank = 0;  // of the residual that gives the width
  // On the scale of the labels: of the prediction, or of this output field where it is not empty.
  double half_width = 0.0;
  std::string output_field;
  double deviation = 0.0;                          // that the document gets
  std::optional<IntervalFigures> interval_before;  // nothing where the model has none
  std::optional<IntervalFigures> interval_after;   // by cross-validation; nothing for too few cases
};

// Whether Calibrate wrote the document, by its header. [one thread] for each document.
bool IsCalibrated(const PmmlDocument& document);
// The confidence of the intervals of a document that Calibrate wrote, by its header; nothing of
// another document. [one thread] for each document.
std::optional<double> StatedConfidence(const PmmlDocument& document);

// Before it returns, the new document is loaded, and up to a thousand rows are scored with it: what
// it gives is what was computed here, to the last bit.
// Throws a BadDocument for a model that cannot be calibrated, a BadCases for a hold-out that does
// not do, SSException where the document cannot be loaded again. [one thread] Owns: the caller.
CalibrationResult Calibrate(const CalibrationOrder& order);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CALIBRATION_H_
