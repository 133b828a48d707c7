// svmscore._core: the C interface for the Python package, and nothing that the package could do in
// Python without being slow.
#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/vector.h>

#include "call.h"
#include "columns.h"
#include "convert.h"
#include "explainer.h"
#include "model.h"
#include "scorer.h"

namespace nb = nanobind;
using svmscore::python::Columns;
using svmscore::python::Explainer;
using svmscore::python::LoadSettings;
using svmscore::python::Model;
using svmscore::python::Scorer;

NB_MODULE(_core, module) {
  module.doc() = "The C interface of svmscore; use the package svmscore instead.";
  module.def("set_exception_maker", &svmscore::python::SetExceptionMaker, nb::arg("maker"));
  module.def("version", &svmscore_version);
  module.def("instruction_set", &svmscore_instruction_set);
  module.def("doctor", &svmscore::python::Doctor, nb::arg("document"), nb::arg("settings"),
             nb::arg("cases").none(), nb::arg("expected").none(), nb::arg("actual").none(),
             nb::arg("tolerance"));
  module.def("calibrate", &svmscore::python::Calibrate, nb::arg("document"), nb::arg("settings"),
             nb::arg("cases"), nb::arg("actual"), nb::arg("confidence"));
  module.def("convert_libsvm", &svmscore::python::ConvertLibsvm, nb::arg("model"),
             nb::arg("ranges").none(), nb::arg("names").none(), nb::arg("labels").none());

  nb::class_<LoadSettings>(module, "LoadSettings")
      .def(nb::init<int, int, nb::dict, nb::str>(), nb::arg("mode"), nb::arg("missing_policy"),
           nb::arg("limits"), nb::arg("name"));

  nb::class_<Model>(module, "Model")
      .def(nb::init<nb::bytes, const LoadSettings&>(), nb::arg("document"), nb::arg("settings"))
      .def("facts", &Model::Facts)
      .def("inputs", &Model::Inputs)
      .def("machines", &Model::Machines)
      .def("categories", &Model::Categories)
      .def("remarks", &Model::Remarks)
      .def("describe", &Model::Describe)
      .def("verify", &Model::Verify, nb::arg("cases").none(), nb::arg("expected").none(),
           nb::arg("tolerance"));

  nb::class_<Columns>(module, "Columns")
      .def(nb::init<std::size_t>(), nb::arg("row_count"))
      .def_prop_ro("row_count", &Columns::RowCount)
      .def("add_numbers", &Columns::AddNumbers, nb::arg("name"), nb::arg("array"),
           nb::arg("missing").none() = nb::none())
      .def("add_matrix", &Columns::AddMatrix, nb::arg("names"), nb::arg("array"))
      .def("add_codes", &Columns::AddCodes, nb::arg("name"), nb::arg("codes"), nb::arg("values"))
      .def("add_objects", &Columns::AddObjects, nb::arg("name"), nb::arg("values"),
           nb::arg("counts_bools") = false)
      .def("add_texts", &Columns::AddTexts, nb::arg("name"), nb::arg("offsets"),
           nb::arg("offset_bits"), nb::arg("data"), nb::arg("validity").none(), nb::arg("offset"));

  nb::class_<Explainer>(module, "Explainer")
      .def(nb::init<const Model&, const Columns*, std::uint64_t, std::uint64_t, std::uint64_t,
                    int>(),
           nb::arg("model"), nb::arg("background").none(), nb::arg("rows"), nb::arg("seed"),
           nb::arg("orders"), nb::arg("threads"))
      .def("facts", &Explainer::Facts)
      .def("explain", &Explainer::Explain, nb::arg("columns"), nb::arg("decisions"),
           nb::arg("values"), nb::arg("errors").none(), nb::arg("gradients").none(),
           nb::arg("status"));

  nb::class_<Scorer>(module, "Scorer")
      .def(nb::init<const Model&, int, bool, int, bool>(), nb::arg("model"), nb::arg("choice"),
           nb::arg("decisions"), nb::arg("threads"), nb::arg("reasons"))
      .def("outputs", &Scorer::Outputs)
      .def("score", &Scorer::Score, nb::arg("columns"), nb::arg("wanted"))
      .def("score_rows", &Scorer::ScoreRows, nb::arg("columns"), nb::arg("start"), nb::arg("count"),
           nb::arg("wanted"))
      .def("score_stream", &Scorer::ScoreStream, nb::arg("stream"), nb::arg("wanted"))
      .def("score_case", &Scorer::ScoreCase, nb::arg("values"));
}
