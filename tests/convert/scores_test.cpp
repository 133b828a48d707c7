// Converted models score as LIBSVM does.
#include <algorithm>
#include <cmath>
#include <locale>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "capi/svmscore.h"
#include "host/text/number_text.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"
#include "tests/convert/trained_model.h"

namespace svmscore_test {
namespace {

using svmscore::app::TemporaryFolder;

// The document that the library makes of a model with so many features.
std::string Convert(const std::string& model, std::size_t features,
                    const std::string& ranges = {}) {
  constexpr svmscore_text kNames[] = {{"a", 1}, {"b", 1}, {"c", 1}, {"d", 1}, {"e", 1}};
  svmscore_convert_options options = SVMSCORE_INIT(svmscore_convert_options);
  options.names = kNames;
  options.name_count = features;
  if (!ranges.empty()) options.ranges = ranges.data();
  options.ranges_length = ranges.size();
  char* document = nullptr;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  const int kind =
      svmscore_convert_libsvm(model.data(), model.size(), &options, &document, &length, &error);
  EXPECT_EQ(kind, SVMSCORE_OK) << FailureOf(error).message;
  std::string text(document == nullptr ? "" : document, length);
  svmscore_text_free(document);
  return text;
}

// Scores cases by the document alone, of which nothing is guessed or lost.
class Converted {
 public:
  explicit Converted(const std::string& document, int mode = SVMSCORE_STRICT) {
    svmscore_load_options load = SVMSCORE_INIT(svmscore_load_options);
    load.mode = mode;
    svmscore_model* model = nullptr;
    svmscore_error* error = nullptr;
    EXPECT_EQ(svmscore_load_memory(document.data(), document.size(), &load, &model, &error),
              SVMSCORE_OK)
        << FailureOf(error).message << document;
    model_.reset(model);
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    options.columns = SVMSCORE_COLUMNS_RAW;
    options.decisions = 1;
    scorer_ = NewScorer(model, &options);
    names_.resize(svmscore_scorer_output_count(scorer_.get()));
    for (std::size_t i = 0; i < names_.size(); ++i) {
      svmscore_output output = SVMSCORE_INIT(svmscore_output);
      svmscore_scorer_get_output(scorer_.get(), i, &output, nullptr);
      names_[i] = StringOf(output.name);
      of_categories_ = of_categories_ || output.of_categories != 0;
    }
  }

  // The outputs by their names, and "label", the text of the predicted category.
  std::map<std::string, double> Score(const Case& values) const {
    std::vector<double> results(names_.size());
    EXPECT_EQ(svmscore_score_numbers(scorer_.get(), values.data(), values.size(), results.data(),
                                     results.size(), nullptr),
              SVMSCORE_OK);
    std::map<std::string, double> outputs;
    for (std::size_t i = 0; i < names_.size(); ++i) outputs[names_[i]] = results[i];
    if (of_categories_) {
      svmscore_text category{};
      svmscore_model_get_category(model_.get(), static_cast<std::size_t>(outputs["prediction"]),
                                  &category, nullptr);
      outputs["label"] = svmscore::ParseNumber(StringOf(category)).value_or(NAN);
    }
    return outputs;
  }

 private:
  Model model_;
  Scorer scorer_;
  std::vector<std::string> names_;
  bool of_categories_ = false;
};

double Sigmoid(double decision, double a, double b) {
  return std::clamp(1.0 / (1.0 + std::exp(decision * a + b)), 1e-7, 1.0 - 1e-7);
}

struct ScoreCase {
  Training training;
  bool scaled;
};

std::vector<ScoreCase> AllCases() {
  std::vector<ScoreCase> all;
  for (const int type : {C_SVC, NU_SVC, ONE_CLASS, EPSILON_SVR, NU_SVR}) {
    const bool classes = type == C_SVC || type == NU_SVC;
    for (int kernel = LINEAR; kernel <= SIGMOID; ++kernel) {
      for (const int count : classes ? std::vector{2, 3, 5} : std::vector{2}) {
        for (const bool scaled : {false, true}) {
          all.push_back({{type, kernel, false, count}, scaled});
          if (type != ONE_CLASS) all.push_back({{type, kernel, true, count}, scaled});
        }
      }
    }
  }
  return all;
}

std::string NameOf(const ScoreCase& tested) {
  constexpr const char* kTypes[] = {"c_svc", "nu_svc", "one_class", "epsilon_svr", "nu_svr"};
  constexpr const char* kKernels[] = {"linear", "polynomial", "rbf", "sigmoid"};
  const Training& training = tested.training;
  return std::string(kTypes[training.type]) + "_" + kKernels[training.kernel] + "_" +
         std::to_string(training.classes) + (training.probability ? "_probability" : "") +
         (tested.scaled ? "_scaled" : "");
}

void PrintTo(const ScoreCase& tested, std::ostream* out) {
  *out << NameOf(tested);
}

// What svm-scale computes, by the numbers of its file.
struct Scaling {
  std::string text;
  double lower = 0.0, upper = 0.0;
  std::map<std::size_t, std::pair<double, double>> features;
  std::pair<double, double> answers;  // as they were; scaled they are -2 to 3

