// The numbers of a document: vectors, coefficients, kernel.
#ifndef TOOLS_FINDINGS_MODEL_NUMBERS_H_
#define TOOLS_FINDINGS_MODEL_NUMBERS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tools/findings/inspected.h"

namespace svmscore::tools {

struct KernelNumbers {
  enum class Type { kNone, kLinear, kPolynomial, kRadialBasis, kSigmoid };
  Type type = Type::kNone;
  const Element* element = nullptr;
  double gamma = 1.0;
  double coef0 = 1.0;
  double degree = 1.0;

  // The kernel value for the checks. Scores come from the model; their last digits may differ.
  // REQUIRES: x and y have the same length. [any thread] Fails: never.
  double Value(const std::vector<double>& x, const std::vector<double>& y) const;
  // True if every kernel value is within [-1, 1].
  bool IsBounded() const {
    return type == Type::kRadialBasis ? gamma >= 0.0 : type == Type::kSigmoid;
  }
};

struct MachineNumbers {
  const Element* element = nullptr;
  const Element* coefficients_element = nullptr;
  std::string target;
  std::string alternate;
  std::vector<std::size_t> vectors;  // positions among those of the model; parallel to the next
  std::vector<double> coefficients;  // without terms whose coefficient is 0
  double offset = 0.0;
  double threshold = 0.0;
};

struct ModelNumbers {
  std::vector<std::string> fields;           // how findings call the vector positions
  std::vector<std::vector<double>> vectors;  // each as long as `fields`
  std::vector<const Element*> instances;     // parallel to `vectors`
  std::vector<MachineNumbers> machines;
  KernelNumbers kernel;
  bool max_wins = false;
  // The first vector beyond the document's limit of entries; vectors and machines are then empty.
  const Element* beyond_limit = nullptr;
};

// Leaves out the terms that scoring leaves out, and words that are not numbers. [one thread] for
// each document. Lives: the document, longer than the result. Fails: std::bad_alloc.
ModelNumbers ReadNumbers(const Inspected& inspected);

// Whether there is one machine for each pair of the categories that they name, and at least three
// categories. [any thread] Fails: std::bad_alloc.
bool FormPairs(const ModelNumbers& numbers);

// The names as a list in words: at most kMostListed of them, then how many more there are, `more`
// included. [any thread] Fails: std::bad_alloc.
inline constexpr std::size_t kMostListed = 8;
std::string Listed(const std::vector<std::string>& names, std::size_t more = 0);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_MODEL_NUMBERS_H_
