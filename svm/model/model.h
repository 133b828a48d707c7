// MCZandor_850::SVMModel: the model that a host scores with.
#ifndef SVM_MODEL_MODEL_H_
#define SVM_MODEL_MODEL_H_

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/model/batch_model.h"
#include "host/model/explainable_model.h"
#include "host/model/score_value.h"
#include "host/translate/base_model.h"
#include "svm/kernel/certified/certified_engine.h"
#include "svm/kernel/kernel_function.h"
#include "svm/kernel/packed/packed_engine.h"
#include "svm/model/model_data.h"

namespace MCZandor_850 {

// Set up on one thread by the translator: dictionaries and roles (BaseModel), then the data, then
// SetTargetCategories. After the first case, which fixes the variables' positions in case records,
// scoring only reads the model: any number of threads may score at once.
//
// The stages of scoring report by status and, apart from running out of memory, do not throw. A
// stage that lacks what it works on does nothing and reports success unless it says otherwise.
// Every index that comes from a document is checked before it is used.
class SVMModel : public BaseModel, public svmscore::BatchModel, public svmscore::ExplainableModel {
 public:
  SVMModel();
  ~SVMModel() override;

  // --- Set-up (model_setup.cpp) ---

  // Null is ignored. Replaces and deletes earlier data, and builds from the new data the model
  // type, the vector field variables and the kernel.
  // [set-up] Owns: the model. Lives: until replaced, or as long as the model. Fails:
  // std::bad_alloc.
  void SetSupportVectorMachineModel(SVMModelData* data);
  void SetUpModelType(bool is_classification);
  // Makes the kernel that `data` names, with the parameters of the data that the model holds, and
  // packs the machines for it: what is scored is the data as it is now.
  // [set-up] Lives: `data` for the call. Fails: std::bad_alloc; the status is always success.
  MCScore::MCStatus SetUpSVMKFEvaluate(SVMModelData* data);
  // Finds the variable of every vector field: null where no dictionary knows its name. Fills in the
  // category index of the categorical predictors.
  // [set-up] Lives: the records for the call, the variables as long as their dictionaries. Fails:
  // std::bad_alloc.
  void SetUpVectorField(const std::vector<void*>& fields,
                        const std::vector<VectorFieldType>& types);
  // Tells the dictionary's variables their positions in records laid out as `record`; once only.
  // [set-up] Lives: the record for the call. Fails: what the record throws.
  void SetUpDictVarIndex(const ScoreCaseRecord* record, bool flag);
  // Takes the target variable and its categories from the base's roles.
  // [set-up] Fails: std::bad_alloc.
  void SetTargetCategories();
  // [set-up] Lives: the variable as long as the model. Fails: never.
  void SetTargetVar(const ScoreDictVar* target) { target_var_ = target; }
  // [any thread] Owns: the target variable. Lives: until SetTargetCategories. Fails: never.
  const std::vector<const ScoreValue*>& GetTargetCategories() const { return target_categories_; }
  // [set-up] Fails: never.
  void SetPredictionOnly(bool prediction_only) override { prediction_only_ = prediction_only; }
  // [any thread] Fails: never.
  bool GetPredictionOnly() const override { return prediction_only_; }
  // [any thread] Fails: never.
  int GetModelType() const override { return model_type_; }
  // [any thread] Owns: the caller. Lives: until deleted, its variables as long as the model. Fails:
  // null if there are none; std::bad_alloc.
  BaseDictionary* GetVarsOfRole(VarRole role) const override;

  // --- Scoring one case (score_case.cpp) ---

