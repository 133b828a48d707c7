#include "scorer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "arrow_stream.h"
#include "call.h"
#include "pace.h"

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// Beyond this, a case takes much longer than handing the interpreter lock over and back.
constexpr std::chrono::microseconds kSlowCase{50};

template <typename Call>
auto WithoutLock(const Call& call) {
  const nb::gil_scoped_release release;
  return call();
}

void AppendWanted(const svmscore_column* columns, const std::vector<std::size_t>& wanted,
                  std::vector<ResultColumn>& results) {
  for (std::size_t i = 0; i < wanted.size(); ++i) results[i].Append(columns[wanted[i]]);
}

nb::list TakeAll(std::vector<ResultColumn>& results) {
  nb::list taken;
  for (ResultColumn& result : results) taken.append(result.Take());
  return taken;
}

[[noreturn]] void RaiseOfStream(ArrowArrayStream& stream, const char* what) {
  const char* why = stream.get_last_error == nullptr ? nullptr : stream.get_last_error(&stream);
  PyErr_Format(PyExc_ValueError, "the table %s: %s", what,
               why == nullptr ? "no reason given" : why);
  throw nb::python_error();
}

// `text` says whether the field takes texts, where a bool is "true" or "false".
svmscore_value ValueOf(nb::handle object, bool text) {
  svmscore_value value{};
  PyObject* const pointer = object.ptr();
  if (pointer == Py_None) return value;
  if (PyUnicode_Check(pointer)) {
    const std::string_view utf8 = Utf8(object);
    value.kind = SVMSCORE_TEXT;
    value.text = utf8.data();
    value.length = utf8.size();
  } else if (PyBool_Check(pointer)) {
    const bool truth = pointer == Py_True;
    if (text) {
      value.kind = SVMSCORE_TEXT;
      value.text = truth ? "true" : "false";
      value.length = std::strlen(value.text);
    } else {
      value.kind = SVMSCORE_NUMBER;
      value.number = truth ? 1.0 : 0.0;
    }
  } else if (PyFloat_Check(pointer)) {
    value.number = PyFloat_AS_DOUBLE(pointer);
    value.kind = std::isnan(value.number) ? SVMSCORE_MISSING : SVMSCORE_NUMBER;
  } else {
    int overflow = 1;
    if (PyLong_Check(pointer)) value.whole = PyLong_AsLongLongAndOverflow(pointer, &overflow);
    if (overflow != 0)
      throw nb::type_error("a case of one row takes float, int, str, bool and None");
    value.kind = SVMSCORE_WHOLE;
  }
  return value;
}

}  // namespace

Scorer::Scorer(const Model& model, int choice, bool decisions, int threads, bool reasons) {
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.columns = choice;
  options.decisions = decisions ? 1 : 0;
  options.threads = threads;
  options.reasons = reasons ? 1 : 0;
  options.category_codes = 1;
  svmscore_scorer* scorer = nullptr;
  svmscore_error* error = nullptr;
  Check(svmscore_scorer_new(model.Get(), &options, &scorer, &error), error);
  scorer_.reset(scorer);
  types_.resize(svmscore_scorer_output_count(scorer));
  for (std::size_t i = 0; i < types_.size(); ++i) {
    svmscore_output output = SVMSCORE_INIT(svmscore_output);
    Check(svmscore_scorer_get_output(scorer, i, &output, &error), error);
    types_[i] = output.type;
  }
  outputs_.resize(types_.size());
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  Check(svmscore_model_get_facts(model.Get(), &facts, &error), error);
  for (std::size_t i = 0; i < facts.input_count; ++i) {
    svmscore_input input = SVMSCORE_INIT(svmscore_input);
    Check(svmscore_model_get_input(model.Get(), i, &input, &error), error);
    texts_.push_back(std::string_view(input.type.data, input.type.length) == "string");
  }
  inputs_.resize(texts_.size());
}

nb::list Scorer::Outputs() const {
  nb::list outputs;
  for (std::size_t i = 0; i < types_.size(); ++i) {
    svmscore_output output = SVMSCORE_INIT(svmscore_output);
    svmscore_error* error = nullptr;
    Check(svmscore_scorer_get_output(scorer_.get(), i, &output, &error), error);
    outputs.append(nb::make_tuple(Text(output.name), output.of_categories != 0, output.type));
  }
  return outputs;
}

std::vector<ResultColumn> Scorer::NewResults(const std::vector<std::size_t>& wanted) const {
  std::vector<ResultColumn> results;
  for (const std::size_t index : wanted) results.emplace_back(types_.at(index));
  return results;
}

nb::list Scorer::Score(const Columns& columns, const std::vector<std::size_t>& wanted) {
  return ScoreRows(columns, 0, columns.RowCount(), wanted);
}