  double Scaled(std::size_t feature, double value) const {
    const auto found = features.find(feature);
    if (found == features.end()) return 0.0;
    const auto [min, max] = found->second;
    if (value == min) return lower;
    if (value == max) return upper;
    return lower + (upper - lower) * (value - min) / (max - min);
  }
  Case Scaled(const Case& values) const {
    Case scaled;
    for (std::size_t i = 0; i < values.size(); ++i) scaled.push_back(Scaled(i + 1, values[i]));
    return scaled;
  }
};

Scaling RunScale(const Data& data, bool answers) {
  const TemporaryFolder folder;
  folder.Write("data", TextOf(data));
  // LIBSVM's programs write numbers as the locale has them, which this process may have changed.
  svmscore::app::RunShell("unset LD_PRELOAD; '" LIBSVM_SCALE "' -l -0.7 -u 1.3 " +
                          std::string(answers ? "-y -2 3 " : "") + "-s '" + folder.Path("ranges") +
                          "' '" + folder.Path("data") + "'");
  Scaling scaling;
  scaling.text = svmscore::app::ReadFile(folder.Path("ranges"));
  std::istringstream file(scaling.text);
  file.imbue(std::locale::classic());
  std::string section;
  file >> section;
  double skipped = 0.0;
  if (answers) {
    file >> skipped >> skipped >> scaling.answers.first >> scaling.answers.second >> section;
  }
  file >> scaling.lower >> scaling.upper;
  std::size_t index = 0;
  for (double min = 0.0, max = 0.0; file >> index >> min >> max;) {
    scaling.features[index] = {min, max};
  }
  return scaling;
}

class Scores : public testing::TestWithParam<ScoreCase> {
 protected:
  void Compare(const Case& values, const Case& seen) const {
    const std::map<std::string, double> got = converted_->Score(values);
    SCOPED_TRACE(testing::PrintToString(values));
    ASSERT_EQ(got.at("status"), 0.0);
    const std::vector<double> decisions = model_->Decisions(seen);
    const double tolerance = 1e-12 * model_->Size(seen);
    if (got.count("label") == 0) return CompareNumber(got, decisions[0], tolerance);
    const std::vector<int> labels =
        GetParam().training.type == ONE_CLASS ? std::vector{1, -1} : model_->Labels();
    std::size_t machine = 0;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      for (std::size_t j = i + 1; j < labels.size(); ++j, ++machine) {
        // A vote for the earlier label is what lies above 0.
        const std::string name =
            "decision(" + std::to_string(labels[j]) + "|" + std::to_string(labels[i]) + ")";
        EXPECT_NEAR(got.at(name), decisions[machine], tolerance) << name;
      }
    }
    if (!GetParam().training.probability) {
      EXPECT_EQ(got.at("label"), model_->Predict(seen));
      return;
    }
    CompareProbabilities(got, labels, decisions, seen);
  }

  void CompareNumber(const std::map<std::string, double>& got, double decision,
                     double tolerance) const {
    EXPECT_NEAR(got.at("decision"), decision, tolerance);
    double factor = 1.0;
    double offset = 0.0;
    if (GetParam().scaled) {
      factor = (scaling_.answers.second - scaling_.answers.first) / 5.0;
      offset = scaling_.answers.first + 2.0 * factor;
      tolerance = tolerance * factor + 1e-14 * std::fabs(scaling_.answers.second);
    }
    const double expected = decision * factor + offset;
    EXPECT_NEAR(got.at("prediction"), expected, tolerance);
    if (!GetParam().training.probability) return;
    const double scale = model_->ProbA(0) * factor;
    EXPECT_NEAR(got.at("stddev"), scale, 1e-14 * scale);
    EXPECT_NEAR(got.at("ci_upper"), expected - std::log(0.05) * scale, tolerance + 1e-9 * scale);
  }

  void CompareProbabilities(const std::map<std::string, double>& got,
                            const std::vector<int>& labels, const std::vector<double>& decisions,
                            const Case& seen) const {
    std::vector<double> expected;
    const double predicted = model_->Predict(seen, expected);
    if (labels.size() == 2) {  // LIBSVM's own comes out of an iteration that ends early
      const double first = Sigmoid(decisions[0], model_->ProbA(0), model_->ProbB(0));
      expected = {first, 1.0 - first};
    } else {
      const auto [least, most] = std::minmax_element(expected.begin(), expected.end());
      if (*most - *least < 1e-9) return;  // LIBSVM did not begin to iterate
      EXPECT_EQ(got.at("label"), predicted);
    }
    for (std::size_t c = 0; c < labels.size(); ++c) {
      EXPECT_NEAR(got.at("probability(" + std::to_string(labels[c]) + ")"), expected[c], 1e-7);
    }
    const auto best = std::max_element(expected.begin(), expected.end()) - expected.begin();
    EXPECT_EQ(got.at("label"), labels[static_cast<std::size_t>(best)]);
  }

