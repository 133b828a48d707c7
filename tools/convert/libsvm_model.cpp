#include "tools/convert/libsvm_model.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "tools/convert/text_lines.h"

namespace svmscore::tools {
namespace {

constexpr auto kModel = ConversionInput::kModel;
constexpr std::int64_t kAnyCount = std::int64_t{1} << 53U;
constexpr const char* kTrainAgain = "copy the whole file again, or write it again by svm-train";

constexpr std::array<std::pair<std::string_view, SvmType>, 5> kTypes = {
    {{"c_svc", SvmType::kCSvc},
     {"nu_svc", SvmType::kNuSvc},
     {"one_class", SvmType::kOneClass},
     {"epsilon_svr", SvmType::kEpsilonSvr},
     {"nu_svr", SvmType::kNuSvr}}};
constexpr std::array<std::pair<std::string_view, LibsvmKernel>, 4> kKernels = {
    {{"linear", LibsvmKernel::kLinear},
     {"polynomial", LibsvmKernel::kPolynomial},
     {"rbf", LibsvmKernel::kRbf},
     {"sigmoid", LibsvmKernel::kSigmoid}}};
// prob_density_marks, of one-class models, serve a probability that has no place in a document.
constexpr std::array<std::string_view, 13> kKeys = {
    "svm_type", "kernel_type", "degree", "gamma", "coef0", "nr_class",          "total_sv",
    "rho",      "label",       "probA",  "probB", "nr_sv", "prob_density_marks"};

// The lines before the vectors.
class Header {
 public:
  // Reads up to the line SV.
  explicit Header(TextLines& lines) {
    while (std::optional<TextLine> line = lines.Next()) {
      const std::string_view key = line->Word();
      if (key == "SV") {
        line->End(key);
        return;
      }
      if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end()) RefuseKey(*line, key);
      const auto [known, added] = lines_.emplace(key, *line);
      if (added) continue;
      line->Refuse(
          fmt::format("{} is given twice, first in line {}", key, known->second.LineNumber()),
          "keep the line that is right");
    }
    lines.RefuseEnd("the file ends before the line SV and the support vectors", kTrainAgain);
  }

  // The rest of the line of that key; nothing where there is none.
  std::optional<TextLine> Find(std::string_view key) const {
    const auto found = lines_.find(key);
    return found == lines_.end() ? std::nullopt : std::optional(found->second);
  }
  TextLine Get(std::string_view key) const {
    if (const std::optional<TextLine> line = Find(key)) return *line;
    throw ConversionError(kModel, 0, fmt::format("there is no line {}", key), kTrainAgain);
  }
  // The numbers of a line, which must be so many.
  std::vector<double> Numbers(std::string_view key, std::size_t count, const char* why) const {
    TextLine line = Get(key);
    std::vector<double> numbers;
    for (std::string_view word = line.Word(); !word.empty(); word = line.Word()) {
      numbers.push_back(line.NumberIn(word, key));
    }
    if (numbers.size() != count) {
      line.Refuse(
          fmt::format("{} has {} numbers, and {} needs {}", key, numbers.size(), why, count),
          kTrainAgain);
    }
    return numbers;
  }

 private:
  [[noreturn]] static void RefuseKey(const TextLine& line, std::string_view key) {
    if (key == "solver_type") {
      line.Refuse("the file is a model of LIBLINEAR", "only models of LIBSVM can be converted");
    }
    line.Refuse(fmt::format("{} is nothing that a model of LIBSVM has", Quoted(key)),
                line.LineNumber() == 1 ? "give the file that svm-train wrote"
                                       : "take the line out, or write the file again by svm-train");
  }

