// compare FOLDER [NAMES]: measures the engine on the workloads of FOLDER against LIBSVM, against
// the plain kernels and against the peak of this CPU's arithmetic, and prints a table in Markdown.
//
// All are measured in turn, round after round, in one thread, by the thread's own processor time:
// clocks drift and other programs interfere, and this affects all parts of a round alike. A
// figure is the median over the rounds of the time of one case; a ratio is the median over the
// rounds of that round's ratio, with its quartiles.
#include <time.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <functional>

#include "bench/libsvm_model.h"
#include "bench/peak.h"
#include "svm/kernel/certified/certified_engine.h"

namespace {

using namespace MCSVM_700;
using bench::Workload;
using packed::KernelFunctionType;

constexpr int kRounds = 21;
constexpr double kSlice = 0.01;  // seconds of each part in a round

double Seconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// One thing to measure: work() does `units` units.
struct Part {
  std::function<void()> work;
  double units;
  std::vector<double> times = {};  // nanoseconds of a unit, one for each round

  void Run() {
    const double start = Seconds();
    double elapsed = 0.0;
    int calls = 0;
    do {
      work();
      ++calls;
      elapsed = Seconds() - start;
    } while (elapsed < kSlice);
    times.push_back(1e9 * elapsed / (units * calls));
  }
};

double Quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

std::string Ratio(const Part& slow, const Part& fast, int digits = 1) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < fast.times.size(); ++i) {
    ratios.push_back(slow.times[i] / fast.times[i]);
  }
  char text[64];
  std::snprintf(text, sizeof text, "%.*f (%.*f-%.*f)", digits, Quantile(ratios, 0.5), digits,
                Quantile(ratios, 0.25), digits, Quantile(ratios, 0.75));
  return text;
}

// The function that ends a kernel, over numbers in the cache, by the vector form.
Part FunctionPart(const PackedInput& input, const packed::Operations* operations,
                  std::vector<double>& numbers) {
  const double count = static_cast<double>(numbers.size());
  if (operations == nullptr || operations->exp == nullptr ||
      input.kernel.type == KernelFunctionType::kLinear) {
    return {[] {}, count};
  }
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    numbers[i] = input.kernel.type == KernelFunctionType::kRadialBasis
                     ? -0.01 * static_cast<double>(i % 512)
                     : 0.01 + 0.003 * static_cast<double>(i);
  }
  return {[&numbers, &input, operations] {
            static double results[1024];
            if (input.kernel.type == KernelFunctionType::kRadialBasis) {
              operations->exp(numbers.data(), results, numbers.size());
            } else if (input.kernel.type == KernelFunctionType::kPolynomial) {
              operations->pow(numbers.data(), static_cast<int>(input.kernel.degree), results,
                              numbers.size());
            } else {
              operations->tanh(numbers.data(), results, numbers.size());
            }
          },
          count};
}

// The time of one case's arithmetic at peak speed: each term of each vector, and the functions.
std::string Share(const Workload& workload, const Part& batch, const Part& term,
                  const Part& function) {
  std::vector<double> shares;
  const double vectors = static_cast<double>(workload.positions.size());
  const double terms = vectors * static_cast<double>(workload.fields);
  for (std::size_t i = 0; i < batch.times.size(); ++i) {
    double least = terms * term.times[i];
    if (workload.input.kernel.type != KernelFunctionType::kLinear)
      least += vectors * function.times[i];
    shares.push_back(100.0 * least / batch.times[i]);
  }
  char text[64];
  std::snprintf(text, sizeof text, "%.0f %%", Quantile(shares, 0.5));
  return text;
}

// Votes alone: the engine's times against those of certified votes, and what these cost where no
// case can be certified.
class CertifiedParts {
 public:
  CertifiedParts(const Workload& workload, const PackedEngine& engine)
      : workload_(workload),
        engine_(engine),
        certified_(engine, Rule()),
        decisions_(workload.cases() * workload.machines()),
        one_(workload.machines()) {
    for (const double entry : workload.columns) hostile_cases_.push_back(entry * 1e25);
    for (double& entry : hostile_cases_) entry += 1e20;
  }

  void Run() {
    many.Run();
    one.Run();
    exact_hostile.Run();
    RunHostile();
  }
  // Of the cases that were decided.
  double OpenShare() const { return open_share_; }

 private:
  double Cases() const { return static_cast<double>(workload_.cases()); }
  certified::VoteRule Rule() const {
    return {certified::VoteRule::Kind::kThresholds, std::vector<double>(workload_.machines(), 0.0)};
  }
  void DecideMany(const CertifiedEngine& engine, const std::vector<double>& columns) {
    engine.DecideMany({columns.data(), workload_.cases()}, workload_.cases(), certified_scratch_,
                      scratch_, {decisions_.data(), workload_.cases()});
  }
  // An engine that has not met the data: 10,000 cases, its trials among them.
  void RunHostile() {
    const CertifiedEngine fresh(engine_, Rule());
    const std::size_t calls = 10000 / workload_.cases() + 1;
    const double start = Seconds();
    for (std::size_t i = 0; i < calls; ++i) DecideMany(fresh, hostile_cases_);
    hostile.times.push_back(1e9 * (Seconds() - start) / (Cases() * static_cast<double>(calls)));
  }

  const Workload& workload_;
  const PackedEngine& engine_;
  CertifiedEngine certified_;
  CertifiedScratch certified_scratch_;
  PackedScratch scratch_;
  std::vector<double> hostile_cases_;
  std::vector<double> decisions_;
  std::vector<double> one_;
  double open_share_ = 0.0;

