// Gauss-Legendre rules against values computed with 60 digits.
#include <cmath>
#include <cstddef>
#include <numeric>

#include <gtest/gtest.h>

#include "svm/kernel/explain/gauss_legendre.h"

namespace {

using MCSVM_700::explain::GaussLegendre;
using MCSVM_700::explain::GaussRule;

TEST(GaussLegendre, IsExactToTheLastDigits) {
  struct Known {
    std::size_t count, from_end;
    double at, weight;
  };
  const Known all[] = {{1, 1, 0.0, 2.0},
                       {2, 1, 0.57735026918962576451, 1.0},
                       {5, 1, 0.9061798459386639928, 0.23692688505618908751},
                       {5, 2, 0.53846931010568309104, 0.47862867049936646804},
                       {10, 1, 0.97390652851717172008, 0.066671344308688137594},
                       {10, 5, 0.14887433898163121088, 0.29552422471475287017},
                       {64, 1, 0.99930504173577213946, 0.0017832807216964329473},
                       {64, 32, 0.024350292663424432509, 0.048690957009139720383},
                       {101, 1, 0.99971933952977027577, 0.00072023170640186370177},
                       {250, 3, 0.99940335329301611556, 0.00043245460060038206367},
                       {2000, 1, 0.99999927746317031134, 1.8542626102132728197e-6},
                       {2000, 2, 0.9999961929984418254, 4.3163659609406649191e-6},
                       {2000, 777, 0.3438231308868222295, 0.001474663110285141024},
                       {2000, 1000, 0.00078520175772144724352, 0.0015704031927029911815}};
  for (const Known& known : all) {
    SCOPED_TRACE(testing::Message() << known.count << ", " << known.from_end);
    const GaussRule rule = GaussLegendre(known.count);
    const std::size_t i = known.count - known.from_end;
    EXPECT_DOUBLE_EQ(known.at, rule.at[i]);
    EXPECT_DOUBLE_EQ(known.weight, rule.weight[i]);
    EXPECT_EQ(-rule.at[i], rule.at[known.from_end - 1]);
    EXPECT_EQ(rule.weight[i], rule.weight[known.from_end - 1]);
    EXPECT_NEAR(2.0, std::accumulate(rule.weight.begin(), rule.weight.end(), 0.0), 1e-13);
  }
}

TEST(GaussLegendre, IntegratesPolynomialsExactly) {
  for (std::size_t count = 1; count <= 40; ++count) {
    const GaussRule rule = GaussLegendre(count);
    for (std::size_t degree = 0; degree <= 2 * count; degree += 2) {
      long double sum = 0.0L;
      for (std::size_t i = 0; i < count; ++i) {
        EXPECT_TRUE(i == 0 || rule.at[i - 1] < rule.at[i]);
        sum += static_cast<long double>(rule.weight[i]) *
               std::pow(static_cast<long double>(rule.at[i]), static_cast<int>(degree));
      }
      const double error = std::abs(static_cast<double>(sum - 2.0L / static_cast<int>(degree + 1)));
      if (degree < 2 * count) {
        EXPECT_LE(error, 4e-16);
      } else if (count <= 20) {
        EXPECT_GE(error, 1e-14);  // one degree too many
      }
    }
  }
}

}  // namespace
