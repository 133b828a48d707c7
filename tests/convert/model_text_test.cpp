// Models, ranges and names that cannot be converted are refused with a line and a remedy, whatever
// they hold.
#include <cctype>
#include <functional>
#include <random>

#include <gmock/gmock.h>

#include "capi/svmscore.h"
#include "host/load/loader.h"
#include "host/model/ss_exception.h"
#include "tests/capi/columns.h"
#include "tools/convert/libsvm_document.h"

namespace svmscore::tools {
namespace {

using testing::HasSubstr;

// Line 1 is svm_type; the vectors begin in line 14.
constexpr const char* kModel =
    "svm_type c_svc\nkernel_type polynomial\ndegree 2\ngamma 0.5\ncoef0 1\nnr_class 3\n"
    "total_sv 4\nrho 0.1 -0.2 3e-1\nlabel 3 1 2\nprobA -1 -2 -3\nprobB 0.1 0 -0.1\n"
    "nr_sv 2 1 1\nSV\n0.5 -1 1:1 3:0.25 \n1 0.25 2:-1 \n-1.5 1 1:2 2:3 \n-0.25 -1 4:0.5 \n";
constexpr const char* kRegression =
    "svm_type epsilon_svr\nkernel_type rbf\ngamma 0.5\nnr_class 2\ntotal_sv 2\nrho 0.5\n"
    "probA 0.75\nSV\n0.5 1:1 3:0.25\n-0.5 2:-1\n";
constexpr const char* kRanges = "x\n-1 1\n1 0 2\n2 -1 3\n3 0 0.5\n";

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return text.replace(at, what.size(), by);
}

struct Refusal {
  const char* what;  // of the text is replaced
  std::string by;
  std::size_t line;  // of the error; 0 for none
  const char* told;
};

void ExpectRefusal(const std::string& model, const LibsvmOptions& options, ConversionInput input,
                   const Refusal& expected) {
  SCOPED_TRACE(expected.told);
  try {
    LibsvmToPmml(model, options);
    ADD_FAILURE() << "it is converted";
  } catch (const ConversionError& error) {
    EXPECT_EQ(error.Input(), input);
    EXPECT_EQ(error.Line(), expected.line) << error.what();
    EXPECT_THAT(error.what(), HasSubstr(expected.told));
    EXPECT_FALSE(error.Remedy().empty());
    EXPECT_LT(error.Sentence().size(), 300U);
  }
}

TEST(ConvertModelText, IsRefusedWithItsLine) {
  const std::vector<Refusal> refusals = {
      {"svm_type c_svc", "<?xml version=\"1.0\"?>", 1, "nothing that a model of LIBSVM has"},
      {"svm_type c_svc", "solver_type L2R_LR", 1, "LIBLINEAR"},
      {"svm_type c_svc\n", "", 0, "there is no line svm_type"},
      {"c_svc", "c_svm", 1, "it can be c_svc, nu_svc, one_class, epsilon_svr, nu_svr"},
      {"polynomial", "precomputed", 2, "PMML has no such kernel"},
      {"polynomial", "poly", 2, "it can be linear, polynomial, rbf, sigmoid"},
      {"degree 2\n", "", 0, "there is no line degree"},
      {"degree 2", "degree 2.5", 3, "no whole number from 0"},
      {"degree 2", "degree -1", 3, "no whole number from 0"},
      {"gamma 0.5", "gamma nan", 4, "\"nan\", which is no number"},
      {"gamma 0.5", "gamma NaN", 4, "nothing can be computed"},
      {"gamma 0.5", "gamma -0.5", 4, "negative"},
      {"gamma 0.5", "gamma 0.5 1", 4, "gamma has 2 numbers"},
      {"gamma 0.5", "gamma 0.5\ngamma 0.5", 5, "given twice, first in line 4"},
      {"gamma 0.5", "gama 0.5", 4, "\"gama\" is nothing"},
      {"coef0 1", "coef0 1e400", 5, "nothing can be computed"},
      {"nr_class 3", "nr_class 2", 9, "3 labels are given for nr_class 2"},
      {"nr_class 3", "nr_class 100000000000", 9, "3 labels"},
      {"nr_class 3", "nr_class three", 6, "no whole number"},
      {"total_sv 4", "total_sv 5", 12, "add up to 4, and total_sv is 5"},
      {"total_sv 4", "total_sv 3", 12, "more than total_sv, 3"},
      {"total_sv 4", "total_sv -4", 7, "no whole number"},
      {"rho 0.1 -0.2 3e-1", "rho 0.1 -0.2", 8,
       "rho has 2 numbers, and a model of 3 classes needs 3"},
      {"label 3 1 2", "label 3 1 3", 9, "the label 3 is given twice"},
      {"label 3 1 2", "label 3 1 2.5", 9, "no whole number"},
      {"probA -1 -2 -3", "probA -1 -2", 10, "probA has 2 numbers"},
      {"probA -1 -2 -3\n", "", 0, "there is no line probA"},
      {"probB 0.1 0 -0.1\n", "", 0, "there is no line probB"},
      {"nr_sv 2 1 1", "nr_sv 2 1", 12, "nr_sv is missing"},
      {"nr_sv 2 1 1", "nr_sv 2 1 1 0", 12, "followed by \"0\""},
      {"nr_sv 2 1 1", "nr_sv 9007199254740992 9007199254740992 1", 12, "more than total_sv"},
      {"SV\n", "SV 1\n", 13, "followed by \"1\""},
      {"0.5 -1 1:1", "0.5 1:1", 14, "1 coefficients, and 2 are needed"},
      {"0.5 -1 1:1", "0.5 -1 2 1:1", 14, "\"2\" is no feature, such as 3:0.5"},
      {"0.5 -1 1:1", "0.5 -inf 1:1", 14, "no number"},
      {"1:1 3:0.25", "1:1 1:0.25", 14, "feature 1 comes after feature 1"},
      {"1:1 3:0.25", "3:1 1:0.25", 14, "feature 1 comes after feature 3"},
      {"1:1 3:0.25", "0:1 3:0.25", 14, "number the features of the data from 1"},
      {"1:1 3:0.25", "1:1 2147483647:0.25", 14, "no whole number from 1 to 1000000"},
      {"1:1 3:0.25", "1:1 3:", 14, "no number"},
      {"1:1 3:0.25", "1:1 3:0x10", 14, "no number"},
      {"1:1 3:0.25", "1:1 3:1,5", 14, "no number"},
      {"-0.25 -1 4:0.5 \n", "", 16, "after 3 of 4 support vectors"},
      {"4:0.5 \n", "4:0.5 ", 17, "the last line has no end"},
      {"4:0.5 \n", "4:0.5 \n0.5 1 1:1\n", 18, "more support vectors than total_sv"},
      {"SV\n0.5 -1 1:1 3:0.25 \n1 0.25 2:-1 \n-1.5 1 1:2 2:3 \n-0.25 -1 4:0.5 \n", "", 12,
       "before the line SV"},
  };
  for (const Refusal& refusal : refusals) {
    ExpectRefusal(Replaced(kModel, refusal.what, refusal.by), {}, ConversionInput::kModel, refusal);
  }
  const std::vector<Refusal> of_regressions = {
      {"epsilon_svr", "one_class", 7, "a model of the type one_class has no probA"},
      {"nr_class 2", "nr_class 3", 4, "for the type epsilon_svr it is 2"},
      {"rho 0.5", "rho 0.5\nlabel 1 2", 7, "the type epsilon_svr has no label"},
      {"probA 0.75", "probA -0.75", 7, "negative"},
      {"total_sv 2", "total_sv 1000000000000", 10, "after 2 of 1000000000000 support vectors"},
  };
  for (const Refusal& refusal : of_regressions) {
    ExpectRefusal(Replaced(kRegression, refusal.what, refusal.by), {}, ConversionInput::kModel,
                  refusal);
  }
  ExpectRefusal("", {}, ConversionInput::kModel, {"", "", 0, "before the line SV"});
  ExpectRefusal(
      "svm_type c_svc\nkernel_type linear\nnr_class 1\ntotal_sv 0\nrho\nlabel 4\nnr_sv 0\nSV\n", {},
      ConversionInput::kModel, {"", "", 3, "trained on one class"});
}

TEST(ConvertRanges, AreRefusedWithTheirLine) {
  const std::vector<Refusal> refusals = {
      {"x\n", "z\n", 1, "\"z\" is where x or y should be"},
      {"x\n", "y\n-1 1\n0 10\nx\n", 1, "the model is no regression"},
      {"-1 1\n", "1 -1\n", 2, "not below the upper one"},
      {"-1 1\n", "-1\n", 2, "missing"},
      {"-1 1\n", "-1 1 1\n", 2, "followed by"},
      {"-1 1\n", "-1.7e308 1.7e308\n", 2, "wider than any number"},
      {"1 0 2\n", "0 0 2\n", 3, "no whole number from 1"},
      {"2 -1 3\n", "1 -1 3\n", 4, "feature 1 comes after feature 1"},
      {"2 -1 3\n", "2 3 -1\n", 4, "above the largest"},
      {"2 -1 3\n", "2 nan 3\n", 4, "no number"},
      {"3 0 0.5\n", "3 0 0.5", 5, "no end"},
      {"x\n-1 1\n1 0 2\n2 -1 3\n3 0 0.5\n", "y\n-1 1\n", 2, "before the range of answers"},
  };
  for (const Refusal& refusal : refusals) {
    const std::string ranges = Replaced(kRanges, refusal.what, refusal.by);
    LibsvmOptions options;
    options.ranges = ranges;
    ExpectRefusal(kModel, options, ConversionInput::kRanges, refusal);
  }
}

TEST(ConvertNames, AreRefusedWhereTheyDoNotFit) {
  const auto of_names = [](std::vector<std::string> names) {
    LibsvmOptions options;
    options.names = std::move(names);
    return options;
  };
  const auto of_labels = [](std::vector<std::string> labels) {
    LibsvmOptions options;
    options.labels = std::move(labels);
    return options;
  };
  const std::vector<std::tuple<const char*, LibsvmOptions, ConversionInput, const char*>> cases = {
      {kModel, of_names({"a", "b"}), ConversionInput::kNames,
       "2 features are named, and there is a"},
      {kModel, of_names({"a", "b", "a", "d"}), ConversionInput::kNames, "given twice"},
      {kModel, of_names({"a", "b", "", "d"}), ConversionInput::kNames, "is empty"},
      {kModel, of_names({"a", "b", "\x01", "d"}), ConversionInput::kNames, "cannot hold"},
      {kModel, of_names({"a", "b", "\xC3", "d"}), ConversionInput::kNames, "is not UTF-8"},
      {kModel, of_labels({"p", "q"}), ConversionInput::kLabels, "the model has 3: 3, 1, 2"},
      {kModel, of_labels({"p", "q", "p"}), ConversionInput::kLabels, "given twice"},
      {kRegression, of_labels({"p"}), ConversionInput::kLabels, "a regression has no labels"},
      {"svm_type nu_svr\nkernel_type linear\nnr_class 2\ntotal_sv 0\nrho 1\nSV\n",
       {},
       ConversionInput::kNames,
       "name the features"},
  };
  for (const auto& [model, options, input, told] : cases) {
    ExpectRefusal(model, options, input, {"", "", 0, told});
  }
}

TEST(ConvertModelText, MayHaveLinesOfWindows) {
  const auto of_windows = [](std::string text) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
      text.insert(at, 1, '\r');
    }
    return text;
  };
  const std::string ranges = of_windows(kRanges);
  LibsvmOptions options, plain;
  options.ranges = ranges;
  plain.ranges = kRanges;
  EXPECT_EQ(LibsvmToPmml(of_windows(kModel), options), LibsvmToPmml(kModel, plain));
}

