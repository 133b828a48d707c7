// What single values of Python's mean as cells.
#ifndef PYTHON_SRC_OBJECT_VALUES_H_
#define PYTHON_SRC_OBJECT_VALUES_H_

#include <nanobind/nanobind.h>

namespace svmscore::python {

// Throws "column 'NAME': WHAT", as the exception of that type.
[[noreturn]] void RaiseOfColumn(PyObject* type, nanobind::handle name, const char* what);

enum class ObjectKind { kMissing, kBool, kWhole, kNumber, kText, kMoment };

// None, NaN and what pandas calls NA or NaT are missing values. Throws TypeError, with the column's
// name and the row, for what is no value of a cell. May run the object's own code.
ObjectKind KindOf(PyObject* object, nanobind::handle name, std::size_t row);

// Of kNumber and of kWhole; throw what the object's own conversion raises.
double NumberOf(PyObject* object);
nanobind::object WholeOf(PyObject* object);

// The text that the value would have in a file of cases; a bool is 1 or 0 where `counts_bools`, and
// else true or false. Throws TypeError for a time with a time zone.
nanobind::str TextOf(PyObject* object, ObjectKind kind, nanobind::handle name, bool counts_bools);

}  // namespace svmscore::python

#endif  // PYTHON_SRC_OBJECT_VALUES_H_