  std::unique_ptr<TrainedModel> model_;
  std::unique_ptr<Converted> converted_;
  Scaling scaling_;
};

TEST_P(Scores, AreThoseOfTheModel) {
  const auto& [training, scaled] = GetParam();
  Data data = MakeData(training);
  const Data raw = data;
  if (scaled) {
    scaling_ = RunScale(data, training.type >= EPSILON_SVR);
    for (Case& values : data.cases) values = scaling_.Scaled(values);
    if (training.type >= EPSILON_SVR) {
      const auto [min, max] = scaling_.answers;
      for (double& answer : data.answers) answer = -2.0 + 5.0 * (answer - min) / (max - min);
    }
  }
  model_ = std::make_unique<TrainedModel>(training, data);
  converted_ = std::make_unique<Converted>(Convert(model_->Text(), kFeatures, scaling_.text));
  for (std::size_t i = 0; i < raw.cases.size(); ++i) {
    Case values = raw.cases[i];
    Compare(values, scaled ? scaling_.Scaled(values) : values);
    for (double& value : values) value = value * 1.5 - 0.25;  // also outside the ranges
    values[i % 3] = 0.0;
    Compare(values, scaled ? scaling_.Scaled(values) : values);
  }
}

INSTANTIATE_TEST_SUITE_P(Convert, Scores, testing::ValuesIn(AllCases()),
                         [](const auto& tested) { return NameOf(tested.param); });

// A decision value of 0 is a vote for the second label, and votes that tie are won by the label
// that comes first in the model.
TEST(ConvertTies, AreDecidedAsLibsvmDoes) {
  const TrainedModel two(
      "svm_type c_svc\nkernel_type linear\nnr_class 2\ntotal_sv 2\nrho 0\nlabel 5 3\nnr_sv 1 1\n"
      "SV\n1 1:1\n-1 1:-1\n");
  const Converted pair(Convert(two.Text(), 1));
  for (const double x : {0.0, -0.0, 1e-300, -1e-300, 1.0, -1.0}) {
    EXPECT_EQ(pair.Score({x}).at("label"), two.Predict({x})) << x;
  }
  // Each label gets one vote where x is above 0.
  const TrainedModel three(
      "svm_type c_svc\nkernel_type linear\nnr_class 3\ntotal_sv 3\nrho 0 0 0\nlabel 7 -2 4\n"
      "nr_sv 1 1 1\nSV\n1 -1 1:1\n0 1 1:1\n0 0 1:1\n");
  const Converted ring(Convert(three.Text(), 1));
  for (const double x : {1.0, 0.0, -1.0}) {
    EXPECT_EQ(ring.Score({x}).at("label"), three.Predict({x})) << x;
  }
  const TrainedModel one(
      "svm_type one_class\nkernel_type linear\nnr_class 2\ntotal_sv 1\nrho 0.5\nSV\n1 1:1\n");
  const Converted outlier(Convert(one.Text(), 1));
  for (const double x : {0.25, 0.5, 0.75}) {
    EXPECT_EQ(outlier.Score({x}).at("label"), one.Predict({x})) << x;
  }
}

// Numbers that readers take for something else, and what is hard to write in a document.
TEST(ConvertOddModels, ScoreAsLibsvmDoes) {
  const std::vector<std::pair<const char*, std::string>> models = {
      {"no vectors",
       "svm_type epsilon_svr\nkernel_type rbf\ngamma 1\nnr_class 2\ntotal_sv 0\n"
       "rho -1.5\nSV\n"},
      {"vectors of zeros",
       "svm_type nu_svr\nkernel_type rbf\ngamma 0.5\nnr_class 2\ntotal_sv 2\n"
       "rho 0.25\nSV\n1 \n-0.5 1:0 2:1e-3\n"},
      {"coef0 of -1",
       "svm_type nu_svr\nkernel_type sigmoid\ngamma 0.5\ncoef0 -1\nnr_class 2\n"
       "total_sv 1\nrho 0.25\nSV\n1 1:0.5 2:2\n"},
      {"degree 0",
       "svm_type nu_svr\nkernel_type polynomial\ndegree 0\ngamma 0.5\ncoef0 0\n"
       "nr_class 2\ntotal_sv 1\nrho 0.25\nSV\n1.5 1:0.5 2:2\n"},
  };
  for (const auto& [name, text] : models) {
    SCOPED_TRACE(name);
    const TrainedModel model(text);
    const Converted converted(Convert(text, 2), text.find("coef0 -1") == std::string::npos
                                                    ? SVMSCORE_STRICT
                                                    : SVMSCORE_DEFAULT);
    for (const Case& values : {Case{0.0, 0.0}, Case{1.0, -2.0}, Case{-3.5, 0.125}}) {
      EXPECT_NEAR(converted.Score(values).at("prediction"), model.Decisions(values)[0], 1e-15);
    }
  }
}

}  // namespace
}  // namespace svmscore_test