TEST(ConvertedDocument, HoldsWhatOtherReadersNeed) {
  LibsvmOptions options;
  options.names = {"a<b", "tab\there", "x", "target", "more"};
  options.labels = {"\"yes\"", "no & no", "7"};
  options.ranges = kRanges;
  const std::string document = LibsvmToPmml(kModel, options);
  for (const char* part : {
           "<DataField name=\"a&lt;b\" optype=\"continuous\" dataType=\"double\"/>",
           "<DataField name=\"tab&#9;here\"",
           // The names that are free.
           "<MiningField name=\"target_\" usageType=\"target\"/>",
           "<FieldRef field=\"x_scaled\"/>",
           "dataType=\"string\">\n   <Value value=\"&quot;yes&quot;\"/>\n   <Value value=\"no "
           "&amp; no\"/>",
           // A decision value above 0 is the first label's: the side of the alternate category.
           "<SupportVectorMachine targetCategory=\"no &amp; no\" "
           "alternateTargetCategory=\"&quot;yes&quot;\">",
           "<ResponseCategory response=\"&quot;yes&quot;\" nonResponse=\"no &amp; no\"/>",
           "<Coefficients numberOfCoefficients=\"3\" absoluteValue=\"-0.1\">",
           "<PolynomialKernelType gamma=\"0.5\" coef0=\"1\" degree=\"2\"/>",
           "<REAL-SparseArray n=\"5\">\n     <Indices>1 3</Indices>\n     <REAL-Entries>1 0.25<",
       }) {
    EXPECT_THAT(document, HasSubstr(part));
  }
  EXPECT_THAT(document, testing::Not(HasSubstr("maxWins")));
  // What only later versions of LIBSVM write is left out.
  const std::string outlier =
      "svm_type one_class\nkernel_type linear\nnr_class 2\ntotal_sv 1\nrho 0.5\nSV\n1 1:1\n";
  EXPECT_EQ(LibsvmToPmml(Replaced(outlier, "SV\n", "prob_density_marks 0.1 0.2\nSV\n"), {}),
            LibsvmToPmml(outlier, {}));
  // Whole labels are numbers.
  EXPECT_THAT(LibsvmToPmml(kModel, {}), HasSubstr("optype=\"categorical\" dataType=\"integer\""));
}

