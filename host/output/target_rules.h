// What a document's Targets do to a model's results.
#ifndef HOST_OUTPUT_TARGET_RULES_H_
#define HOST_OUTPUT_TARGET_RULES_H_

#include <optional>
#include <string>
#include <vector>

#include "host/model/batch_model.h"
#include "host/model/score_model.h"
#include "host/model/score_result.h"
#include "host/model/score_status.h"
#include "host/output/note.h"
#include "host/output/scheme.h"
#include "host/text/api.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"

namespace svmscore::output {

// "did you mean "CATEGORY"?" for a text that is none of the target's categories, or nothing.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
std::string MeantCategory(const MCZandor_850::ScoreDictVar& target, const std::string& text);

// One case after scoring.
// [one thread] for each object. Owns: the model its texts, the result or batch its percentages.
// Lives: percentages, until the next case or batch. Fails: never.
struct Outcome {
  enum class Ending {
    kPredicted,
    kPredictedByDefault,  // inputs are missing, and the document says what to predict then
    kMissing,             // inputs are missing: there is no prediction
    kFailed,              // an invalid input, an outcome that cannot be decided, or a failure on
                          // missing inputs that was asked for
  };
  Ending ending = Ending::kFailed;
  long status = 0;              // 0, or the code of the case's failure
  transform::Value prediction;  // of the target's type; missing if absent
  int category = -1;            // of the target; -1 where the prediction is not one of them
  double confidence = -1.0;     // -1.0 if absent
  double std_dev = -1.0;        // likewise; in units of the target
  bool has_interval = false;
  double lower = 0.0;
  double upper = 0.0;
  // A percentage by its position in the result; -1.0 if absent.
  SVMSCORE_HOST_API double PercentAt(std::size_t position) const;

  bool IsPredicted() const { return ending <= Ending::kPredictedByDefault; }

  // Where the percentages are: in a classification result, or in a column of a batch. Both null
  // unless the model predicted a category.
  const MCZandor_850::ScoreClsResult* result = nullptr;
  const double* percents = nullptr;  // of the first category
  std::size_t percent_stride = 0;
};

// A regression's value p becomes clamp(p, min, max) * rescaleFactor + rescaleConstant, then a whole
// number where castInteger says so, and finally a value y of the target's type: floor(y + 0.5) for
// an integer, the nearest float for a float, y itself for a double. A standard deviation is
// multiplied by the absolute value of the factor, and the bounds of an interval are rescaled by the
// same factor and constant; they are neither clamped nor made whole. A default prediction of the
// document is used as it is.
//
// [any thread], each with its own outcomes. Owns: these rules what they return. Lives: the model,
// longer than this object; what is returned, as long as this object. Fails: never.
class SVMSCORE_HOST_API TargetRules {
 public:
  // Reads the Target element for the model's target. Appends to `notes`; `faults` says what happens
  // to values that are not allowed. With `as_written` the percentages stay in the order in which
  // the model's results hold them, and results that are not finite are results; without, a case
  // fails (90027) whose value or probabilities are not finite, and an interval that is not finite
  // is not there. [one thread] for each document. Lives: the document for the
  // call. Fails: SSException for values that are refused; std::bad_alloc.
  TargetRules(const MCZandor_850::ScoreModel& model, const xercesc::DOMDocument* document,
              std::vector<Note>& notes, Faults faults, bool as_written);

  // `result` may be null where `status` is an error. Allocates nothing.
  Outcome Finish(const MCScore::MCStatus& status, const MCZandor_850::ScoreResult* result) const;
  // One case of a batch that the model has scored.
  Outcome Finish(const BatchResults& results, std::size_t position) const;
  // The percentage of a category of the target as the model computes it, -1.0 where it computes
  // none. With two categories and the extension, a result holds the percentage of the response
  // category first, whichever that is; this finds the right one.
  double PercentOf(const Outcome& outcome, std::size_t category) const {
    return outcome.PercentAt(second_responds_ ? 1 - category : category);
  }
  // The share or probability of a category of the target; nothing where the model's scheme computes
  // none, or the case has no prediction.
  std::optional<double> ShareOf(const Outcome& outcome, int category) const;
  // How to show a category of the target to people.
  const std::string& DisplayOf(int category) const {
    return displays_[static_cast<std::size_t>(category)];
  }
  // A regression's value, or a bound of its interval, by rescaleFactor and rescaleConstant alone.
  double Scale(double raw) const;
  double ScaleFactor() const { return factor_; }
  // A category of the target as a value of its type.
  const transform::Value& CategoryValue(int category) const {
    return categories_[static_cast<std::size_t>(category)];
  }
  const MCZandor_850::ScoreDictVar& Target() const { return *target_; }
  const Scheme& GetScheme() const { return scheme_; }

 private:
  enum class Cast { kNone, kRound, kCeiling, kFloor };

  void ReadSteps(const xercesc::DOMElement* element, std::vector<Note>& notes);
  void ReadLimits(const xercesc::DOMElement* element);
  void ReadCast(const xercesc::DOMElement* element);
  void ReadCategories(const xercesc::DOMElement* element, std::vector<Note>& notes);
  // The prior probability that `value` declares; nothing if absent.
  std::optional<double> PriorOf(const xercesc::DOMElement* value, std::vector<Note>& notes) const;
  void ReadDefault(const xercesc::DOMElement* element, std::vector<Note>& notes);
  transform::Value OfTargetType(double number) const;
  void FindResponse(const xercesc::DOMElement* model_element);
  transform::Value Finished(double raw) const;
  // Of a case whose status is an error.
  Outcome FinishFailed(long status) const;
  void FinishNumber(double raw, double std_dev, Outcome& outcome) const;
  void FinishInterval(double lower, double upper, Outcome& outcome) const;
  void PredictDefault(Outcome& outcome) const;
  // Fails a case whose result is not finite, where that is asked for.
  void RequireFinite(Outcome& outcome) const;

  const MCZandor_850::ScoreModel* model_;
  const MCZandor_850::ScoreDictVar* target_;
  Faults faults_;
  Scheme scheme_;
  transform::Arena pool_;

  std::optional<double> min_;
  std::optional<double> max_;
  double factor_ = 1.0;
  double constant_ = 0.0;
  Cast cast_ = Cast::kNone;

  std::vector<transform::Value> categories_;  // the target's, of its type
  std::vector<int> first_equal_;              // for each category: the first that equals it
  std::vector<std::string> displays_;         // for each category
  std::vector<double> priors_;                // for each category, with the sum 1; or empty
  // What is predicted where inputs are missing; missing where the document does not say.
  transform::Value default_;
  int default_category_ = -1;
  bool second_responds_ = false;
  bool finite_only_ = false;
};

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_TARGET_RULES_H_