  // [first case alone] Owns: the caller a result that was null. Lives: the record for the call;
  // what a result of a classification holds as long as the model. Fails: 90027, 90029.
  MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                             bool flag) override;
  // The stages of a case, from here to the diagnosis: [first case alone] Lives: arguments for the
  // call. Fails: by the status, 90027 or 90029; std::bad_alloc.
  //
  // Appends one entry for every vector field: position and value. Stops at the first field whose
  // value is missing without a replacement, or invalid.
  MCScore::MCStatus FillCaseRecord(ScoreResult*& result, const ScoreCaseRecord* record, bool& flag,
                                   std::vector<int>& idx, std::vector<double>& val);
  bool IsMissScoreValue(const ScoreDictVar* var, const ScoreValue* value) const;
  bool IsInvalidScoreValue(const ScoreDictVar* var, const ScoreValue* value) const;
  // Null if absent; owned by the variable.
  const ScoreValue* GetMissReplacement(const ScoreDictVar* var);
  MCScore::MCStatus HandleMissInvalidValue(bool is_missing, bool is_invalid,
                                           const ScoreDictVar* var, ScoreResult*& result);
  // Adds to `value` the decision value of one machine: for k = 0, 1, ... in this order
  // coefficient[k] * K(case, support_vector[k]), and last the machine's absolute value. Does not
  // change `value` where there is no such machine, or the machine is not whole. Always success.
  MCScore::MCStatus ScoreSVMByKernelType(const std::vector<int>& case_idx,
                                         const std::vector<double>& case_val, int machine_index,
                                         double& value);

  // --- Scoring many cases (score_batch.cpp) ---

  std::size_t EntryCount() const override;
  // One for each machine; for a regression, one for the first machine only.
  std::size_t DecisionCount() const override;
  std::pair<int, int> DecisionCategories(std::size_t decision) const override;
  svmscore::VoteLevels Votes() const override;
  const ScoreDictVar* PlainEntry(std::size_t entry) const override;
  void SetFiniteOnly(bool finite_only) override { finite_only_ = finite_only; }
  void FixPositions(const ScoreCaseRecord& record) override;
  MCScore::MCStatus ReadCase(const ScoreCaseRecord& record, bool flag, double* entries,
                             std::size_t stride) override;
  void ScoreBatch(const svmscore::BatchCases& cases,
                  const svmscore::BatchResults& results) override;

  // --- Explaining decision values (explain_model.cpp) ---

  const ScoreDictVar* EntryVariable(std::size_t entry) const override;
  std::string EntryName(std::size_t entry) const override;
  std::vector<double> VectorsAsCases(std::size_t& count) const override;
  std::unique_ptr<svmscore::Explainer> MakeExplainer(
      const svmscore::ExplainerSetUp& setup) const override;

  // --- Deciding a category (classification.cpp) ---

  // Decision values are one per machine, in the machines' order. A winner is a position in the
  // target categories; where a document names an unknown category it may be out of range, and
  // filling the result then reports 90027. Percents are one per target category.
  MCScore::MCStatus ScoreSVMClsModel(const std::vector<int>& idx, const std::vector<double>& val,
                                     ScoreResult*& result);
  MCScore::MCStatus DoVotingForSVMCls(const std::vector<double>& decisions, int& winner,
                                      double& confidence, std::vector<double>& percents);
  // NaN is never the best value; where every value is NaN the winner does not change.
  MCScore::MCStatus VoteForOneAgainstAll(const std::vector<double>& decisions, int& winner,
                                         std::vector<double>& percents);
  MCScore::MCStatus VoteForOneAgainstOne(const std::vector<double>& decisions, int& winner,
                                         double& confidence, std::vector<double>& percents);
  // One machine's vote. On the threshold and for NaN it goes to the alternate category.
  MCScore::MCStatus GetTicketByBinaryClass(const std::vector<double>& decisions, int machine,
                                           int& winner);
  // Adds every machine's vote to its category's ticket; votes for a category outside the list are
  // not counted. 90027 where the machines are not the pairs of the categories.
  MCScore::MCStatus GetTicketsToCategories(const std::vector<double>& decisions,
                                           std::vector<int>& tickets);
  MCScore::MCStatus GetTicketByMultiClass(const std::vector<double>& decisions, int& winner,
                                          double& confidence, std::vector<double>& percents);
  MCScore::MCStatus GetVEMATicketByBinaryClass(const std::vector<double>& decisions, int& winner,
                                               double& confidence, std::vector<double>& percents);
  MCScore::MCStatus GetVEMATicketByMultiClass(const std::vector<double>& decisions, int& winner,
                                              double& confidence, std::vector<double>& percents);
  MCScore::MCStatus FillSVMClsResult(int winner, double confidence,
                                     const std::vector<double>& percents, ScoreResult*& result);
  MCScore::MCStatus FillSVMVEMAClsResult(const std::vector<double>& percents, int winner,
                                         double confidence, ScoreResult*& result);

