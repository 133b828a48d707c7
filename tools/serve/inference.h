// The Open Inference Protocol, version 2: cases as one tensor for each input, results as one tensor
// for each column.
//
// An input tensor has the shape [n] or [n, 1] and any of the data types FP64, FP32, INT64, INT32,
// BOOL and BYTES. Elements are JSON values, null and NaN are missing, and so is an input without a
// tensor. A cell without a result is null. Outputs that are not asked for by name are all columns
// of the model, and "reason" where a case failed.
//
// [any thread] Lives: `body`, which is rewritten, for the call. Fails: BadRequest, which scores
// nothing; std::bad_alloc.
#ifndef TOOLS_SERVE_INFERENCE_H_
#define TOOLS_SERVE_INFERENCE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/text/field_types.h"
#include "tools/score/result_columns.h"
#include "tools/serve/case_requests.h"
#include "tools/serve/row_run.h"

namespace svmscore::serve {

// The only version of every model.
inline constexpr std::string_view kModelVersion = "1";

// The data types of tensors.
std::string_view TensorTypeOf(DataType type);
std::string_view TensorTypeOf(tools::CellKind kind);

std::string Infer(const ServedModel& model, std::string& body, const RequestBounds& bounds,
                  RowCounts& counts);

// The description of a model's tensors.
std::string InferenceMetadata(const ServedModel& model);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_INFERENCE_H_
