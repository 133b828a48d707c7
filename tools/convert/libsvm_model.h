// What a text file of LIBSVM holds, as svm-train writes it.
#ifndef TOOLS_CONVERT_LIBSVM_MODEL_H_
#define TOOLS_CONVERT_LIBSVM_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace svmscore::tools {

enum class SvmType { kCSvc, kNuSvc, kOneClass, kEpsilonSvr, kNuSvr };
enum class LibsvmKernel { kLinear, kPolynomial, kRbf, kSigmoid };

// Decision values are sums of coefficient * K(case, vector), less rho. The machines of k classes
// are those of the pairs (0,1), (0,2), ..., (k-2,k-1); a decision value above 0 is a vote for the
// first class of the pair. One-class models and regressions have one machine.
struct LibsvmModel {
  SvmType type = SvmType::kCSvc;
  LibsvmKernel kernel = LibsvmKernel::kLinear;
  std::int64_t degree = 0;
  double gamma = 0.0;
  double coef0 = 0.0;
  std::vector<std::int64_t> labels;     // [classes]; empty unless classification
  std::vector<std::size_t> class_ends;  // [classes]: the vectors of class c end at class_ends[c]
  std::vector<double> rho;              // [machines]
  std::vector<double> prob_a;           // [machines], or empty; a regression's: [1]
  std::vector<double> prob_b;           // [machines], or empty

  std::size_t vector_count = 0;
  std::size_t coefficients_each = 1;    // of a vector: one less than classes, or 1
  std::vector<double> coefficients;     // [vector_count][coefficients_each]
  std::vector<std::size_t> entry_ends;  // [vector_count]: the entries of v end at entry_ends[v]
  std::vector<std::int32_t> indices;    // from 1, ascending within a vector
  std::vector<double> values;           // none is 0
  std::int32_t largest_index = 0;       // also of entries that are 0

  bool IsClassification() const { return type == SvmType::kCSvc || type == SvmType::kNuSvc; }
  bool IsRegression() const { return type == SvmType::kEpsilonSvr || type == SvmType::kNuSvr; }
  double Coefficient(std::size_t vector, std::size_t row) const {
    return coefficients[vector * coefficients_each + row];
  }
};

// As LIBSVM spells the type.
const char* NameOf(SvmType type);

// A feature's number is at most this: a row of a table of cases has at most so many cells.
inline constexpr std::int32_t kMostFeatures = 1000000;

// [any thread] Fails: ConversionError of the model, std::bad_alloc.
LibsvmModel ReadLibsvmModel(std::string_view text);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_LIBSVM_MODEL_H_
