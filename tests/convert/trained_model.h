// Small models that LIBSVM trains, and what it says of cases.
#ifndef TESTS_CONVERT_TRAINED_MODEL_H_
#define TESTS_CONVERT_TRAINED_MODEL_H_

#include <memory>
#include <string>
#include <vector>

#include <libsvm/svm.h>

namespace svmscore_test {

// A case by its features 1, 2, ...
using Case = std::vector<double>;

// What svm-train is asked for.
struct Training {
  int type = C_SVC;
  int kernel = RBF;
  bool probability = false;
  int classes = 2;  // of a classification
  double coef0 = 0.5;
};

struct Data {
  std::vector<Case> cases;
  std::vector<double> answers;
};
// Made up, the same each time: kFeatures numbers a case, a third of them 0, the last the same in
// all. The answers are classes, whose labels are not in order, or numbers.
inline constexpr std::size_t kFeatures = 5;
Data MakeData(const Training& training);
// As LIBSVM's programs read it.
std::string TextOf(const Data& data);

// A model as svm_save_model wrote it and svm_load_model read it.
class TrainedModel {
 public:
  TrainedModel(const Training& training, const Data& data);
  // The model of a text.
  explicit TrainedModel(std::string text);

  const std::string& Text() const { return text_; }
  std::size_t Machines() const;
  std::vector<int> Labels() const;
  // [machines]
  std::vector<double> Decisions(const Case& values) const;
  // The sizes of all terms of all machines together, in proportion to which sums may differ.
  double Size(const Case& values) const;
  // What svm-predict predicts, without and with -b 1; the latter fills `probabilities`.
  double Predict(const Case& values) const;
  double Predict(const Case& values, std::vector<double>& probabilities) const;
  // Of a pair, or of a regression.
  double ProbA(std::size_t machine) const { return model_->probA[machine]; }
  double ProbB(std::size_t machine) const { return model_->probB[machine]; }

 private:
  void Load();

  struct Freed {
    void operator()(svm_model* model) const { svm_free_and_destroy_model(&model); }
  };
  std::string text_;
  std::unique_ptr<svm_model, Freed> model_;
};

}  // namespace svmscore_test

#endif  // TESTS_CONVERT_TRAINED_MODEL_H_
