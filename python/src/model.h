// A loaded model, as the extension module offers it.
#ifndef PYTHON_SRC_MODEL_H_
#define PYTHON_SRC_MODEL_H_

#include <memory>

#include <nanobind/nanobind.h>

#include <svmscore.h>

#include "columns.h"

namespace svmscore::python {

// How a document is read: the members of svmscore_load_options, from Python's arguments.
class LoadSettings {
 public:
  LoadSettings(int mode, int missing_policy, nanobind::dict limits, nanobind::str name);
  const svmscore_load_options* Options() const { return &options_; }

 private:
  std::string name_;
  std::deque<std::string> limit_names_;
  std::vector<svmscore_limit> limits_;
  svmscore_load_options options_;
};

class Model {
 public:
  Model(nanobind::bytes document, const LoadSettings& settings);

  const svmscore_model* Get() const { return model_.get(); }
  nanobind::dict Facts() const;
  nanobind::list Inputs() const;
  nanobind::list Machines() const;
  nanobind::list Categories() const;
  nanobind::list Remarks() const;
  nanobind::str Describe() const;
  // Null columns: the document's own records.
  nanobind::str Verify(const Columns* cases, const Columns* expected, double tolerance) const;

 private:
  struct Free {
    void operator()(svmscore_model* model) const { svmscore_model_free(model); }
  };
  std::unique_ptr<svmscore_model, Free> model_;
};

// `actual`: one column of what the cases really are. Null columns: not given.
nanobind::str Doctor(nanobind::bytes document, const LoadSettings& settings, const Columns* cases,
                     const Columns* expected, const Columns* actual, double tolerance);

// (the calibrated document, the report as JSON). `actual`: one column, as long as the others.
nanobind::tuple Calibrate(nanobind::bytes document, const LoadSettings& settings,
                          const Columns& cases, const Columns& actual, double confidence);

}  // namespace svmscore::python

#endif  // PYTHON_SRC_MODEL_H_