nb::list Scorer::ScoreRows(const Columns& columns, std::size_t start, std::size_t count,
                           const std::vector<std::size_t>& wanted) {
  if (start > columns.RowCount() || count > columns.RowCount() - start) {
    throw nb::index_error("the table has no such rows");
  }
  std::vector<ResultColumn> results = NewResults(wanted);
  const std::size_t end = start + count;
  bool first = true;
  Pace pace;
  // A table without rows is looked at as well: its columns may not fit.
  while (first || start < end) {
    const std::size_t rows = std::min(pace.Rows(), end - start);
    const Clock::time_point begin = Clock::now();
    svmscore_error* error = nullptr;
    int status = SVMSCORE_OK;
    {
      const nb::gil_scoped_release release;
      const std::lock_guard lock(mutex_);
      const std::vector<svmscore_column> block = columns.Rows(start, rows);
      svmscore_table table = SVMSCORE_INIT(svmscore_table);
      status = svmscore_score(scorer_.get(), block.data(), block.size(), rows, &table, &error);
      if (status == SVMSCORE_OK) {
        for (ResultColumn& result : results) {
          if (first) result.Reserve(count);
        }
        AppendWanted(table.columns, wanted, results);
      }
    }
    Check(status, error);
    pace.Took(Clock::now() - begin);
    first = false;
    start += rows;
    HandleSignals();
  }
  return TakeAll(results);
}

nb::list Scorer::ScoreStream(nb::handle capsule, const std::vector<std::size_t>& wanted) {
  auto* stream =
      static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule.ptr(), "arrow_array_stream"));
  if (stream == nullptr) throw nb::python_error();
  if (stream->release == nullptr) {
    throw nb::value_error("the table's stream of rows has been read already");
  }
  std::vector<ResultColumn> results = NewResults(wanted);
  Released<ArrowSchema> schema;
  if (WithoutLock([&] { return stream->get_schema(stream, &schema.value); }) != 0) {
    RaiseOfStream(*stream, "does not tell its columns");
  }
  bool any = false;
  while (true) {
    Released<ArrowArray> batch;
    if (WithoutLock([&] { return stream->get_next(stream, &batch.value); }) != 0) {
      RaiseOfStream(*stream, "cannot be read");
    }
    if (batch.value.release == nullptr) break;
    ScoreBatch(schema.value, batch.value, wanted, results);
    any = true;
  }
  if (!any) {
    // A table without rows is looked at as well: its columns may not fit.
    ArrowArrayStream cases = StreamOfNoRows(schema);
    Released<ArrowArrayStream> scored;
    svmscore_error* error = nullptr;
    Check(svmscore_score_stream(scorer_.get(), &cases, &scored.value, &error), error);
  }
  return TakeAll(results);
}

void Scorer::ScoreBatch(const ArrowSchema& schema, const ArrowArray& batch,
                        const std::vector<std::size_t>& wanted,
                        std::vector<ResultColumn>& results) {
  const auto cases = WithoutLock([&] { return BatchWithoutNotANumber(schema, batch); });
  Pace pace;
  std::int64_t start = 0;
  do {
    const Clock::time_point begin = Clock::now();
    const ArrowArray rows =
        cases.Rows(start, std::min(static_cast<std::int64_t>(pace.Rows()), batch.length - start));
    svmscore_error* error = nullptr;
    const int status = WithoutLock([&] {
      const std::lock_guard lock(mutex_);
      Released<ArrowSchema> scored_schema;
      Released<ArrowArray> scored;
      const int result = svmscore_score_arrow(scorer_.get(), &schema, &rows, &scored_schema.value,
                                              &scored.value, &error);
      for (std::size_t i = 0; result == SVMSCORE_OK && i < wanted.size(); ++i) {
        const std::size_t index = wanted[i];
        results[i].Append(ColumnOfArray(types_[index], *scored.value.children[index]));
      }
      return result;
    });
    Check(status, error);
    HandleSignals();
    pace.Took(Clock::now() - begin);
    start += rows.length;
  } while (start < batch.length);
}

nb::list Scorer::ScoreCase(nb::list values) {
  const std::size_t count = nb::len(values);
  if (count != inputs_.size()) throw nb::value_error("a case has a value for each input");
  for (std::size_t i = 0; i < count; ++i) inputs_[i] = ValueOf(values[i], texts_[i]);
  svmscore_error* error = nullptr;
  const auto score = [&] {
    const Clock::time_point begin = Clock::now();
    const int status = svmscore_score_case(scorer_.get(), inputs_.data(), count, outputs_.data(),
                                           outputs_.size(), &error);
    is_slow_ = Clock::now() - begin > kSlowCase;
    return status;
  };
  Check(is_slow_ ? WithoutLock(score) : score(), error);
  nb::list results;
  for (const svmscore_value& value : outputs_) {
    if (value.category >= 0) {
      results.append(value.category);
    } else if (value.kind == SVMSCORE_NUMBER) {
      results.append(value.number);
    } else if (value.kind == SVMSCORE_WHOLE) {
      results.append(value.whole);
    } else if (value.kind == SVMSCORE_TEXT) {
      results.append(nb::str(value.text, value.length));
    } else {
      results.append(nb::none());
    }
  }
  return results;
}

}  // namespace svmscore::python