// Every damaged model is either refused with a line, or makes a document that loads.
TEST(ConvertModelText, MayBeDamagedInAnyWay) {
  std::mt19937 random(3);
  const auto below = [&random](std::size_t count) { return random() % count; };
  constexpr const char* kPieces[] = {"0",  "-1",   "1e999", "nan", ":", " ",
                                     "\n", "\r\n", "77",    "SV",  "y", "x",
                                     "\t", "\xFF", "1:1",   "-",   ".", "rho"};
  int converted = 0;
  for (int round = 0; round < 6000; ++round) {
    std::string model = round % 3 == 0 ? kRegression : kModel;
    std::string ranges = kRanges;
    std::string& damaged = round % 5 == 0 ? ranges : model;
    for (std::size_t times = 1 + below(2); times > 0; --times) {
      const std::size_t at = below(damaged.size());
      const std::string piece = kPieces[below(std::size(kPieces))];
      switch (below(4)) {
        case 0:
          damaged.erase(at, 1 + below(8));
          break;
        case 1:
          damaged.insert(at, piece);
          break;
        case 2:
          damaged.replace(at, 1 + below(2), piece);
          break;
        default:  // a piece of it once more, elsewhere
          damaged.insert(below(damaged.size()), damaged.substr(at, below(30)));
      }
      if (damaged.empty()) damaged = "\n";
    }
    LibsvmOptions options;
    if (round % 2 == 0 || round % 5 == 0) options.ranges = ranges;
    try {
      const std::string document = LibsvmToPmml(model, options);
      if (++converted % 8 != 0) continue;
      svmscore_model* loaded = nullptr;
      svmscore_error* error = nullptr;
      EXPECT_EQ(svmscore_load_memory(document.data(), document.size(), nullptr, &loaded, &error),
                SVMSCORE_OK)
          << svmscore_test::FailureOf(error).message << "\n"
          << model << ranges;
      svmscore_model_free(loaded);
    } catch (const ConversionError& error) {
      EXPECT_FALSE(error.Sentence().empty() || error.Remedy().empty());
    }
  }
  EXPECT_GT(converted, 300);
}

