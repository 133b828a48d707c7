#include "tools/calibrate/calibration.h"

#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "host/model/batch_model.h"
#include "host/output/target_rules.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "tools/base/bad_input.h"
#include "tools/calibrate/calibrated_text.h"
#include "tools/calibrate/class_calibration.h"
#include "tools/calibrate/holdout.h"
#include "tools/calibrate/interval_calibration.h"
#include "tools/calibrate/records.h"

namespace svmscore::tools {
namespace {

// Rows by which the new document is checked.
constexpr std::size_t kCheckedRows = 1000;
// What comes before the confidence in the note of a header.
constexpr std::string_view kConfidenceNote = "intervals of confidence ";

void TellOfRows(const Holdout& holdout, CalibrationResult& result) {
  result.rows = holdout.rows;
  result.unlabelled = holdout.unlabelled;
  result.unscored = holdout.unscored;
  result.used = holdout.Size();
  for (const auto& [label, count] : holdout.unknown_labels) result.unknown_labels += count;
  if (result.unscored > 0) {
    result.remarks.push_back(
        fmt::format("rows that cannot be scored: {}; svmscore score --reasons says of each why",
                    result.unscored));
  }
  if (result.unknown_labels > 0) {
    result.remarks.push_back(fmt::format(
        "labels that are {}: {}", result.classification ? "no category of the target" : "no number",
        UnknownLabelsOf(holdout)));
  }
}

std::string NoteOf(const CalibrationOrder& order, const CalibrationResult& result) {
  std::string note = fmt::format("calibrated by svmscore " SVMSCORE_VERSION
                                 ", {}, with {} of {} rows of a hold-out: ",
                                 order.made_at, result.used, result.rows);
  if (!result.classification) {
    note += fmt::format("{}{} by split conformal prediction, half-width {:.6g}", kConfidenceNote,
                        result.confidence, result.half_width);
    if (!result.output_field.empty()) {
      note += fmt::format(" on the scale of the output field {}", result.output_field);
    }
    if (result.interval_after) {
      note +=
          fmt::format("; by {}-fold cross-validation coverage {:.4f}, mean width {:.6g}", kFolds,
                      result.interval_after->coverage, result.interval_after->mean_width);
    }
    return note;
  }
  const ProbabilityFigures& figures = *result.after.probabilities;
  return note + fmt::format(
                    "Platt's sigmoid of each pair of categories; by {}-fold cross-validation Brier "
                    "score {:.4f}, log loss {:.4f}, expected calibration error {:.4f}, accuracy "
                    "{:.4f}",
                    kFolds, figures.brier, figures.log_loss, figures.ece, result.after.accuracy);
}

// What Calibrate wrote into the header.
std::optional<std::string> CalibrationNote(const PmmlDocument& document) {
  const Element* header = FindChild(document.Dom()->getDocumentElement(), "Header");
  for (const Element* extension : Children(header, "Extension")) {
    if (AttributeText(extension, "extender") == "svmscore" &&
        AttributeText(extension, "name") == "calibration") {
      return AttributeText(extension, "value");
    }
  }
  return std::nullopt;
}

TextTable SomeRows(const TextTable& table) {
  TextTable some;
  some.name = table.name;
  some.header = table.header;
  const std::size_t step = (table.rows.size() + kCheckedRows - 1) / kCheckedRows;
  for (std::size_t i = 0; i < table.rows.size(); i += step) some.rows.push_back(table.rows[i]);
  return some;
}

// The document of a calibration: written, loaded, compared.
template <typename Calibrated>
void WriteDocument(const CalibrationOrder& order, const Holdout& holdout,
                   const DocumentPlaces& places, const std::vector<MachineCalibration>& machines,
                   const Calibrated& calibrated, CalibrationResult& result) {
  result.document = CalibratedText(order.document, places, machines, result.classification,
                                   NoteOf(order, result));
  const LoadText load = [&order](const std::string& document) {
    return LoadModel(order.plugin,
                     [&] { return PmmlDocument::FromText(document, order.name, order.limits); });
  };
  const TextTable rows = SomeRows(order.holdout);
  const Holdout before = ScoreHoldout(order.loaded, rows, order.actual, order.rules);
  const LoadedModel written = load(result.document);
  const Holdout after = ScoreHoldout(written, rows, order.actual, order.rules);
  if (!calibrated.Confirms(before, after, result)) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: with the calibration written into it, the document does not "
        "score as it should; svmscore doctor may tell what in it is read in two ways",
        order.name));
  }
  if (HasAllVectors(holdout, written)) {
    result.remarks.push_back(
        "every support vector is among the rows: this looks like the data that the model was "
        "trained on, and not like a hold-out; its figures are too good, and so are the "
        "probabilities or intervals that it gives");
  }
  result.records = UpdateRecords(order.loaded, load, order.name, result.document);
}

}  // namespace

bool IsCalibrated(const PmmlDocument& document) {
  return CalibrationNote(document).has_value();
}

std::optional<double> StatedConfidence(const PmmlDocument& document) {
  const std::string note = CalibrationNote(document).value_or("");
  const std::size_t at = note.find(kConfidenceNote);
  if (at == std::string::npos) return std::nullopt;
  const std::size_t begin = at + kConfidenceNote.size();
  const auto stated = ParseNumber(note.substr(begin, note.find(' ', begin) - begin));
  return stated && *stated > 0.0 && *stated < 1.0 ? stated : std::nullopt;
}

CalibrationResult Calibrate(const CalibrationOrder& order) {
  const auto* model = dynamic_cast<const BatchModel*>(order.loaded.model.get());
  if (model == nullptr) {
    throw BadDocument(
        fmt::format("{}: the plug-in tells no decision values of its model", order.name));
  }
  const DocumentPlaces places = FindPlaces(order.document, order.name);
  if (places.machines.size() != model->DecisionCount()) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: the model has {} machines, of which {} are found in its text "
        "under the name SupportVectorMachine",
        order.name, model->DecisionCount(), places.machines.size()));
  }
  CalibrationResult result;
  result.classification =
      order.loaded.output->Targets().GetScheme().method != output::Method::kRegression;
  const auto score = [&] {
    Holdout holdout = ScoreHoldout(order.loaded, order.holdout, order.actual, order.rules);
    RequireUsable(holdout, order.loaded, order.holdout.name);
    TellOfRows(holdout, result);
    return holdout;
  };
  if (result.classification) {
    ClassCalibration calibration(order, *model);
    const Holdout holdout = score();
    calibration.Run(holdout, result);
    WriteDocument(order, holdout, places, calibration.Machines(result), calibration, result);
  } else {
    IntervalCalibration calibration(order, *model);
    const Holdout holdout = score();
    calibration.Run(holdout, result);
    WriteDocument(order, holdout, places, {{0, {}, {}, {}, result.deviation}}, calibration, result);
  }
  return result;
}

}  // namespace svmscore::tools
