// Derived fields: variables computed from the inputs of a case.
#ifndef HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_
#define HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_

#include <memory>
#include <string>
#include <vector>

#include "host/model/score_case_record.h"
#include "host/model/score_dictionary.h"
#include "host/model/score_value.h"
#include "host/text/api.h"

namespace svmscore::transform {
class Program;
class Scratch;
}  // namespace svmscore::transform

namespace MCZandor_850 {

class TransformationDictionary;

// A derived field.
class SVMSCORE_HOST_API TransformVar : public ScoreDictVar {
 public:
  TransformVar(std::string name, svmscore::OpType op_type, svmscore::FieldType type,
               std::string source);
  ~TransformVar() override;

  // The dictionary field that the derived field is computed from; empty where it is computed from
  // none or from several.
  const std::string& GetFieldName() const { return source_; }
  // The values of the source field that the derived field encodes: one for an indicator of a
  // category, all keys of a one-column table; empty for others. Owned by this variable.
  const std::vector<const ScoreValue*>& GetAllEncodedValues() const { return encoded_views_; }
  void AddEncodedValue(std::unique_ptr<ScoreValue> value);

 private:
  std::string source_;
  std::vector<std::unique_ptr<ScoreValue>> encoded_;
  std::vector<const ScoreValue*> encoded_views_;
};

// The derived values of one case. Those of an InputCaseRecord are kept by the record, which must
// not change meanwhile; others are borrowed from the dictionary's store and given back when this
// object goes. Reads by the case position of a TransformVar, and by name.
class SVMSCORE_HOST_API DerivedCaseRecord : public ScoreCaseRecord {
 public:
  DerivedCaseRecord(const TransformationDictionary& owner,
                    std::unique_ptr<svmscore::transform::Scratch> borrowed);
  DerivedCaseRecord(const TransformationDictionary& owner,
                    const svmscore::transform::Scratch& values);
  ~DerivedCaseRecord() override;

  bool IsIndexedByPosition() const override { return true; }
  int GetPosition(const std::string& name) const override;
  const ScoreValue* GetValue(int position) const override;
  const ScoreValue* GetValue(const std::string& name) const override;
  // The value of the derived field `var`, or of the one that hides the input `var`.
  const ScoreValue* GetDerived(const ScoreDictVar& var) const {
    return var.IsDerived() ? GetValue(var.GetCasePosition()) : GetValue(var.GetName());
  }
  const svmscore::transform::Scratch& Values() const { return *values_; }

 private:
  const TransformationDictionary& owner_;
  std::unique_ptr<svmscore::transform::Scratch> borrowed_;  // null where a record keeps the values
  const svmscore::transform::Scratch* values_;
};

// Made by PMMLTranslator::HandleTransformationDictionary, owned by a model. After set-up any
// number of threads may compute derived values at once.
class SVMSCORE_HOST_API TransformationDictionary : public BaseDictionary {
 public:
  // `program` computes the variables added to this dictionary.
  explicit TransformationDictionary(std::unique_ptr<svmscore::transform::Program> program);
  ~TransformationDictionary() override;

  // Null where there is no derived field of that name.
  TransformVar* FindDerived(const std::string& name) const;
  // Fixes the position of every derived field. Call once, before values are computed.
  void SetUpDerivedCaseRecord();
  // Computes the derived values of one case, unless an InputCaseRecord still keeps them. Needs
  // SetUpDerivedCaseRecord first; never null.
  // `record` may be read by position or by name. Throws nothing but std::bad_alloc.
  std::unique_ptr<DerivedCaseRecord> GetValuesForDerivedVars(
      const ScoreCaseRecord* record, const ScoreDictionary* dictionary) const;

  const svmscore::transform::Program& GetProgram() const { return *program_; }

 private:
  friend class DerivedCaseRecord;
  class Store;

  std::unique_ptr<svmscore::transform::Program> program_;
  std::unique_ptr<Store> store_;  // scratch records between cases
};

}  // namespace MCZandor_850

#endif  // HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_