  std::map<std::string_view, TextLine> lines_;
};

template <typename Table>
auto Named(const Header& header, std::string_view key, const Table& table) {
  TextLine line = header.Get(key);
  const std::string_view name = line.Word();
  if (key == "kernel_type" && name == "precomputed") {
    line.Refuse(
        "the kernel is precomputed: its values are not in the model, and PMML has no such kernel",
        "train with another kernel: svm-train -t 0, 1, 2 or 3");
  }
  std::string known;
  for (const auto& [text, value] : table) {
    if (text == name) return value;
    known += fmt::format("{}{}", known.empty() ? "" : ", ", text);
  }
  line.Refuse(fmt::format("the {} is {}", key, Quoted(name)), "it can be " + known);
}

void ReadKernel(const Header& header, LibsvmModel& model) {
  model.kernel = Named(header, "kernel_type", kKernels);
  const auto number = [&header](const char* key) { return header.Numbers(key, 1, "a kernel")[0]; };
  const bool polynomial = model.kernel == LibsvmKernel::kPolynomial;
  if (polynomial) {
    TextLine line = header.Get("degree");
    model.degree = line.Whole("degree", 0, std::numeric_limits<std::int32_t>::max());
    line.End("degree");
  }
  if (polynomial || model.kernel == LibsvmKernel::kSigmoid) model.coef0 = number("coef0");
  if (model.kernel == LibsvmKernel::kLinear) return;
  model.gamma = number("gamma");
  if (model.gamma < 0.0) {
    header.Get("gamma").Refuse("gamma is negative, which svm-train refuses", kTrainAgain);
  }
}

std::int64_t ReadCount(const Header& header, const char* key, std::int64_t most) {
  TextLine line = header.Get(key);
  const std::int64_t count = line.Whole(key, 0, most);
  line.End(key);
  return count;
}

void ReadLabels(const Header& header, std::int64_t classes, LibsvmModel& model) {
  TextLine line = header.Get("label");
  std::set<std::int64_t> known;
  for (std::string_view word = line.Word(); !word.empty(); word = line.Word()) {
    model.labels.push_back(line.WholeIn(word, "label", std::numeric_limits<std::int32_t>::min(),
                                        std::numeric_limits<std::int32_t>::max()));
    if (!known.insert(model.labels.back()).second) {
      line.Refuse(fmt::format("the label {} is given twice", model.labels.back()), kTrainAgain);
    }
  }
  if (model.labels.size() != static_cast<std::size_t>(classes)) {
    line.Refuse(fmt::format("{} labels are given for nr_class {}", model.labels.size(), classes),
                kTrainAgain);
  }
}

void ReadClassSizes(const Header& header, std::int64_t total, LibsvmModel& model) {
  TextLine line = header.Get("nr_sv");
  std::int64_t sum = 0;
  for (std::size_t c = 0; c < model.labels.size(); ++c) {
    const std::int64_t count = line.Whole("nr_sv", 0, kAnyCount);
    if (count > total - sum) {
      line.Refuse(fmt::format("the numbers of nr_sv add up to more than total_sv, {}", total),
                  kTrainAgain);
    }
    sum += count;
    model.class_ends.push_back(static_cast<std::size_t>(sum));
  }
  line.End("nr_sv");
  if (sum == total) return;
  line.Refuse(fmt::format("the numbers of nr_sv add up to {}, and total_sv is {}", sum, total),
              kTrainAgain);
}

void RefuseKeys(const Header& header, std::initializer_list<const char*> keys, SvmType type) {
  for (const char* key : keys) {
    const std::optional<TextLine> line = header.Find(key);
    if (!line) continue;
    line->Refuse(fmt::format("a model of the type {} has no {}", NameOf(type), key),
                 "take the line out, or write the file again by svm-train");
  }
}

void ReadMachines(const Header& header, std::int64_t total, LibsvmModel& model) {
  const std::int64_t classes = ReadCount(header, "nr_class", kAnyCount);
  if (model.IsClassification()) {
    ReadLabels(header, classes, model);
    ReadClassSizes(header, total, model);
    if (classes < 2) {
      header.Get("nr_class")
          .Refuse("the model was trained on one class, which it predicts for every case",
                  "train on cases of two classes at least");
    }
    model.coefficients_each = model.labels.size() - 1;
  } else {
    RefuseKeys(header, {"label", "nr_sv", "probB"}, model.type);
    if (classes != 2) {
      header.Get("nr_class")
          .Refuse(fmt::format("nr_class is {}, and for the type {} it is 2", classes,
                              NameOf(model.type)),
                  kTrainAgain);
    }
  }
  const std::size_t machines = model.coefficients_each * (model.coefficients_each + 1) / 2;
  const std::string why = model.IsClassification()
                              ? fmt::format("a model of {} classes", model.labels.size())
                              : fmt::format("the type {}", NameOf(model.type));
  model.rho = header.Numbers("rho", machines, why.c_str());
  if (model.type == SvmType::kOneClass) return RefuseKeys(header, {"probA"}, model.type);
  if (header.Find("probA")) model.prob_a = header.Numbers("probA", machines, why.c_str());
  if (model.IsRegression()) {
    if (model.prob_a.empty() || model.prob_a[0] >= 0.0) return;
    header.Get("probA").Refuse("probA, the mean size of errors, is negative", kTrainAgain);
  }
  if (header.Find("probA") || header.Find("probB")) {
    header.Get("probA");  // either is of no use without the other
    model.prob_b = header.Numbers("probB", machines, why.c_str());
  }
}

void ReadEntry(const TextLine& line, std::string_view word, std::int32_t& last,
               LibsvmModel& model) {
  const std::size_t colon = word.find(':');
  if (colon == std::string_view::npos) {
    line.Refuse(fmt::format("{} is no feature, such as 3:0.5; a vector has {} before its features",
                            Quoted(word),
                            model.coefficients_each == 1
                                ? "one coefficient"
                                : fmt::format("{} coefficients", model.coefficients_each)),
                kTrainAgain);
  }
  const std::string_view number = word.substr(0, colon);
  if (number == "0") {
    line.Refuse("a feature has the number 0",
                "number the features of the data from 1, and train again");
  }
  const auto index =
      static_cast<std::int32_t>(line.WholeIn(number, "the number of a feature", 1, kMostFeatures));
  if (index <= last) {
    line.Refuse(fmt::format("feature {} comes after feature {}", index, last),
                "write the features in rising order, each once");
  }
  last = index;
  model.largest_index = std::max(model.largest_index, index);
  const double value = line.NumberIn(word.substr(colon + 1), "the value of a feature");
  if (value == 0.0) return;
  model.indices.push_back(index);
  model.values.push_back(value);
}

void ReadVector(TextLine line, LibsvmModel& model) {
  for (std::size_t row = 0; row < model.coefficients_each; ++row) {
    const std::string_view word = line.Word();
    if (word.empty() || word.find(':') != std::string_view::npos) {
      line.Refuse(fmt::format("the support vector has {} coefficients, and {} are needed: one less "
                              "than classes, or one",
                              row, model.coefficients_each),
                  kTrainAgain);
    }
    model.coefficients.push_back(line.NumberIn(word, "a coefficient"));
  }
  std::int32_t last = 0;
  for (std::string_view word = line.Word(); !word.empty(); word = line.Word()) {
    ReadEntry(line, word, last, model);
  }
  model.entry_ends.push_back(model.indices.size());
  ++model.vector_count;
}

}  // namespace

const char* NameOf(SvmType type) {
  const auto* found = std::find_if(kTypes.begin(), kTypes.end(),
                                   [type](const auto& known) { return known.second == type; });
  return found->first.data();  // of a literal, so that a NUL follows
}

LibsvmModel ReadLibsvmModel(std::string_view text) {
  TextLines lines(kModel, text);
  const Header header(lines);
  LibsvmModel model;
  model.type = Named(header, "svm_type", kTypes);
  ReadKernel(header, model);
  const std::int64_t total = ReadCount(header, "total_sv", kAnyCount);
  ReadMachines(header, total, model);
  while (std::optional<TextLine> line = lines.Next()) {
    if (model.vector_count == static_cast<std::size_t>(total)) {
      line->Refuse(fmt::format("there are more support vectors than total_sv, {}", total),
                   kTrainAgain);
    }
    ReadVector(*line, model);
  }
  if (model.vector_count != static_cast<std::size_t>(total)) {
    lines.RefuseEnd(fmt::format("the file ends after {} of {} support vectors: it is cut off",
                                model.vector_count, total),
                    kTrainAgain);
  }
  return model;
}

}  // namespace svmscore::tools
