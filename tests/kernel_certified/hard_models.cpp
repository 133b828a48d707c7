#include "tests/kernel_certified/hard_models.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace hard {

using MCSVM_700::certified::VoteRule;
using MCSVM_700::packed::KernelFunctionType;
using sample::Machine;
using sample::Model;
using sample::Random;

namespace {

double Power10(double low, double high, Random& random) {
  return std::pow(10.0, random.Within(low, high));
}

template <class List>
auto Pick(const List& list, Random& random) {
  return list[random.Below(std::size(list))];
}

void AddVectors(Model& model, Random& random) {
  constexpr std::size_t kFields[] = {31, 32, 33, 65, 150};
  constexpr double kFills[] = {1.0, 1.0, 0.5, 0.1};
  model.fields = random.Chance(0.15) ? Pick(kFields, random) : 1 + random.Below(6);
  // Where all entries of a vector are the same, all additions may round the same way.
  const bool alike = random.Chance(0.3);
  if (alike) model.fields = 1 + random.Below(40);
  const std::size_t vectors = 1 + random.Below(random.Chance(0.2) ? 300 : 6);
  const double fill = Pick(kFills, random);
  const double spread = alike || random.Chance(0.2) ? 0.0 : random.Within(0, 3);
  const double all = random.Chance(0.2) ? Power10(-9, 9, random) : 1.0;
  const double farthest = random.Chance(0.1) ? 9 : 4;
  const bool shifted = random.Chance(0.5);
  const bool radial = model.form == KernelFunctionType::kRadialBasis;
  std::vector<double> scale;
  std::vector<double> shift;
  double square = 0;
  for (std::size_t f = 0; f < model.fields; ++f) {
    scale.push_back(all * Power10(-spread, spread, random));
    shift.push_back(shifted ? scale.back() * Power10(-2, farthest, random) : 0);
    square += scale[f] * scale[f] + (radial ? 0 : shift[f] * shift[f]);
  }
  model.gamma = Power10(-3, 2, random) / square;
  for (std::size_t v = 0; v < vectors; ++v) {
    std::vector<int> at;
    std::vector<double> entries;
    for (std::size_t f = 0; f < model.fields; ++f) {
      if (!alike && !random.Chance(fill)) continue;
      at.push_back(static_cast<int>(f));
      const double tiny = random.Chance(0.01) ? 1e-300 : 1.0;
      const double entry = tiny * (shift[f] + scale[f] * random.Within(-2, 2));
      entries.push_back(alike && f > 0 ? entries[0] : entry);
    }
    model.AddVector(std::move(at), std::move(entries));
  }
  if (radial || !random.Chance(0.3)) return;
  double dot = 0;  // the argument of this vector is next to 0
  for (const double entry : model.entries[0]) dot += entry * entry;
  model.coef0 = -model.gamma * dot;
}

// All vectors of [begin, end) but for those left out.
void AddTerms(Machine& machine, std::size_t begin, std::size_t end, double size, Random& random) {
  constexpr double kRanges[] = {0, 0, 0.5, 12};
  const double range = Pick(kRanges, random);
  const double left_out = random.Chance(0.5) ? 0.3 : 0.0;
  const double negative = random.Chance(0.3) ? 0.0 : 0.5;
  for (std::size_t v = begin; v < end; ++v) {
    if (random.Chance(left_out)) continue;
    for (bool again = true; again; again = random.Chance(0.05)) {
      const double alpha = random.Chance(0.05) ? 0.0 : size * Power10(-range, range, random);
      machine.coefficients.push_back(random.Chance(negative) ? -alpha : alpha);
      machine.vectors.push_back(static_cast<std::uint32_t>(v));
    }
  }
  if (!machine.vectors.empty() && random.Chance(0.2)) {
    machine.coefficients.push_back(-machine.coefficients.front());
    machine.vectors.push_back(machine.vectors.front());
  }
}

void AddMachines(Model& model, Random& random) {
  constexpr std::size_t kMachines[] = {1, 1, 1, 2, 3, 6};
  const std::size_t vectors = model.positions.size();
  const std::size_t count = random.Chance(0.03) ? 40 : Pick(kMachines, random);
  const bool by_class = random.Chance(0.5);
  const double size = Power10(-5, 5, random);
  for (std::size_t m = 0; m < count; ++m) {
    Machine machine;
    if (by_class && count > 1) {
      const std::size_t part = vectors / count + 1;
      AddTerms(machine, std::min(vectors, m * part), std::min(vectors, (m + 1) * part), size,
               random);
    }
    AddTerms(machine, 0, by_class ? vectors / 2 : vectors, size, random);
    constexpr double kOffsets[] = {0, 1, 1, 1e7};
    machine.offset = size * random.Within(-2, 2) * Pick(kOffsets, random);
    model.machines.push_back(std::move(machine));
  }
  if (count > 1 && random.Chance(0.2)) model.machines.back() = model.machines.front();
}

double OddFactor(Random& random) {
  constexpr double kFactors[] = {1e30, 1e-30, 1e300, 1e-300, 0x1p-1060, 1e6,
                                 1e-6, 1e15,  1e38,  1e-38,  1e-45,     1e154};
  return Pick(kFactors, random);
}

}  // namespace

