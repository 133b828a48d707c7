#include "bench/libsvm_model.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace bench {
namespace {

using MCSVM_700::packed::KernelFunctionType;

KernelFunctionType FormOf(const svm_parameter& parameter) {
  switch (parameter.kernel_type) {
    case LINEAR:
      return KernelFunctionType::kLinear;
    case POLY:
      return KernelFunctionType::kPolynomial;
    case RBF:
      return KernelFunctionType::kRadialBasis;
    default:
      return KernelFunctionType::kSigmoid;
  }
}

void ReadCases(const std::string& path, Workload& workload) {
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) {
    std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
    std::exit(1);
  }
  workload.fields = std::stoul(line);
  while (std::getline(file, line)) {
    std::vector<double>& row = workload.rows.emplace_back(workload.fields, 0.0);
    std::vector<svm_node>& nodes = workload.nodes.emplace_back();
    std::istringstream text(line);
    char colon;
    svm_node node;
    while (text >> node.index >> colon >> node.value) {
      nodes.push_back(node);
      row[static_cast<std::size_t>(node.index - 1)] = node.value;
    }
    nodes.push_back({-1, 0.0});
  }
  workload.columns.resize(workload.fields * workload.cases());
  for (std::size_t c = 0; c < workload.cases(); ++c) {
    for (std::size_t f = 0; f < workload.fields; ++f) {
      workload.columns[f * workload.cases() + c] = workload.rows[c][f];
    }
  }
}

// The machine of classes i and j sums the vectors of i with the coefficients of row j - 1, then
// those of j with row i: LIBSVM's layout.
void AddMachines(Workload& workload) {
  const svm_model& model = *workload.model;
  const auto add = [&](std::size_t row, std::size_t begin, std::size_t end) {
    for (std::size_t v = begin; v < end; ++v) {
      workload.coefficients.back().push_back(model.sv_coef[row][v]);
      workload.vectors.back().push_back(static_cast<std::uint32_t>(v));
    }
  };
  const auto begin_machine = [&] {
    workload.coefficients.emplace_back();
    workload.vectors.emplace_back();
  };
  if (model.param.svm_type != C_SVC) {
    begin_machine();
    add(0, 0, static_cast<std::size_t>(model.l));
    return;
  }
  const auto classes = static_cast<std::size_t>(model.nr_class);
  std::vector<std::size_t> start(1, 0);
  for (std::size_t k = 0; k < classes; ++k) {
    start.push_back(start.back() + static_cast<std::size_t>(model.nSV[k]));
  }
  for (std::size_t i = 0; i < classes; ++i) {
    for (std::size_t j = i + 1; j < classes; ++j) {
      begin_machine();
      add(j - 1, start[i], start[i + 1]);
      add(i, start[j], start[j + 1]);
    }
  }
}

}  // namespace

double Workload::Fill() const {
  std::size_t filled = 0;
  for (const auto& vector : positions) filled += vector.size();
  return static_cast<double>(filled) / static_cast<double>(positions.size() * fields);
}

std::unique_ptr<Workload> Load(const std::string& folder, const std::string& name) {
  auto workload = std::make_unique<Workload>();
  workload->name = name;
  workload->model.reset(svm_load_model((folder + "/" + name + ".model").c_str()));
  if (workload->model == nullptr) return nullptr;
  ReadCases(folder + "/" + name + ".cases", *workload);
  const svm_model& model = *workload->model;
  for (int v = 0; v < model.l; ++v) {
    workload->positions.emplace_back();
    workload->entries.emplace_back();
    for (const svm_node* node = model.SV[v]; node->index != -1; ++node) {
      workload->positions.back().push_back(node->index - 1);
      workload->entries.back().push_back(node->value);
    }
  }
  AddMachines(*workload);
  MCSVM_700::PackedInput& input = workload->input;
  input.kernel.type = FormOf(model.param);
  input.kernel.gamma = model.param.gamma;
  input.kernel.coef0 = model.param.coef0;
  input.kernel.degree = model.param.degree;
  input.fields = workload->fields;
  for (std::size_t v = 0; v < workload->positions.size(); ++v) {
    input.vectors.push_back({&workload->positions[v], &workload->entries[v]});
  }
  for (std::size_t m = 0; m < workload->machines(); ++m) {
    input.machines.push_back({workload->coefficients[m], workload->vectors[m], -model.rho[m]});
  }
  return workload;
}

}  // namespace bench
