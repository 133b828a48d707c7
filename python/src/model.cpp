#include "model.h"

#include "call.h"

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// What `expectation` points at belongs to the columns.
svmscore_expectation Expect(const Columns& cases, const Columns* expected, double tolerance) {
  svmscore_expectation expectation = SVMSCORE_INIT(svmscore_expectation);
  expectation.cases = cases.All().data();
  expectation.case_column_count = cases.All().size();
  if (expected != nullptr) {
    expectation.expected = expected->All().data();
    expectation.expected_column_count = expected->All().size();
  }
  expectation.row_count = cases.RowCount();
  expectation.tolerance = tolerance;
  return expectation;
}

}  // namespace

LoadSettings::LoadSettings(int mode, int missing_policy, nb::dict limits, nb::str name)
    : name_(Utf8(name)), options_(SVMSCORE_INIT(svmscore_load_options)) {
  for (const auto [key, most] : limits) {
    std::uint64_t number = 0;
    if (!PyUnicode_Check(key.ptr()) || !nb::try_cast(most, number)) {
      PyErr_Format(PyExc_ValueError, "the limit %R is %R, not a whole number from 0 on", key.ptr(),
                   most.ptr());
      throw nb::python_error();
    }
    limit_names_.emplace_back(Utf8(key));
    limits_.push_back({limit_names_.back().c_str(), number});
  }
  options_.mode = mode;
  options_.missing_policy = missing_policy;
  options_.limits = limits_.data();
  options_.limit_count = limits_.size();
  options_.name = name_.data();
  options_.name_length = name_.size();
}

Model::Model(nb::bytes document, const LoadSettings& settings) {
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  const void* data = document.data();
  const std::size_t size = document.size();
  {
    const nb::gil_scoped_release release;
    status = svmscore_load_memory(data, size, settings.Options(), &model, &error);
  }
  Check(status, error);
  model_.reset(model);
}

nb::dict Model::Facts() const {
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_model_get_facts(Get(), &facts, &error), error);
  nb::dict told;
  told["function"] = facts.function;
  told["method"] = facts.method;
  told["percentages"] = facts.percentages;
  told["interval"] = facts.interval != 0;
  told["target"] = Text(facts.target);
  told["target_type"] = Text(facts.target_type);
  told["category_count"] = facts.category_count;
  told["input_count"] = facts.input_count;
  told["needed_count"] = facts.needed_count;
  told["machine_count"] = facts.machine_count;
  told["remark_count"] = facts.remark_count;
  told["sha256"] = Text(facts.sha256);
  return told;
}

nb::list Model::Inputs() const {
  nb::list inputs;
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_model_get_facts(Get(), &facts, &error), error);
  for (std::size_t i = 0; i < facts.input_count; ++i) {
    svmscore_input input = SVMSCORE_INIT(svmscore_input);
    Check(svmscore_model_get_input(Get(), i, &input, &error), error);
    inputs.append(nb::make_tuple(
        Text(input.name), Text(input.type), Text(input.op_type), input.role,
        input.has_replacement != 0 ? nb::object(Text(input.replacement)) : nb::none(),
        Texts(input.categories, input.category_count)));
  }
  return inputs;
}

nb::list Model::Machines() const {
  nb::list machines;
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_model_get_facts(Get(), &facts, &error), error);
  for (std::size_t i = 0; i < facts.machine_count; ++i) {
    svmscore_machine machine = SVMSCORE_INIT(svmscore_machine);
    Check(svmscore_model_get_machine(Get(), i, &machine, &error), error);
    machines.append(nb::make_tuple(Text(machine.target), Text(machine.alternate),
                                   machine.target_index, machine.alternate_index));
  }
  return machines;
}

nb::list Model::Categories() const {
  nb::list categories;
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_model_get_facts(Get(), &facts, &error), error);
  for (std::size_t i = 0; i < facts.category_count; ++i) {
    svmscore_text category{};
    Check(svmscore_model_get_category(Get(), i, &category, &error), error);
    categories.append(Text(category));
  }
  return categories;
}

nb::list Model::Remarks() const {
  nb::list remarks;
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_model_get_facts(Get(), &facts, &error), error);
  for (std::size_t i = 0; i < facts.remark_count; ++i) {
    svmscore_text remark{};
    Check(svmscore_model_get_remark(Get(), i, &remark, &error), error);
    remarks.append(Text(remark));
  }
  return remarks;
}

nb::str Model::Describe() const {
  char* json = nullptr;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  {
    const nb::gil_scoped_release release;
    status = svmscore_describe(Get(), &json, &length, &error);
  }
  Check(status, error);
  return TakeText(json, length);
}

nb::str Model::Verify(const Columns* cases, const Columns* expected, double tolerance) const {
  char* json = nullptr;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  {
    const nb::gil_scoped_release release;
    if (cases == nullptr || expected == nullptr) {
      status = svmscore_verify(Get(), nullptr, &json, &length, &error);
    } else {
      const svmscore_expectation expectation = Expect(*cases, expected, tolerance);
      status = svmscore_verify(Get(), &expectation, &json, &length, &error);
    }
  }
  Check(status, error);
  return TakeText(json, length);
}

nb::str Doctor(nb::bytes document, const LoadSettings& settings, const Columns* cases,
               const Columns* expected, const Columns* actual, double tolerance) {
  char* json = nullptr;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  const void* data = document.data();
  const std::size_t size = document.size();
  {
    const nb::gil_scoped_release release;
    svmscore_expectation expectation{};
    const bool compares = cases != nullptr && (expected != nullptr || actual != nullptr);
    if (compares) expectation = Expect(*cases, expected, tolerance);
    if (compares && actual != nullptr) expectation.actual = actual->All().data();
    status = svmscore_doctor_memory(data, size, settings.Options(),
                                    compares ? &expectation : nullptr, &json, &length, &error);
  }
  Check(status, error);
  return TakeText(json, length);
}

nb::tuple Calibrate(nb::bytes document, const LoadSettings& settings, const Columns& cases,
                    const Columns& actual, double confidence) {
  svmscore_holdout holdout = SVMSCORE_INIT(svmscore_holdout);
  holdout.cases = cases.All().data();
  holdout.case_column_count = cases.All().size();
  holdout.actual = actual.All().data();
  holdout.row_count = cases.RowCount();
  holdout.confidence = confidence;
  char* calibrated = nullptr;
  char* report = nullptr;
  std::size_t size = 0;
  std::size_t length = 0;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  const void* data = document.data();
  const std::size_t given = document.size();
  {
    const nb::gil_scoped_release release;
    status = svmscore_calibrate_memory(data, given, settings.Options(), &holdout, &calibrated,
                                       &size, &report, &length, &error);
  }
  Check(status, error);
  const std::unique_ptr<char, void (*)(char*)> freed(calibrated, svmscore_text_free);
  const nb::str json = TakeText(report, length);
  return nb::make_tuple(nb::bytes(calibrated, size), json);
}

}  // namespace svmscore::python
