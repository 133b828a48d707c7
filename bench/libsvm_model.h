// A model and cases in LIBSVM's text formats, as LIBSVM and as the engine take them.
#ifndef BENCH_LIBSVM_MODEL_H_
#define BENCH_LIBSVM_MODEL_H_

#include <libsvm/svm.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "svm/kernel/packed/packed_engine.h"

namespace bench {

struct Workload {
  struct FreeModel {
    void operator()(svm_model* loaded) const { svm_free_and_destroy_model(&loaded); }
  };

  std::string name;
  std::unique_ptr<svm_model, FreeModel> model;
  std::vector<std::vector<svm_node>> nodes;  // of each case, ended by index -1
  std::size_t fields = 0;
  std::vector<double> columns;            // entry f of case c at [f * cases + c]
  std::vector<std::vector<double>> rows;  // of each case, all fields

  // What the engine's input points to.
  std::vector<std::vector<int>> positions;
  std::vector<std::vector<double>> entries;
  std::vector<std::vector<double>> coefficients;  // of each machine
  std::vector<std::vector<std::uint32_t>> vectors;
  MCSVM_700::PackedInput input;

  std::size_t cases() const { return rows.size(); }
  std::size_t machines() const { return coefficients.size(); }
  // Share of the vectors' entries that are not 0.
  double Fill() const;
};

// Reads FOLDER/NAME.model and FOLDER/NAME.cases. Null where there is no such model; the program
// ends with a message where one cannot be read.
std::unique_ptr<Workload> Load(const std::string& folder, const std::string& name);

}  // namespace bench

#endif  // BENCH_LIBSVM_MODEL_H_
