// The packed engine against the plain kernels, and certified votes against the packed engine's, for
// models and cases of any shape.
#include "fuzz/choices.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"
#include "svm/kernel/packed/operations.h"
#include "tests/kernel_certified/comparison.h"
#include "tests/kernel_packed/sample.h"
#include "tests/kernel_packed/wide.h"

namespace svmscore::fuzz {
namespace {

namespace packed = MCSVM_700::packed;

constexpr std::size_t kMostProducts = 40000;

// A vector whose positions ascend, or are arbitrary.
void AddVector(sample::Model& model, Choices& choices) {
  std::vector<int> positions;
  std::vector<double> entries;
  const bool orderly = !choices.Rarely();
  const std::uint8_t fill = choices.Byte();
  for (std::size_t f = 0; f < model.fields; ++f) {
    if (choices.Byte() > fill) continue;
    positions.push_back(orderly ? static_cast<int>(f)
                                : static_cast<int>(choices.Below(model.fields + 2)) - 1);
    entries.push_back(OddNumber(choices));
  }
  if (choices.Rarely()) entries.push_back(1.0);
  model.AddVector(std::move(positions), std::move(entries));
}

void AddMachine(sample::Model& model, Choices& choices) {
  sample::Machine& machine = model.machines.emplace_back();
  machine.offset = OddNumber(choices);
  const std::size_t vectors = model.positions.size();
  if (vectors == 0) return;
  const bool orderly = !choices.Rarely();
  const std::uint8_t share = choices.Byte();
  for (std::size_t v = 0; v < vectors; ++v) {
    if (choices.Byte() > share) continue;
    machine.vectors.push_back(static_cast<std::uint32_t>(orderly ? v : choices.Below(vectors)));
    machine.coefficients.push_back(OddNumber(choices));
  }
}

// A size that is often one of those around a block.
std::size_t Size(Choices& choices) {
  const std::size_t size = choices.Below(128);
  return size < 72 ? size % 12 : size - 40;
}

sample::Model MakeModel(Choices& choices) {
  sample::Model model;
  model.form = static_cast<packed::KernelFunctionType>(choices.Below(4));
  model.storage = static_cast<packed::Storage>(choices.Below(3));
  if (choices.Half()) {
    model.gamma = OddNumber(choices);
    model.coef0 = OddNumber(choices);
    model.degree = choices.Half() ? static_cast<double>(choices.Below(10)) : OddNumber(choices);
  }
  model.fields = Size(choices);
  // Vectors are made from a few bytes: inputs stay short, and the vectors share values.
  const std::size_t different = 1 + choices.Below(6);
  const std::size_t vectors = Size(choices);
  for (std::size_t v = 0; v < vectors; ++v) {
    if (v < different) {
      AddVector(model, choices);
    } else {
      model.AddVector(model.positions[v % different], model.entries[(v * 7) % different]);
      model.entries.back().resize(model.positions.back().size(), 0.25);
    }
  }
  for (std::size_t left = choices.Below(7); left > 0; --left) AddMachine(model, choices);
  return model;
}

// Few enough that an input takes some milliseconds.
sample::Cases MakeCases(const sample::Model& model, Choices& choices) {
  const std::size_t most = 1 + kMostProducts / (1 + model.fields * model.positions.size());
  sample::Cases cases{model.fields, 1 + Size(choices) % most, {}};
  const std::size_t different = 1 + choices.Below(200);
  for (std::size_t i = 0; i < cases.fields * cases.count; ++i) {
    cases.columns.push_back(i < different ? OddNumber(choices) : cases.columns[i - different]);
  }
  return cases;
}

void Compare(const sample::Model& model, const sample::Cases& cases,
             const std::vector<double>& expected, bool with_wide) {
  const auto check = [&](const char* name, const packed::Operations* operations) {
    const std::string difference = EngineDifference(model, cases, expected, operations);
    Promise(difference.empty(), std::string(name) + " gives the plain bits: " + difference);
  };
  using packed::Isa;
  for (const Isa isa : {Isa::kSse2, Isa::kAvx2, Isa::kAvx512}) {
    if (CpuHas(isa)) check(NameOf(isa), packed::OperationsOf(isa));
  }
  // The AVX-512 forms emulated by AVX2 take longer than all the others.
  if (with_wide && CpuHas(Isa::kAvx2)) check("avx512_by_avx2", &packed::WideOperations());
}

// Thresholds are 0, odd numbers, or a decision value that is itself met.
MCSVM_700::certified::VoteRule MakeRule(const std::vector<double>& met, std::size_t count,
                                        Choices& choices) {
  MCSVM_700::certified::VoteRule rule;
  rule.kind = static_cast<MCSVM_700::certified::VoteRule::Kind>(choices.Below(3));
  for (std::size_t at = 0; at < met.size(); at += count) {
    const std::size_t kind = choices.Below(3);
    const double value = met[at + choices.Below(count)];
    rule.thresholds.push_back(kind == 0 ? 0.0 : kind == 1 ? OddNumber(choices) : value);
  }
  return rule;
}

void CompareVotes(const sample::Model& model, const sample::Cases& cases,
                  const std::vector<double>& expected, Choices& choices) {
  const MCSVM_700::certified::VoteRule rule = MakeRule(expected, cases.count, choices);
  for (const packed::Isa isa : {packed::Isa::kAvx2, packed::Isa::kAvx512}) {
    if (!CpuHas(isa)) continue;
    hard::Tally tally;
    hard::Pair(model, rule, packed::OperationsOf(isa)).Compare(cases, 1, tally);
    Promise(tally.first.empty(),
            std::string(NameOf(isa)) + " certifies only votes that are right: " + tally.first);
  }
}

}  // namespace
}  // namespace svmscore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  Choices choices(data, size);
  Choices for_cases = choices.SplitOff(1, 4);
  const bool with_wide = for_cases.Byte() % 4 == 0;
  const sample::Model model = MakeModel(choices);
  const sample::Cases cases = MakeCases(model, for_cases);
  const std::vector<double> expected = ByDefinition(model, cases);
  Compare(model, cases, expected, with_wide);
  CompareVotes(model, cases, expected, choices);
  return 0;
}