  // --- Class probabilities (probability.cpp) ---

  // Appends each category's share of the votes to `percents`; the first of the largest shares wins.
  MCScore::MCStatus GetProbablitiesForMultiClass(const std::vector<int>& tickets, int& winner,
                                                 double& confidence, std::vector<double>& percents);
  // Fills r, one row per category: r[i][j] is the probability of i given that it is i or j, within
  // [1e-7, 0.9999999]. Machines are those of the pairs (0,1), (0,2), ..., (1,2), ... in order. Rows
  // that are too short or too long for a square matrix are resized.
  MCScore::MCStatus CalculateClassProbabilites(const std::vector<double>& decisions,
                                               std::vector<std::vector<double>>& r);
  // Couples r into one probability per category; leaves fewer than 3 percents alone.
  // T.-F. Wu, C.-J. Lin, R. C. Weng: Probability estimates for multi-class classification by
  // pairwise coupling, JMLR 5 (2004), second approach.
  MCScore::MCStatus DoMultiProbLearn(std::vector<std::vector<double>>& r,
                                     std::vector<double>& percents);

  // --- Regression (regression.cpp) ---

  MCScore::MCStatus ScoreSVMRegModel(const std::vector<int>& idx, const std::vector<double>& val,
                                     ScoreResult*& result);
  MCScore::MCStatus FillSVMRegResult(double value, ScoreResult*& result);
  MCScore::MCStatus FillSVMVEMARegResult(double value, ScoreResult*& result);
  // 1 / (1 + exp(f a + b)), without overflow. In [0, 1], or NaN.
  double ComputeVEMAZValue(double f, double a, double b);

  // --- Diagnosis (model_display.cpp) ---

  // [any thread] Lives: the stream for the call. Fails: what the stream throws.
  void Display(std::ostream& os) const override;

 private:
  // The working memory of scoring besides a case and its result; one for each thread (workspace.h).
  struct Workspace;
  static Workspace& ThisThreadsWorkspace();

