// Models of other programs as documents.
#ifndef PYTHON_SRC_CONVERT_H_
#define PYTHON_SRC_CONVERT_H_

#include <nanobind/nanobind.h>

namespace svmscore::python {

// The document of a model of LIBSVM. `ranges`: the bytes that svm-scale wrote, or None; `names` and
// `labels`: texts, or None for the model's own.
nanobind::str ConvertLibsvm(nanobind::bytes model, nanobind::object ranges, nanobind::object names,
                            nanobind::object labels);

}  // namespace svmscore::python

#endif  // PYTHON_SRC_CONVERT_H_