// The C function tells an error as the others do.
TEST(ConvertLibsvm, TellsKindPlaceAndRemedy) {
  svmscore_convert_options options = SVMSCORE_INIT(svmscore_convert_options);
  const svmscore_text label{"a", SVMSCORE_NUL_ENDED};
  char* document = nullptr;
  svmscore_error* error = nullptr;
  const auto convert = [&](const std::string& model) {
    error = nullptr;
    svmscore_convert_libsvm(model.data(), model.size(), &options, &document, nullptr, &error);
    return svmscore_test::FailureOf(error);
  };
  svmscore_test::Failure failure = convert(Replaced(kModel, "gamma 0.5", "gamma -1"));
  EXPECT_EQ(failure.kind, SVMSCORE_DOCUMENT);
  EXPECT_EQ(failure.place, "line 4");
  EXPECT_THAT(failure.message, HasSubstr("(line 4). "));
  options.ranges = "x\n1 0\n";
  options.ranges_length = SVMSCORE_NUL_ENDED;
  EXPECT_EQ(convert(kModel).place, "ranges, line 2");
  options.ranges = "";
  EXPECT_EQ(convert(kModel).place, "ranges");
  options.ranges = nullptr;
  options.labels = &label;
  options.label_count = 1;
  failure = convert(kModel);
  EXPECT_EQ(failure.kind, SVMSCORE_ARGUMENT);
  EXPECT_EQ(failure.place, "options.labels");
  options.labels = nullptr;
  EXPECT_EQ(convert(kModel).kind, SVMSCORE_ARGUMENT);
  EXPECT_EQ(svmscore_convert_libsvm(nullptr, 0, nullptr, &document, nullptr, nullptr),
            SVMSCORE_ARGUMENT);
  EXPECT_EQ(document, nullptr);
}

}  // namespace
}  // namespace svmscore::tools
