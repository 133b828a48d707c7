// c_interface FOLDER: what the C interface costs beside the engine itself, on workload a of FOLDER
// (train_models.py, write_files.py) and on made-up categories, and prints a table in Markdown.
//
// The parts of a figure are measured in turn, round after round, by the processor time of the
// process (by the clock where threads are compared); a figure is the median over the rounds of that
// round's ratio or difference, with its quartiles.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/libsvm_model.h"
#include "capi/svmscore.h"
#include "svm/kernel/certified/certified_engine.h"

namespace {

using namespace MCSVM_700;

constexpr std::size_t kRows = 100000;
constexpr int kRounds = 15;

double Seconds(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Nanoseconds of a unit of `work`, which does `units`.
double Measure(const std::function<void()>& work, double units,
               clockid_t clock = CLOCK_PROCESS_CPUTIME_ID) {
  constexpr double kSlice = 0.05;
  const double start = Seconds(clock);
  double elapsed = 0.0;
  int calls = 0;
  do {
    work();
    ++calls;
    elapsed = Seconds(clock) - start;
  } while (elapsed < kSlice);
  return 1e9 * elapsed / (units * calls);
}

struct Spread {
  double low, median, high;
};

Spread SpreadOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const auto at = [&values](double share) {
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
  };
  return {at(0.25), at(0.5), at(0.75)};
}

void Check(int status, svmscore_error* error) {
  if (status == SVMSCORE_OK) return;
  std::fprintf(stderr, "c_interface: %s\n", svmscore_error_message(error).data);
  std::exit(1);
}

struct Freed {
  void operator()(svmscore_model* model) const { svmscore_model_free(model); }
  void operator()(svmscore_scorer* scorer) const { svmscore_scorer_free(scorer); }
};
using Model = std::unique_ptr<svmscore_model, Freed>;
using Scorer = std::unique_ptr<svmscore_scorer, Freed>;

Scorer NewScorer(const Model& model, int threads = 1) {
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.threads = threads;
  svmscore_scorer* scorer = nullptr;
  svmscore_error* error = nullptr;
  Check(svmscore_scorer_new(model.get(), &options, &scorer, &error), error);
  return Scorer(scorer);
}

Model LoadText(const std::string& document) {
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  Check(svmscore_load_memory(document.data(), document.size(), nullptr, &model, &error), error);
  return Model(model);
}

void Score(const Scorer& scorer, const std::vector<svmscore_column>& columns) {
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_error* error = nullptr;
  Check(svmscore_score(scorer.get(), columns.data(), columns.size(), kRows, &table, &error), error);
  if (table.scored != kRows) {
    std::fprintf(stderr, "c_interface: %zu rows were not scored\n",
                 kRows - static_cast<std::size_t>(table.scored));
    std::exit(1);
  }
}

svmscore_column Column(const std::string& name, int type, const void* data, std::size_t size) {
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  column.name = name.data();
  column.name_length = name.size();
  column.type = type;
  column.length = kRows;
  column.data = data;
  column.data_size = size;
  return column;
}

void Print(const char* what, const char* unit, double factor, const std::vector<double>& values) {
  const Spread spread = SpreadOf(values);
  std::printf("| %s | %.3g%s (%.3g-%.3g) |\n", what, factor * spread.median, unit,
              factor * spread.low, factor * spread.high);
  std::fflush(stdout);
}

// Workload a: tables of numbers, one case, threads.
void MeasureNumbers(const std::string& folder) {
  const auto workload = bench::Load(folder, "a");
  if (workload == nullptr) {
    std::fprintf(stderr, "c_interface: %s has no model a\n", folder.c_str());
    std::exit(1);
  }
  const std::string path = folder + "/a.pmml";
  svmscore_model* loaded = nullptr;
  svmscore_error* error = nullptr;
  Check(svmscore_load_file(path.data(), path.size(), nullptr, &loaded, &error), error);
  const Model model(loaded);
  std::vector<std::vector<double>> numbers(workload->fields, std::vector<double>(kRows));
  std::vector<double> entries(workload->fields * kRows);
  std::vector<std::string> names;
  std::vector<svmscore_column> columns;
  for (std::size_t f = 0; f < workload->fields; ++f) {
    for (std::size_t row = 0; row < kRows; ++row) {
      numbers[f][row] = entries[f * kRows + row] = workload->rows[row % workload->cases()][f];
    }
    names.push_back("x" + std::to_string(f + 1));
  }
  for (std::size_t f = 0; f < workload->fields; ++f) {
    columns.push_back(Column(names[f], SVMSCORE_F64, numbers[f].data(), kRows * sizeof(double)));
  }

  const PackedEngine engine(workload->input, packed::OperationsOf(svmscore::ChosenIsa().isa));
  const CertifiedEngine votes(engine, {certified::VoteRule::Kind::kThresholds, {0.0}});
  PackedScratch scratch;
  CertifiedScratch certified_scratch;
  std::vector<double> decisions(kRows * workload->machines());
  const Scorer scorer = NewScorer(model);
  std::vector<double> shares;
  for (int round = 0; round < kRounds; ++round) {
    const double own = Measure(
        [&] {
          votes.DecideMany({entries.data(), kRows}, kRows, certified_scratch, scratch,
                           {decisions.data(), kRows});
        },
        kRows);
    shares.push_back(own / Measure([&] { Score(scorer, columns); }, kRows));
  }
  Print("table of f64 columns, speed beside the engine's own batch", " %", 100.0, shares);

  std::vector<double> more;
  std::vector<double> more_values;
  std::vector<double> results(svmscore_scorer_output_count(scorer.get()));
  std::vector<svmscore_value> values(workload->fields);
  std::vector<svmscore_value> outputs(results.size());
  std::vector<double> one(workload->machines());
  const double cases = static_cast<double>(workload->cases());
  for (int round = 0; round < kRounds; ++round) {
    const double own = Measure(
        [&] {
          for (const auto& row : workload->rows) {
            votes.Decide(row.data(), certified_scratch, scratch, one.data());
          }
        },
        cases);
    more.push_back(Measure(
                       [&] {
                         for (const auto& row : workload->rows) {
                           svmscore_score_numbers(scorer.get(), row.data(), row.size(),
                                                  results.data(), results.size(), nullptr);
                         }
                       },
                       cases) -
                   own);
    more_values.push_back(Measure(
                              [&] {
                                for (const auto& row : workload->rows) {
                                  for (std::size_t f = 0; f < row.size(); ++f) {
                                    values[f] = {SVMSCORE_NUMBER, -1, row[f], 0, nullptr, 0};
                                  }
                                  svmscore_score_case(scorer.get(), values.data(), values.size(),
                                                      outputs.data(), outputs.size(), nullptr);
                                }
                              },
                              cases) -
                          own);
  }
  Print("one case of numbers, beyond the engine's own", " ns", 1.0, more);
  Print("one case of values, beyond the engine's own", " ns", 1.0, more_values);

  const Scorer two = NewScorer(model, 2);
  std::vector<double> gains;
  for (int round = 0; round < kRounds; ++round) {
    const double alone = Measure([&] { Score(scorer, columns); }, kRows, CLOCK_MONOTONIC);
    gains.push_back(alone / Measure([&] { Score(two, columns); }, kRows, CLOCK_MONOTONIC));
  }
  Print("two threads over one", " x", 1.0, gains);
}

constexpr std::size_t kFields = 10;
constexpr std::size_t kCategories = 4;
constexpr std::size_t kVectors = 1000;

// Category k of a field: a text, or a number where the fields hold numbers.
std::string CategoryOf(std::size_t k, bool numbers) {
  return numbers ? std::to_string(k) : "category " + std::to_string(k);
}

// A machine over the indicators of ten fields' categories.
std::string DocumentOf(bool numbers) {
  std::string schema, dictionary, fields, vectors, support, coefficients;
  for (std::size_t f = 0; f < kFields; ++f) {
    const std::string name = "x" + std::to_string(f);
    dictionary += "<DataField name='" + name + "' optype='categorical' dataType='" +
                  (numbers ? "double" : "string") + "'>";
    schema += "<MiningField name='" + name + "'/>";
    for (std::size_t k = 0; k < kCategories; ++k) {
      dictionary += "<Value value='" + CategoryOf(k, numbers) + "'/>";
      fields += "<CategoricalPredictor name='" + name + "' value='" + CategoryOf(k, numbers) +
                "' coefficient='1'/>";
    }
    dictionary += "</DataField>";
  }
  for (std::size_t v = 0; v < kVectors; ++v) {
    const std::string id = "v" + std::to_string(v);
    std::string indices, ones;
    for (std::size_t f = 0; f < kFields; ++f) {
      indices += std::to_string(f * kCategories + (v * 7 + f * v) % kCategories + 1) + " ";
      ones += "1 ";
    }
    vectors += "<VectorInstance id='" + id + "'><REAL-SparseArray n='" +
               std::to_string(kFields * kCategories) + "'><Indices>" + indices +
               "</Indices><REAL-Entries>" + ones +
               "</REAL-Entries></REAL-SparseArray></VectorInstance>";
    support += "<SupportVector vectorId='" + id + "'/>";
    coefficients += "<Coefficient value='" + std::to_string(v % 2 == 0 ? 0.5 : -0.25) + "'/>";
  }
  return "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>" +
         dictionary +
         "<DataField name='y' optype='continuous' dataType='double'/></DataDictionary>"
         "<SupportVectorMachineModel functionName='regression'><MiningSchema>" +
         schema +
         "<MiningField name='y' usageType='target'/></MiningSchema>"
         "<RadialBasisKernelType gamma='0.1'/><VectorDictionary><VectorFields>" +
         fields + "</VectorFields>" + vectors +
         "</VectorDictionary><SupportVectorMachine><SupportVectors>" + support +
         "</SupportVectors><Coefficients absoluteValue='0.25'>" + coefficients +
         "</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>";
}

// The same categories as numbers, as codes and as texts.
void MeasureCategories() {
  const Model of_numbers = LoadText(DocumentOf(true));
  const Model of_texts = LoadText(DocumentOf(false));
  std::vector<std::string> names;
  std::vector<std::vector<double>> numbers(kFields);
  std::vector<std::vector<std::int32_t>> codes(kFields);
  std::vector<std::vector<std::int32_t>> offsets(kFields, {0});
  std::vector<std::string> texts(kFields);
  std::string dictionary_text;
  std::vector<std::int32_t> dictionary_offsets = {0};
  for (std::size_t k = 0; k < kCategories; ++k) {
    dictionary_text += CategoryOf(k, false);
    dictionary_offsets.push_back(static_cast<std::int32_t>(dictionary_text.size()));
  }
  svmscore_column dictionary =
      Column("", SVMSCORE_UTF8, dictionary_text.data(), dictionary_text.size());
  dictionary.length = kCategories;
  dictionary.offsets = dictionary_offsets.data();
  dictionary.offsets_size = dictionary_offsets.size() * 4;
  for (std::size_t f = 0; f < kFields; ++f) {
    names.push_back("x" + std::to_string(f));
    for (std::size_t row = 0; row < kRows; ++row) {
      const std::size_t k = (row / 3 + row * f) % kCategories;
      numbers[f].push_back(static_cast<double>(k));
      codes[f].push_back(static_cast<std::int32_t>(k));
      texts[f] += CategoryOf(k, false);
      offsets[f].push_back(static_cast<std::int32_t>(texts[f].size()));
    }
  }
  std::vector<svmscore_column> as_numbers, as_codes, as_texts;
  for (std::size_t f = 0; f < kFields; ++f) {
    as_numbers.push_back(Column(names[f], SVMSCORE_F64, numbers[f].data(), kRows * 8));
    as_codes.push_back(Column(names[f], SVMSCORE_DICTIONARY, codes[f].data(), kRows * 4));
    as_codes.back().code_type = SVMSCORE_I32;
    as_codes.back().dictionary = &dictionary;
    as_texts.push_back(Column(names[f], SVMSCORE_UTF8, texts[f].data(), texts[f].size()));
    as_texts.back().offsets = offsets[f].data();
    as_texts.back().offsets_size = offsets[f].size() * 4;
  }
  const Scorer numbers_scorer = NewScorer(of_numbers);
  const Scorer texts_scorer = NewScorer(of_texts);
  std::vector<double> of_codes, of_utf8;
  for (int round = 0; round < kRounds; ++round) {
    const double plain = Measure([&] { Score(numbers_scorer, as_numbers); }, kRows);
    of_codes.push_back(plain / Measure([&] { Score(texts_scorer, as_codes); }, kRows));
    of_utf8.push_back(plain / Measure([&] { Score(texts_scorer, as_texts); }, kRows));
  }
  Print("10 dictionary columns, speed beside f64 columns", " %", 100.0, of_codes);
  Print("10 UTF-8 columns, speed beside f64 columns", " %", 100.0, of_utf8);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: c_interface FOLDER\n", stderr);
    return 2;
  }
  std::printf("Instruction set: %s. Tables of %zu rows; %d rounds.\n\n", svmscore_instruction_set(),
              kRows, kRounds);
  std::puts("| measured | median (quartiles) |\n|---|---|");
  MeasureNumbers(argv[1]);
  MeasureCategories();
  return 0;
}