  // GetScore without its catch-all and its trace line.
  MCScore::MCStatus ScoreCase(const ScoreCaseRecord* record, ScoreResult*& result, bool flag);
  // One line in the log for a case that fails.
  static void TraceFailure(const MCScore::MCStatus& status);
  // Entry e of the case goes to entries[e * stride]; `read` becomes their number. `result`, if not
  // null, gets a missing prediction where an input is missing and the policy asks for that.
  MCScore::MCStatus ReadEntries(const ScoreCaseRecord& record, bool flag, ScoreResult** result,
                                double* entries, std::size_t stride, std::size_t& read);
  MCScore::MCStatus MissingStatus(const ScoreDictVar* var);
  // A batch: the decision values of all cases, and each case's results from them (score_batch.cpp).
  // What is computed suffices for `results`: without their decision values, estimates may.
  MCScore::MCStatus DecideBatch(const svmscore::BatchCases& cases,
                                const svmscore::BatchResults& results,
                                MCSVM_700::packed::DecisionColumns decisions);
  static void FailBatch(const MCScore::MCStatus& status, std::size_t count,
                        const svmscore::BatchResults& results);
  MCScore::MCStatus FinishCategory(MCSVM_700::packed::DecisionColumns decisions, std::size_t c,
                                   const svmscore::BatchResults& results);
  MCScore::MCStatus FinishValue(double decision, std::size_t c,
                                const svmscore::BatchResults& results);
  // 90027 for decision values that no result is made of; see SetFiniteOnly.
  MCScore::MCStatus CheckDecisions(const std::vector<double>& decisions) const;
  // Whether `winner` is a position among the target categories that holds one.
  bool IsCategory(int winner) const;
  // Writes the standard deviation of a regression's value and the bounds of its interval; false,
  // with nothing written, where the model computes none.
  bool IntervalAround(double value, double& std_dev, double& lower, double& upper) const;
  // Packs the machines of the data that the model holds; makes no engine where it cannot take them
  // (engine_setup.cpp).
  void SetUpEngine(const SVMConst::KernelParameters& kernel);
  // Whether the data still have the numbers of machines and fields that the engine was made for.
  bool EngineFits() const;
  // How categories follow from decision values.
  MCSVM_700::certified::VoteRule RuleOfVotes() const;
  // The categories that a machine votes for: above its threshold, and otherwise.
  std::pair<int, int> VotesOf(const SVMModelData::ST_SUPPORTVECTORMACHINE& machine) const;
  // Why estimates may not stand for decision values; null where they may.
  const char* WhyExact() const;
  // Whether votes may be certified: estimates were set up, by the rule that the data still have.
  bool CertifiesVotes() const;
  // What is taken from decision values; `shares`: whether the caller asks for shares of votes.
  MCSVM_700::certified::Wanted WantedOf(bool shares) const;
  // The decision values of a case, DecisionCount() of them, by the engine where it takes the case;
  // ScoreSVMByKernelType gives the same bits. With `votes_alone` only the votes and the winner that
  // follow from the values are those of the exact ones.
  MCScore::MCStatus Decide(const std::vector<int>& idx, const std::vector<double>& val,
                           bool votes_alone, std::vector<double>& decisions);
  // The same by ScoreSVMByKernelType, for the first case of `decisions`. 90029 where a machine is
  // not whole.
  MCScore::MCStatus DecideByDefinition(const std::vector<int>& idx, const std::vector<double>& val,
                                       MCSVM_700::packed::DecisionColumns decisions);
  bool EngineTakes(const std::vector<int>& idx, const std::vector<double>& val) const;
  ScoreDictVar* FindVarByName(const std::string& name) const;
  // Null if there is no machine at this position.
  const SVMModelData::ST_SUPPORTVECTORMACHINE* Machine(int index) const;
  void PredictMissing(ScoreResult& result);
  // One row per category that the data counts, each a copy of `percents`, filled from the machines.
  MCScore::MCStatus PairwiseProbabilities(const std::vector<double>& decisions,
                                          const std::vector<double>& percents,
                                          std::vector<std::vector<double>>& r);

  bool prediction_only_ = false;
  bool finite_only_ = false;
  const ScoreDictVar* target_var_ = nullptr;  // the dictionary's
  int model_type_ = 0;
  bool positions_set_ = false;
  std::unique_ptr<SVMModelData> data_;
  std::vector<const ScoreDictVar*> vector_field_vars_;  // the dictionaries'; null where unknown
  std::vector<std::string> target_category_names_;
  std::vector<const ScoreValue*> target_categories_;  // the target variable's
  std::unique_ptr<MCSVM_700::SVMKernelFunction> kernel_;
  std::unique_ptr<const MCSVM_700::PackedEngine> engine_;  // points into data_; null: plain kernels
  std::unique_ptr<const MCSVM_700::CertifiedEngine> certified_;  // points into engine_; may be null
  MCSVM_700::certified::VoteRule certified_rule_;
  // The missing predictions of classification results, which own nothing. Never changed.
  NumericValue missing_number_{NumericValue::GetSysmisValue()};
  StringValue missing_text_{""};
};

}  // namespace MCZandor_850

#endif  // SVM_MODEL_MODEL_H_