 public:
  Part many{[this] { DecideMany(certified_, workload_.columns); }, Cases()};
  Part one{[this] {
             for (const auto& row : workload_.rows) {
               certified_.Decide(row.data(), certified_scratch_, scratch_, one_.data());
             }
             open_share_ = certified_.why_not() != nullptr
                               ? 1.0
                               : static_cast<double>(certified_.counts().exact) /
                                     static_cast<double>(certified_.counts().single +
                                                         certified_.counts().twofold +
                                                         certified_.counts().exact);
           },
           Cases()};
  Part exact_hostile{[this] {
                       engine_.DecideMany({hostile_cases_.data(), workload_.cases()},
                                          workload_.cases(), scratch_,
                                          {decisions_.data(), workload_.cases()});
                     },
                     Cases()};
  Part hostile{[] {}, 1.0};  // by RunHostile
};

std::size_t Differences(const std::vector<double>& a, const std::vector<double>& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    count += std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]);
  }
  return count;
}

void Measure(const Workload& workload, const packed::Operations* operations) {
  const PackedEngine engine(workload.input, operations);
  const PackedEngine plain(workload.input, nullptr);
  const std::size_t cases = workload.cases();
  const std::size_t machines = workload.machines();
  PackedScratch scratch;
  std::vector<double> decisions(cases * machines);
  std::vector<double> one(machines);
  std::size_t next_plain = 0;
  std::size_t next_libsvm = 0;
  Part libsvm{[&] {
                svm_predict_values(workload.model.get(),
                                   workload.nodes[next_libsvm++ % cases].data(), one.data());
              },
              1.0};
  Part definition{
      [&] { plain.Decide(workload.rows[next_plain++ % cases].data(), scratch, one.data()); }, 1.0};
  Part batch{[&] {
               engine.DecideMany({workload.columns.data(), cases}, cases, scratch,
                                 {decisions.data(), cases});
             },
             static_cast<double>(cases)};
  Part single{[&] {
                for (const auto& row : workload.rows)
                  engine.Decide(row.data(), scratch, one.data());
              },
              static_cast<double>(cases)};
  const bool distance = workload.input.kernel.type == KernelFunctionType::kRadialBasis;
  double sink = 0.0;
  Part term{[&] {
              sink += distance ? bench::DistanceTerms(engine.isa(), 4096)
                               : bench::ProductTerms(engine.isa(), 4096);
            },
            4096.0 * static_cast<double>(bench::TermsOfARound(engine.isa()))};
  std::vector<double> numbers(1024);
  Part function = FunctionPart(workload.input, operations, numbers);
  CertifiedParts certified(workload, engine);
  for (int round = 0; round < kRounds; ++round) {
    for (Part* part : {&libsvm, &batch, &single, &term, &function, &definition}) part->Run();
    certified.Run();
  }

  std::vector<double> theirs(cases * machines);
  std::vector<double> defined(cases * machines);
  for (std::size_t c = 0; c < cases; ++c) {
    svm_predict_values(workload.model.get(), workload.nodes[c].data(), one.data());
    for (std::size_t m = 0; m < machines; ++m) theirs[m * cases + c] = one[m];
    plain.Decide(workload.rows[c].data(), scratch, one.data());
    for (std::size_t m = 0; m < machines; ++m) defined[m * cases + c] = one[m];
  }
  const auto microseconds = [](const Part& part) { return Quantile(part.times, 0.5) / 1000.0; };
  std::printf(
      "| %s | %zu x %zu | %zu | %.1f | %.1f | %.2f | %s | %.2f | %s | %s | %zu | %zu "
      "| %.3f | %s | %.2f | %s | %.2f %% | %s |\n",
      workload.name.c_str(), workload.positions.size(), workload.fields, machines,
      microseconds(libsvm), microseconds(definition), microseconds(batch),
      Ratio(libsvm, batch).c_str(), microseconds(single), Ratio(libsvm, single).c_str(),
      engine.sparse() ? "-" : Share(workload, batch, term, function).c_str(),
      Differences(defined, decisions), Differences(theirs, decisions), microseconds(certified.many),
      Ratio(batch, certified.many).c_str(), microseconds(certified.one),
      Ratio(single, certified.one).c_str(), 100.0 * certified.OpenShare(),
      Ratio(certified.hostile, certified.exact_hostile, 2).c_str());
  std::fflush(stdout);
  if (sink == 1.0) std::puts("");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: compare FOLDER [NAMES]\n", stderr);
    return 2;
  }
  const svmscore::IsaChoice& choice = svmscore::ChosenIsa();
  if (choice.error != nullptr) {
    std::fprintf(stderr, "compare: %s\n", choice.error);
    return 2;
  }
  std::printf(
      "Instruction set: %s. Microseconds a case, one thread; ratios to LIBSVM as median "
      "(quartiles) of %d rounds.\n\n",
      svmscore::NameOf(choice.isa), kRounds);
  std::puts(
      "| | vectors x fields | machines | LIBSVM | definition | many cases | ratio | one case "
      "| ratio | share of peak | bits unlike the definition | unlike LIBSVM "
      "| certified, many cases | engine / certified | certified, one case | engine / certified "
      "| open | certified / engine where none can be |");
  std::puts("|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|");
  for (const char* name = argc > 2 ? argv[2] : "abcdefghi"; *name != '\0'; ++name) {
    const auto workload = bench::Load(argv[1], std::string(1, *name));
    if (workload == nullptr) {
      std::fprintf(stderr, "compare: %s has no model %c\n", argv[1], *name);
      return 1;
    }
    Measure(*workload, packed::OperationsOf(choice.isa));
  }
  return 0;
}
