// How a model lies in memory for the certified forms: plain data, so that the files of the
// instruction sets can include it without sharing a single function with the rest of the program.
#ifndef SVM_KERNEL_CERTIFIED_LEVEL_VIEW_H_
#define SVM_KERNEL_CERTIFIED_LEVEL_VIEW_H_

#include <cstddef>
#include <cstdint>

#include "svm/kernel/packed/layout.h"

namespace MCSVM_700::certified {

using packed::CaseColumns;
using packed::kBlock;
using packed::KernelFunctionType;

// Vectors whose terms are added in one chain of T; the chains are then added in double.
constexpr std::size_t kGroup = 8;
// Runs begin at multiples of so many vectors: a whole register, and a whole number of groups.
constexpr std::size_t kRunStart = 16;
// Coefficients of a vector that has more than one are rounded up to a multiple of this.
constexpr std::size_t kRowStep = 4;
// Sparse cases whose entries are listed together, and so many whatever their entries.
constexpr std::size_t kListedCases = 256;
constexpr std::size_t kFewListed = 32;

// The fields of one chain of fused multiply-adds: such chains start from 0, and their sums are
// added one after the other. In double the whole dot product is one chain.
template <class T>
constexpr std::size_t kChainFields = sizeof(T) == sizeof(float) ? 32 : SIZE_MAX;

// The coefficients of one sign that a machine has in a run: all terms of a column have one sign,
// so that the sum of their sizes, which the bounds need, is the sum itself.
struct Column {
  std::uint32_t machine;
  double factor;         // what a sum of the run's coefficients is multiplied by: +-2^k
  double size;           // sum of |alpha|, rounded up
  double weighted_size;  // sum of |alpha| (the vector's weighted norm), rounded up
};

// Neighbouring vectors that are used by the same machines with the same signs.
template <class T>
struct Run {
  std::size_t begin;  // positions [begin, end), multiples of kRunStart
  std::size_t end;
  std::size_t column_count;
  std::size_t row;        // coefficients of one vector: 1, or column_count rounded up to kRowStep
  const Column* columns;  // [column_count]
  const T* coefficients;  // [end - begin][row], none negative; |alpha| times a power of two
  double norm;            // the largest ||v - c|| in the run, rounded up
  double weighted_norm;   // the largest sqrt(sum of weight[f] (v[f] - c[f])^2), rounded up
};

// A kernel other than the linear one, in single or double precision. c is `centre` where the
// kernel is the radial basis function, else 0.
template <class T>
struct LevelView {
  KernelFunctionType kernel;
  int degree;  // of a polynomial: 2 or 3
  double gamma;
  double coef0;
  double scale;  // entries of a case are multiplied by this before they are rounded to T

  std::size_t fields;
  std::size_t positions;  // vectors with the gaps between runs, a multiple of kBlock
  std::size_t machines;
  std::size_t widest_row;  // the largest `row`, at least 2
  double norm;             // the largest of all runs

  const double* centre;  // [fields]; null: 0
  const double* weight;  // [fields]: roundings that meet the term of a field; null for sparse ones

  // Dense: v - c, [positions / kBlock][fields][kBlock], 64-byte aligned. Null for a sparse model.
  const T* blocks;
  // Sparse, by field: entry e of [entry_begin[f], entry_begin[f + 1]) is that of the vector at
  // position entry_at[e].
  const std::size_t* entry_begin;
  const std::uint32_t* entry_at;
  const T* entry_value;

  const T* bias;  // [positions], 64-byte aligned: what is added to a dot product
  const Run<T>* runs;
  std::size_t run_count;
  std::size_t chain;  // roundings of one term from its product to a sum in double

  // Of each machine:
  const double* offset;
  const double* size;   // sum of |alpha|, rounded up
  const double* terms;  // how many
};

// The linear kernel, in double.
struct LinearView {
  std::size_t fields;
  std::size_t machines;
  const double* weights;  // [machines][fields]: sum of alpha v
  // Of each machine:
  const double* norm;  // || sum of |alpha v| ||, rounded up
  const double* offset;
  const double* size;
  const double* terms;
};

// Where decision values and their bounds go: those of machine m and case c are
// decisions[m * stride + c] and errors[m * error_stride + c]. The bound is infinite or not a number
// where nothing is certain.
struct Estimates {
  double* decisions;
  double* errors;
  std::size_t stride;
  std::size_t error_stride;
};

// The working memory of one call at a time, 64-byte aligned. G = group_tiles of the call, W = cases
// of a tile.
template <class T>
struct LevelWork {
  T* tiles;         // [G][fields][W], or [fields] for one case
  T* shifts;        // [G][W]: what is added to a sum besides the bias
  T* values;        // [kBlock][W], or [positions] for one case
  double* partial;  // [G][widest_row][W]
  double* totals;   // [G][3][machines][W]: sums, sums of sizes, errors
  double* norms;    // [G][2][W]: ||x - c||, and weighted
  std::size_t group_tiles;
  // Of sparse cases, the entries other than 0: first by field, then by case.
  std::size_t listed_room;       // at least kFewListed * fields
  std::size_t* listed_begin;     // [fields + 1]
  std::uint32_t* listed_case;    // [listed_room]
  double* listed_value;          // [listed_room]
  std::size_t* case_begin;       // [kListedCases + 1]
  std::uint32_t* nonzero_field;  // [listed_room]
  double* nonzero_value;         // [listed_room]
};

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_LEVEL_VIEW_H_
