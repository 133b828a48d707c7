// How a packed model lies in memory: plain data, so that the files of the instruction sets can
// include it without sharing a single function with the rest of the program.
#ifndef SVM_KERNEL_PACKED_LAYOUT_H_
#define SVM_KERNEL_PACKED_LAYOUT_H_

#include <cstddef>
#include <cstdint>

#include "host/model/instruction_set.h"
#include "svm/constants/kernel_type.h"

namespace MCSVM_700::packed {

// Vectors of one block of the dense layout. A multiple of every vector width.
constexpr std::size_t kBlock = 32;
// Cases of a sparse model that are taken from their columns together.
constexpr std::size_t kSparseCases = 32;

using SVMConst::KernelFunctionType;
using svmscore::Isa;

// Neighbouring vectors of the pool that the same machines use.
struct Segment {
  std::size_t begin;  // positions in the pool, [begin, end)
  std::size_t end;
  std::size_t machine_count;
  std::size_t row;               // entries of one row: 1, or machine_count rounded up to the lanes
  const std::uint32_t* machine;  // [machine_count]
  // [end - begin][row]. 0 where a machine does not use the vector, and in the padding.
  const double* coefficients;
};

// A machine whose terms do not ascend in the pool.
struct Chain {
  std::uint32_t machine;
  std::size_t count;
  const std::uint32_t* vectors;  // positions in the pool, in the order of the terms
  const double* coefficients;
};

// Cases in columns: entry f of case c is entries[f * stride + c].
struct CaseColumns {
  const double* entries;
  std::size_t stride;
};

// Decision values in columns: that of machine m for case c is values[m * stride + c].
struct DecisionColumns {
  double* values;
  std::size_t stride;
};

struct Work;

struct ModelView {
  SVMConst::KernelParameters kernel;
  int whole_degree;    // the degree where the vector form of pow can compute it, else 0
  bool vector_values;  // the vector form of exp or tanh, if the kernel has one, may be used
  bool gaps;           // some coefficient in a segment means "not used"

  std::size_t fields;
  std::size_t vectors;         // of the pool
  std::size_t padded_vectors;  // the same, rounded up to whole blocks
  std::size_t machines;
  std::size_t group_tiles;  // tiles of cases that share one pass over the vectors, at least 1
  // Dense: [ceil(vectors / 32)][fields][32], 64-byte aligned. Null for a sparse model.
  const double* dense;
  // Sparse, by field: entry e of [column_begin[f], column_begin[f + 1]) is that of the vector
  // entry_vector[e]; its value and, rounded as a term of a distance is, the value's square.
  const std::size_t* column_begin;
  const std::uint32_t* entry_vector;
  const double* entry_value;
  const double* entry_square;

  const Segment* segments;  // in the order of the pool
  std::size_t segment_count;
  const Chain* chains;
  std::size_t chain_count;
  const double* offsets;  // [machines], added last

  // Vectors that cannot be packed, ascending. Their lanes hold zeros; plain_value gives their
  // kernel value for the first case of `x`.
  const std::uint32_t* plain_vectors;
  std::size_t plain_count;
  const void* plain_context;
  double (*plain_value)(const void* context, Work& work, CaseColumns x, std::uint32_t vector);
};

// The working memory of one call at a time. Buffers are 64-byte aligned; `lanes` are those of the
// instruction set, T = tile lanes.
struct Work {
  double* values;   // [vectors rounded up to 32] or, for tiles, [that][T] where there are chains
  double* tiles;    // [group_tiles][fields][T]: cases, lane by lane
  double* sums;     // [group_tiles][machines][T]
  double* rejects;  // [max(group_tiles T, kSparseCases)]: not 0 for a case that the plain
                    // definition must score
  std::uint32_t* nonzero_field;  // [kSparseCases][fields], sparse models only
  double* nonzero_value;         // [kSparseCases][fields]
  double* column;                // [vectors], sparse models only
  void* plain;                   // for plain_value
  Isa ran;                       // set by the packed code that ran last
};

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_LAYOUT_H_
