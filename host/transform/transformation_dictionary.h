// Derived fields: variables computed from the inputs of a case.
#ifndef HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_
#define HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_

#include <memory>
#include <string>
#include <vector>

#include "host/model/score_case_record.h"
#include "host/model/score_dictionary.h"
#include "host/model/score_value.h"
#include "host/model/ss_exception.h"
#include "host/text/api.h"

namespace svmscore::transform {
class Program;
class Scratch;

// A derived field that is not computed as the document says.
struct Remark {
  enum class Kind {
    kNotComputed,  // a field or a function that nothing needs, and that cannot be computed
    kNotInSchema,  // a field of the model is computed from one that its mining schema leaves out
  };
  Kind kind;
  MCZandor_850::SSException reason;  // with its element
};

}  // namespace svmscore::transform

namespace MCZandor_850 {

class TransformationDictionary;

// A derived field. Rules as for ScoreDictVar.
class SVMSCORE_HOST_API TransformVar : public ScoreDictVar {
 public:
  TransformVar(std::string name, svmscore::OpType op_type, svmscore::FieldType type,
               std::string source);
  ~TransformVar() override;

  // The dictionary field that the derived field is computed from; empty unless there is exactly
  // one.
  const std::string& GetFieldName() const { return source_; }
  // The values of the source field that the derived field encodes: one for an indicator of a
  // category, all keys of a one-column table; empty for others.
  const std::vector<const ScoreValue*>& GetAllEncodedValues() const { return encoded_views_; }
  void AddEncodedValue(std::unique_ptr<ScoreValue> value);

 private:
  std::string source_;
  std::vector<std::unique_ptr<ScoreValue>> encoded_;
  std::vector<const ScoreValue*> encoded_views_;
};

// The derived values of one case, by the case position of a TransformVar and by name.
// [one thread] for each object. Owns: an InputCaseRecord keeps the values of its case; for other
// records they are borrowed from the dictionary's store and returned by the destructor. Lives: the
// dictionary, longer than this object; values, as long as this object while an InputCaseRecord
// does not change. Fails: never, except by returning -1 or null.
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

// Made by PMMLTranslator::HandleTransformationDictionary. Rules as for ScoreDictionary, and:
// Owns: the model that it is handed to. Lives: the inputs' dictionary, longer than this one.
class SVMSCORE_HOST_API TransformationDictionary : public BaseDictionary {
 public:
  // `program` computes the variables added to this dictionary.
  explicit TransformationDictionary(std::unique_ptr<svmscore::transform::Program> program,
                                    std::vector<svmscore::transform::Remark> remarks = {});
  ~TransformationDictionary() override;

  // Null where there is no derived field of that name. [any thread] Fails: never.
  TransformVar* FindDerived(const std::string& name) const;
  // Sets the position of every derived field. [set-up] once, before values are computed. Fails:
  // std::bad_alloc.
  void SetUpDerivedCaseRecord();
  // Computes the derived values of one case, unless an InputCaseRecord still keeps them. `record`
  // may be indexed by position or by name. Never null. REQUIRES: SetUpDerivedCaseRecord was called.
  // [any thread] Owns: the caller. Lives: the record, longer than the result. Fails:
  // std::bad_alloc.
  std::unique_ptr<DerivedCaseRecord> GetValuesForDerivedVars(
      const ScoreCaseRecord* record, const ScoreDictionary* dictionary) const;

  // The derived values of the record's present case, computed unless the record still keeps them.
  // REQUIRES: SetUpDerivedCaseRecord was called.
  // [any thread] Owns: the record. Lives: until the record changes. Fails: std::bad_alloc.
  const svmscore::transform::Scratch& ValuesOf(const InputCaseRecord& record) const;

  const svmscore::transform::Program& GetProgram() const { return *program_; }
  const std::vector<svmscore::transform::Remark>& Remarks() const { return remarks_; }

 private:
  friend class DerivedCaseRecord;
  class Store;

  std::unique_ptr<svmscore::transform::Program> program_;
  std::unique_ptr<Store> store_;  // scratch records between cases
  std::vector<svmscore::transform::Remark> remarks_;
};

}  // namespace MCZandor_850

#endif  // HOST_TRANSFORM_TRANSFORMATION_DICTIONARY_H_
