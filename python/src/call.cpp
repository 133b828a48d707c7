#include "call.h"

#include <memory>

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// Kept for as long as the interpreter runs: it may be needed until then.
PyObject* exception_maker = nullptr;

}  // namespace

void SetExceptionMaker(nb::object maker) {
  PyObject* before = exception_maker;
  exception_maker = maker.release().ptr();
  Py_XDECREF(before);
}

void Raise(svmscore_error* error) {
  const std::unique_ptr<svmscore_error, decltype(&svmscore_error_free)> owner(error,
                                                                              &svmscore_error_free);
  const int kind = svmscore_error_kind(error);
  // A null error says that there was no memory for it either.
  if (error == nullptr || kind == SVMSCORE_MEMORY) throw std::bad_alloc();
  const nb::object exception = nb::borrow(exception_maker)(
      kind, svmscore_error_code(error), Text(svmscore_error_sentence(error)),
      Text(svmscore_error_place(error)), Text(svmscore_error_remedy(error)),
      Text(svmscore_error_message(error)));
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  throw nb::python_error();
}

nb::str TakeText(char* text, std::size_t length) {
  const std::unique_ptr<char, decltype(&svmscore_text_free)> owner(text, &svmscore_text_free);
  return nb::str(text, length);
}

std::string_view Utf8(nb::handle text) {
  Py_ssize_t length = 0;
  const char* data = PyUnicode_AsUTF8AndSize(text.ptr(), &length);
  if (data == nullptr) throw nb::python_error();
  return {data, static_cast<std::size_t>(length)};
}

}  // namespace svmscore::python