Model RandomModel(Random& random) {
  Model model;
  model.form = static_cast<KernelFunctionType>(random.Below(4));
  model.storage = static_cast<MCSVM_700::packed::Storage>(random.Below(3));
  model.degree = random.Chance(0.5) ? 2 : 3;
  model.coef0 = random.Chance(0.3)   ? 0.0
                : random.Chance(0.1) ? Power10(-9, 9, random)
                                     : random.Within(-2, 2);
  AddVectors(model, random);
  AddMachines(model, random);
  return model;
}

Model ManyMachines(std::size_t count, Random& random) {
  Model model = sample::RandomModel(KernelFunctionType::kRadialBasis, 3, count < 400 ? count : 400,
                                    1, random);
  for (std::size_t m = 0; m < count; ++m) {
    Machine& machine = model.machines.emplace_back();
    machine.coefficients = {random.Within(-2, 2), random.Within(-2, 2)};
    machine.vectors = {static_cast<std::uint32_t>(m % model.positions.size()),
                       static_cast<std::uint32_t>(random.Below(model.positions.size()))};
  }
  return model;
}

sample::Cases RandomCases(const Model& model, Kind kind, std::size_t count, Random& random) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  sample::Cases cases{model.fields, count, std::vector<double>(model.fields * count)};
  for (std::size_t c = 0; c < count; ++c) {
    const auto row = [&]() {
      const std::size_t v = random.Below(model.positions.size());
      std::vector<double> x(model.fields);
      for (std::size_t i = 0; i < model.positions[v].size(); ++i) {
        x[static_cast<std::size_t>(model.positions[v][i])] = model.entries[v][i];
      }
      return x;
    };
    const std::vector<double> one = row();
    const std::vector<double> other = row();
    const double away = random.Chance(0.3) ? 1.0 : std::exp2(-static_cast<double>(c % 60));
    const double factor = OddFactor(random);
    const std::size_t place = random.Below(model.fields);
    const bool one_place = random.Chance(0.5);
    const double together = random.Chance(0.5) ? random.Within(-2, 2) : 0.0;
    for (std::size_t f = 0; f < model.fields; ++f) {
      double x = one[f];
      switch (kind) {
        case Kind::kNear:
          if (together != 0) {
            x += x * away * together;
          } else {
            x += (random.Chance(0.5) ? other[f] - x : std::fabs(x)) * away * random.Within(-2, 2);
          }
          break;
        case Kind::kVectors:
          if (c % 2 == 1) x = std::nextafter(x, random.Chance(0.5) ? kInfinity : -kInfinity);
          break;
        case Kind::kMagnitudes:
          if (!one_place || f == place) x = (x == 0 ? 1.0 : x) * factor;
          break;
        case Kind::kAnySize:
          x = std::ldexp(
              random.Within(-1, 1),
              static_cast<int>(random.Below(one_place ? 2000 : 80)) - (one_place ? 1000 : 40));
          break;
        case Kind::kOdd:
          constexpr double kOdd[] = {kInfinity, -kInfinity, NAN, 0.0, -0.0, 5e-324, 1e-310};
          if (!one_place || f == place) x = kOdd[one_place ? random.Below(7) : 3 + c % 4];
          break;
      }
      cases.columns[f * count + c] = x;
    }
  }
  return cases;
}

VoteRule RandomRule(const std::vector<double>& decided, std::size_t machines, Random& random) {
  VoteRule rule;
  rule.kind = static_cast<VoteRule::Kind>(machines == 1 ? 0 : random.Below(3));
  const std::size_t count = decided.size() / std::max<std::size_t>(machines, 1);
  const bool zero = random.Chance(0.4);
  for (std::size_t m = 0; m < machines; ++m) {
    const double value = decided[m * count + random.Below(count)];
    const double off = random.Chance(0.5) ? 0.0 : Power10(-16, -4, random);
    rule.thresholds.push_back(zero || !std::isfinite(value) ? 0.0 : value * (1 + off));
  }
  return rule;
}

}  // namespace hard
