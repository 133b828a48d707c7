// Runs hold each vector with terms once, and name the columns of its terms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "svm/kernel/certified/run_members.h"
#include "tests/kernel_certified/hard_models.h"

namespace {

using namespace MCSVM_700;
using certified::ColumnNumber;
using certified::RunMembers;
using certified::TermsByVector;
using sample::Random;

// The sizes of each column that a vector has, from the machines themselves.
std::vector<std::map<ColumnNumber, double>> Expected(const PackedEngine& engine) {
  std::vector<std::map<ColumnNumber, double>> terms(engine.pool().size());
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    const packed::MachineView machine = engine.machine(m);
    for (std::size_t k = 0; k < machine.vectors.size(); ++k) {
      const double alpha = machine.coefficients[k];
      if (alpha == 0) continue;
      terms[machine.vectors[k]][static_cast<ColumnNumber>(2 * m + (alpha < 0))] += std::fabs(alpha);
    }
  }
  return terms;
}

void ExpectCovered(const TermsByVector& terms, const std::vector<RunMembers>& runs) {
  std::vector<int> held(terms.vectors(), 0);
  for (const RunMembers& run : runs) {
    ASSERT_TRUE(std::is_sorted(run.columns.begin(), run.columns.end()));
    std::vector<ColumnNumber> used;
    for (const std::uint32_t vector : run.vectors) {
      ++held[vector];
      for (const certified::SignedTerm& term : terms.Of(vector)) used.push_back(term.column);
    }
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    ASSERT_EQ(run.columns, used);
  }
  for (std::size_t v = 0; v < held.size(); ++v) {
    ASSERT_TRUE(held[v] == 1 || (held[v] == 0 && terms.Of(v).empty())) << "vector " << v;
  }
}

TEST(RunMembers, HoldEachVectorOnceWithItsColumns) {
  Random random(1);
  for (int i = 0; i < 300; ++i) {
    const sample::Model model =
        i < 2 ? hard::ManyMachines(i == 0 ? 300 : 600, random) : hard::RandomModel(random);
    const PackedEngine engine(model.Input(), nullptr);
    const TermsByVector terms(engine);
    const auto expected = Expected(engine);
    ASSERT_EQ(terms.vectors(), expected.size());
    std::vector<double> norms;
    for (std::size_t v = 0; v < expected.size(); ++v) {
      std::map<ColumnNumber, double> found;
      for (const certified::SignedTerm& term : terms.Of(v)) found[term.column] = term.size;
      ASSERT_EQ(found, expected[v]) << "model " << i << ", vector " << v;
      norms.push_back(random.Within(0, 1));
    }
    ExpectCovered(terms, FreeRuns(terms, norms));
    const std::vector<RunMembers> pool = PoolRuns(terms);
    ExpectCovered(terms, pool);
    std::uint32_t next = 0;
    for (const RunMembers& run : pool) {
      ASSERT_EQ(next % certified::kRunStart, 0U);
      for (const std::uint32_t vector : run.vectors) ASSERT_EQ(vector, next++);
    }
    ASSERT_EQ(next, terms.vectors());
  }
}

}  // namespace
