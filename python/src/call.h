// Calls of the C interface: what fails becomes an exception of Python's.
#ifndef PYTHON_SRC_CALL_H_
#define PYTHON_SRC_CALL_H_

#include <string>
#include <string_view>

#include <nanobind/nanobind.h>

#include <svmscore.h>

namespace svmscore::python {

// Python's own function that makes the exception: make(kind, code, sentence, place, remedy,
// message). Set once, when the package is imported.
void SetExceptionMaker(nanobind::object maker);

// Throws what the maker makes of the error, and frees it. The caller holds the interpreter lock.
[[noreturn]] void Raise(svmscore_error* error);

// Throws where a call failed. `status` is what the call returned; `error` is a reference because it
// may be passed before the call, in the same expression, has set it.
inline void Check(int status, svmscore_error* const& error) {
  if (status != SVMSCORE_OK) Raise(error);
}

inline nanobind::str Text(svmscore_text text) {
  return nanobind::str(text.data, text.length);
}

inline nanobind::list Texts(const svmscore_text* texts, std::size_t count) {
  nanobind::list list;
  for (std::size_t i = 0; i < count; ++i) list.append(Text(texts[i]));
  return list;
}

// A text that the library allocated, as Python's, and freed.
nanobind::str TakeText(char* text, std::size_t length);

// The UTF-8 of a Python text, which lives as long as that object. Throws ValueError for one that
// holds half of a surrogate pair.
std::string_view Utf8(nanobind::handle text);

}  // namespace svmscore::python

#endif  // PYTHON_SRC_CALL_H_
