// Documents that together use every part of the product, and generated cases for any of them.
#ifndef TESTS_PROCESS_CASE_SET_H_
#define TESTS_PROCESS_CASE_SET_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "host/model/batch_model.h"
#include "host/model/score_case_record.h"
#include "host/model/score_result.h"
#include "host/output/output_plan.h"

namespace svmscore_test {

// All kernels, dense and sparse vectors, derived fields, texts, outputs, targets, verification:
// paths of files, the examples among them.
const std::vector<std::string>& Documents();
// The plug-in of this build.
const svmscore::Plugin& ThePlugin();
svmscore::LoadedModel Load(const std::string& path);

// All results of one case: the bits of numbers, and hashes of texts. The same cases of the same
// document have equal answers.
struct Answer {
  long status = 0;
  std::vector<std::uint64_t> bits;  // empty where the case failed
  bool operator==(const Answer& other) const = default;
};

// Some good cases, one with invalid values and one without any. One thread.
class CaseSet {
 public:
  // `loaded` must outlive it.
  explicit CaseSet(const svmscore::LoadedModel& loaded);
  ~CaseSet();
  CaseSet(const CaseSet&) = delete;
  CaseSet& operator=(const CaseSet&) = delete;

  // Scores each case alone, then those that a batch accepts as a batch, then computes output
  // fields. Allocates nothing itself; only the product does.
  void Score();
  // One answer for each case alone, then one for each in the batch.
  std::vector<Answer> Answers() const;
  // Whether scoring threw, which it must not, or output fields threw other than std::bad_alloc.
  bool Escaped() const { return escaped_; }

 private:
  struct OneCase;

  void ScoreTogether();

  const svmscore::LoadedModel& loaded_;
  svmscore::BatchModel& batch_;
  bool escaped_ = false;
  std::vector<std::unique_ptr<OneCase>> cases_;
  std::vector<double> entries_;
  std::vector<long> status_;
  std::vector<int> category_;
  std::vector<double> value_;
  std::vector<double> decisions_;
};

}  // namespace svmscore_test

#endif  // TESTS_PROCESS_CASE_SET_H_
