#include "tests/convert/trained_model.h"

#include <cmath>
#include <random>
#include <sstream>
#include <stdexcept>

#include "host/text/number_text.h"
#include "tests/app/temporary_folder.h"

namespace svmscore_test {
namespace {

using Nodes = std::vector<svm_node>;

Nodes NodesOf(const Case& values) {
  Nodes nodes;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] != 0.0) nodes.push_back({static_cast<int>(i) + 1, values[i]});
  }
  nodes.push_back({-1, 0.0});
  return nodes;
}

bool IsClassification(const Training& training) {
  return training.type == C_SVC || training.type == NU_SVC;
}

svm_parameter ParametersOf(const Training& training) {
  svm_parameter parameters{};
  parameters.svm_type = training.type;
  parameters.kernel_type = training.kernel;
  parameters.degree = 3;
  parameters.gamma = 0.2;
  parameters.coef0 = training.coef0;
  parameters.cache_size = 10;
  parameters.eps = 1e-3;
  parameters.C = 2.0;
  parameters.nu = 0.3;
  parameters.p = 0.05;
  parameters.shrinking = 1;
  parameters.probability = training.probability ? 1 : 0;
  return parameters;
}

double Power(double base, int exponent) {
  return exponent == 0 ? 1.0 : base * Power(base, exponent - 1);
}

double Kernel(const svm_parameter& parameters, const Case& values, const svm_node* vector) {
  double dot = 0.0;
  Case difference = values;
  for (; vector->index != -1; ++vector) {
    const auto i = static_cast<std::size_t>(vector->index - 1);
    dot += values[i] * vector->value;
    difference[i] -= vector->value;
  }
  double distance = 0.0;
  for (const double d : difference) distance += d * d;
  switch (parameters.kernel_type) {
    case LINEAR:
      return dot;
    case POLY:
      return Power(parameters.gamma * dot + parameters.coef0, parameters.degree);
    case RBF:
      return std::exp(-parameters.gamma * distance);
    default:
      return std::tanh(parameters.gamma * dot + parameters.coef0);
  }
}

}  // namespace

Data MakeData(const Training& training) {
  std::mt19937 random(7);
  const auto uniform = [&random] { return static_cast<double>(random()) / 0x1p31 - 1.0; };
  const int classes = IsClassification(training) ? training.classes : 1;
  constexpr int kLabels[] = {4, -1, 2, 9, 0};
  Data data;
  for (int i = 0; i < 16 * classes; ++i) {
    const int c = i % classes;
    Case values(kFeatures);
    for (std::size_t k = 0; k + 1 < kFeatures; ++k) {
      const double value = uniform() * 3.0 + ((c >> (k % 3)) % 2 == 0 ? 0.5 : -0.7);
      if (random() % 3 != 0) values[k] = value;
    }
    values.back() = 2.5;
    data.answers.push_back(IsClassification(training)
                               ? kLabels[c]
                               : 20.0 + 3.0 * values[0] - values[1] * values[2] + uniform());
    data.cases.push_back(std::move(values));
  }
  return data;
}

std::string TextOf(const Data& data) {
  std::string text;
  for (std::size_t i = 0; i < data.cases.size(); ++i) {
    text += svmscore::FormatNumber(data.answers[i]);
    for (const svm_node& node : NodesOf(data.cases[i])) {
      if (node.index < 0) break;
      text += " " + std::to_string(node.index) + ":" + svmscore::FormatNumber(node.value);
    }
    text += '\n';
  }
  return text;
}

TrainedModel::TrainedModel(const Training& training, const Data& data) {
  std::vector<Nodes> nodes;
  std::vector<svm_node*> pointers;
  std::vector<double> answers = data.answers;
  for (const Case& values : data.cases) nodes.push_back(NodesOf(values));
  for (Nodes& row : nodes) pointers.push_back(row.data());
  const svm_problem problem{static_cast<int>(nodes.size()), answers.data(), pointers.data()};
  const svm_parameter parameters = ParametersOf(training);
  if (const char* wrong = svm_check_parameter(&problem, &parameters)) {
    throw std::runtime_error(wrong);
  }
  svm_set_print_string_function([](const char*) {});
  const std::unique_ptr<svm_model, Freed> trained(svm_train(&problem, &parameters));
  const svmscore::app::TemporaryFolder folder;
  svm_save_model(folder.Path("model").c_str(), trained.get());
  text_ = svmscore::app::ReadFile(folder.Path("model"));
  Load();
}

TrainedModel::TrainedModel(std::string text) : text_(std::move(text)) {
  Load();
}

void TrainedModel::Load() {
  const svmscore::app::TemporaryFolder folder;
  model_.reset(svm_load_model(folder.Write("model", text_).c_str()));
  if (model_ == nullptr) throw std::runtime_error("LIBSVM does not read the model");
}

std::size_t TrainedModel::Machines() const {
  const auto classes = static_cast<std::size_t>(svm_get_nr_class(model_.get()));
  return classes * (classes - 1) / 2;  // a regression's are 2
}

std::vector<int> TrainedModel::Labels() const {
  std::vector<int> labels(static_cast<std::size_t>(svm_get_nr_class(model_.get())));
  svm_get_labels(model_.get(), labels.data());
  return labels;
}

std::vector<double> TrainedModel::Decisions(const Case& values) const {
  std::vector<double> decisions(Machines());
  svm_predict_values(model_.get(), NodesOf(values).data(), decisions.data());
  return decisions;
}

double TrainedModel::Size(const Case& values) const {
  const svm_model& model = *model_;
  double size = 0.0;
  for (std::size_t m = 0; m < Machines(); ++m) size += std::fabs(model.rho[m]);
  for (int v = 0; v < model.l; ++v) {
    const double kernel = std::fabs(Kernel(model.param, values, model.SV[v]));
    for (int row = 0; row + 1 < model.nr_class; ++row) {
      size += std::fabs(model.sv_coef[row][v]) * kernel;
    }
  }
  return size;
}

double TrainedModel::Predict(const Case& values) const {
  return svm_predict(model_.get(), NodesOf(values).data());
}

double TrainedModel::Predict(const Case& values, std::vector<double>& probabilities) const {
  probabilities.resize(static_cast<std::size_t>(svm_get_nr_class(model_.get())));
  return svm_predict_probability(model_.get(), NodesOf(values).data(), probabilities.data());
}

}  // namespace svmscore_test
