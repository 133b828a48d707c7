#include "convert.h"

#include <vector>

#include <svmscore.h>

#include "call.h"

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// Views on the texts of a list, which must live as long.
std::vector<svmscore_text> Views(nb::handle texts) {
  std::vector<svmscore_text> views;
  for (const nb::handle text : texts) {
    const std::string_view utf8 = Utf8(text);
    views.push_back({utf8.data(), utf8.size()});
  }
  return views;
}

}  // namespace

nb::str ConvertLibsvm(nb::bytes model, nb::object ranges, nb::object names, nb::object labels) {
  svmscore_convert_options options = SVMSCORE_INIT(svmscore_convert_options);
  if (!ranges.is_none()) {
    const auto bytes = nb::cast<nb::bytes>(ranges);
    options.ranges = bytes.c_str();
    options.ranges_length = bytes.size();
  }
  std::vector<svmscore_text> names_given, labels_given;
  if (!names.is_none()) {
    names_given = Views(names);
    options.names = names_given.data();
    options.name_count = names_given.size();
  }
  if (!labels.is_none()) {
    labels_given = Views(labels);
    options.labels = labels_given.data();
    options.label_count = labels_given.size();
  }
  const void* data = model.data();
  const std::size_t size = model.size();
  char* document = nullptr;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  {
    const nb::gil_scoped_release release;
    status = svmscore_convert_libsvm(data, size, &options, &document, &length, &error);
  }
  Check(status, error);
  return TakeText(document, length);
}

}  // namespace svmscore::python
