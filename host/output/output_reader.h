// Reading the output fields of a document.
#ifndef HOST_OUTPUT_OUTPUT_READER_H_
#define HOST_OUTPUT_OUTPUT_READER_H_

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "host/output/output_plan.h"
#include "host/transform/definitions.h"
#include "host/transform/expression.h"

namespace svmscore::output {

// Fills a plan, and is the scope of its expressions. A name means the first of these that exists:
// an earlier output field, the prediction (by the target's name), a derived field that hides an
// input, a field of the mining schema, any other derived field, any other field of the dictionary.
class OutputReader : public transform::Scope {
 public:
  OutputReader(const MCZandor_850::ScoreModel& model, const xercesc::DOMDocument* document,
               Faults faults, OutputPlan& plan);

  void Read();
  std::optional<transform::Field> Find(const std::string& name) override;

 private:
  using Element = xercesc::DOMElement;

  // Whether the element declares an output field, whose name is noted.
  bool IsField(const Element* element, std::size_t position);
  void ReadField(const Element* element);
  void AddField(OutputField field, OutputPlan::Step step);
  // The expression child, or null; puts Decisions into `step`.
  const Element* FindExpression(const Element* element, OutputPlan::Step& step);
  void ReadFeature(const Element* element, bool has_expression, OutputField& field,
                   OutputPlan::Step& step);
  void ReadCategory(const Element* element, OutputField& field, OutputPlan::Step& step);
  void CheckReach(const Element* element, OutputField& field);
  std::optional<FieldType> TypeOf(const Element* element, const OutputField& field) const;
  void ReadOrder(const Element* element, const OutputField& field);
  // Leaves the field empty and notes the reason.
  void LeaveEmpty(const Element* element, OutputField& field, const std::string& reason,
                  const std::string& meant = {});

  transform::Field FieldOfTarget() const;
  transform::Field FieldOfInput(const MCZandor_850::ScoreDictVar& var);
  transform::Field FieldOfDerived(const MCZandor_850::ScoreDictVar& var);
  int NewSlot() { return static_cast<int>(plan_.slot_count_++); }
  int SlotOfActual();

  const MCZandor_850::ScoreModel& model_;
  const Element* root_;
  const Element* model_element_;
  Faults faults_;
  OutputPlan& plan_;
  transform::Definitions definitions_;
  std::int64_t computed_ = 0;  // expressions evaluated for a case
  std::unordered_set<std::string> schema_;
  std::unordered_map<std::string, std::size_t> positions_;  // of all output fields
  std::vector<transform::Field> known_;  // the output fields read so far, for later ones
  std::unordered_map<const MCZandor_850::ScoreDictVar*, transform::Field> read_;
  const Element* current_ = nullptr;
};

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_OUTPUT_READER_H_
