// iris MODEL: the C interface from C++17, with handles that free themselves.
#include <svmscore.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct Freed {
  void operator()(svmscore_model* model) const { svmscore_model_free(model); }
  void operator()(svmscore_scorer* scorer) const { svmscore_scorer_free(scorer); }
  void operator()(svmscore_error* error) const { svmscore_error_free(error); }
};
using Model = std::unique_ptr<svmscore_model, Freed>;
using Scorer = std::unique_ptr<svmscore_scorer, Freed>;

// Throws what failed.
void Check(int kind, svmscore_error* error) {
  const std::unique_ptr<svmscore_error, Freed> freed(error);
  if (kind != SVMSCORE_OK) throw std::runtime_error(svmscore_error_message(error).data);
}

Model Load(const std::string& path) {
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  const int kind = svmscore_load_file(path.data(), path.size(), nullptr, &model, &error);
  Check(kind, error);
  return Model(model);
}

Scorer NewScorer(const Model& model) {
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.columns = SVMSCORE_COLUMNS_ALL;
  svmscore_scorer* scorer = nullptr;
  svmscore_error* error = nullptr;
  const int kind = svmscore_scorer_new(model.get(), &options, &scorer, &error);
  Check(kind, error);
  return Scorer(scorer);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    const Model model = Load(argv[1]);
    const Scorer scorer = NewScorer(model);
    const std::vector<double> flower = {5.1, 3.5, 1.4, 0.2};
    std::vector<double> results(svmscore_scorer_output_count(scorer.get()));
    svmscore_error* error = nullptr;
    const int kind = svmscore_score_numbers(scorer.get(), flower.data(), flower.size(),
                                            results.data(), results.size(), &error);
    Check(kind, error);
    svmscore_text category{};
    svmscore_model_get_category(model.get(), static_cast<size_t>(results[0]), &category, nullptr);
    std::printf("%s, confidence %g\n", category.data, results[1]);
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
