#include "object_values.h"

#include <cmath>
#include <cstring>

namespace nb = nanobind;

namespace svmscore::python {
namespace {

bool HasTypeName(PyObject* object, const char* name) {
  return std::strcmp(Py_TYPE(object)->tp_name, name) == 0;
}

bool IsNumpyBool(PyObject* object) {
  return HasTypeName(object, "numpy.bool") || HasTypeName(object, "numpy.bool_");
}

// What pandas writes where there is no value.
bool IsPandasMissing(PyObject* object) {
  const char* name = std::strrchr(Py_TYPE(object)->tp_name, '.');
  name = name == nullptr ? Py_TYPE(object)->tp_name : name + 1;
  return std::strcmp(name, "NAType") == 0 || std::strcmp(name, "NaTType") == 0;
}

ObjectKind KindOfNumber(PyObject* object) {
  return std::isnan(NumberOf(object)) ? ObjectKind::kMissing : ObjectKind::kNumber;
}

}  // namespace

void RaiseOfColumn(PyObject* type, nb::handle name, const char* what) {
  PyErr_Format(type, "column %R: %s", name.ptr(), what);
  throw nb::python_error();
}

double NumberOf(PyObject* object) {
  const double number = PyFloat_AsDouble(object);
  if (number == -1.0 && PyErr_Occurred() != nullptr) throw nb::python_error();
  return number;
}

ObjectKind KindOf(PyObject* object, nb::handle name, std::size_t row) {
  if (object == Py_None) return ObjectKind::kMissing;
  if (PyUnicode_Check(object)) return ObjectKind::kText;
  if (PyBool_Check(object) || IsNumpyBool(object)) return ObjectKind::kBool;
  if (PyFloat_Check(object)) {
    return std::isnan(PyFloat_AS_DOUBLE(object)) ? ObjectKind::kMissing : ObjectKind::kNumber;
  }
  if (PyLong_Check(object)) return ObjectKind::kWhole;
  if (IsPandasMissing(object)) return ObjectKind::kMissing;
  if (PyObject_HasAttrString(object, "isoformat")) return ObjectKind::kMoment;
  if (!PyComplex_Check(object) && !PyObject_HasAttrString(object, "__len__") &&
      !PyObject_HasAttrString(object, "dtype")) {
    // Decimal, Fraction and their like.
    if (Py_TYPE(object)->tp_as_number != nullptr &&
        Py_TYPE(object)->tp_as_number->nb_float != nullptr) {
      return KindOfNumber(object);
    }
  } else if (PyIndex_Check(object) && !PyObject_HasAttrString(object, "__len__")) {
    return ObjectKind::kWhole;  // a whole number of NumPy's
  } else if (HasTypeName(object, "numpy.float32") || HasTypeName(object, "numpy.float16") ||
             HasTypeName(object, "numpy.longdouble") || HasTypeName(object, "numpy.float128")) {
    return KindOfNumber(object);
  }
  PyErr_Format(PyExc_TypeError,
               "column %R, row %zu: a value of type %s is not read; give numbers, texts or bools",
               name.ptr(), row, Py_TYPE(object)->tp_name);
  throw nb::python_error();
}

nb::object WholeOf(PyObject* object) {
  nb::object whole = nb::steal(PyNumber_Index(object));
  if (!whole.is_valid()) throw nb::python_error();
  return whole;
}

nb::str TextOf(PyObject* object, ObjectKind kind, nb::handle name, bool counts_bools) {
  switch (kind) {
    case ObjectKind::kBool:
      if (counts_bools) return nb::str(PyObject_IsTrue(object) == 1 ? "1" : "0");
      return nb::str(PyObject_IsTrue(object) == 1 ? "true" : "false");
    case ObjectKind::kWhole:
      return nb::str(WholeOf(object));
    case ObjectKind::kNumber: {
      const double number = NumberOf(object);
      if (number == std::trunc(number) && std::fabs(number) < 1e15) {
        return nb::str(nb::int_(static_cast<std::int64_t>(number)));
      }
      if (std::isinf(number)) return nb::str(number > 0 ? "INF" : "-INF");
      return nb::str(nb::float_(number));
    }
    case ObjectKind::kMoment: {
      const nb::handle moment(object);
      if (nb::hasattr(moment, "tzinfo") && !moment.attr("tzinfo").is_none()) {
        RaiseOfColumn(
            PyExc_TypeError, name,
            "times with a time zone are not read; convert them to the zone that the model "
            "means and drop the zone, for example by .dt.tz_localize(None)");
      }
      return nb::str(moment.attr("isoformat")());
    }
    default:
      return nb::borrow<nb::str>(object);
  }
}

}  // namespace svmscore::python
