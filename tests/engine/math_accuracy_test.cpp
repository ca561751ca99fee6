// Every math kernel at every level under test against MPFR, over a random sample of each
// function's domain: within 1 ulp, at least N correct bits, or exact, as its class says.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/engine/harness/rows.h"
#include "tests/support/math_accuracy.h"

#ifndef ZAL_MATH_ACCURACY_SAMPLES
#define ZAL_MATH_ACCURACY_SAMPLES 100000
#endif

namespace zal::test::math {
namespace {

class MathAccuracy : public testing::TestWithParam<Function> {};

TEST_P(MathAccuracy, WithinClassAgainstMpfr) {
  const Function& f = GetParam();
  const Sample sample(f, ZAL_MATH_ACCURACY_SAMPLES, 0x5eed0000 + std::string(f.name).size());
  for (int level : harness::LevelsUnderTest()) {
    const Errors errors = sample.Measure(level);
    EXPECT_TRUE(WithinClass(f, errors))
        << f.name << " at " << harness::LevelName(level) << ", bound " << Bound(f) << ": max "
        << errors.max_ulps << " ulp (" << errors.worst << "), min " << errors.min_bits << " bits, "
        << errors.inexact << " not correctly rounded"
        << (errors.worst_special.empty() ? "" : ", special case " + errors.worst_special);
  }
}

INSTANTIATE_TEST_SUITE_P(Math, MathAccuracy, testing::ValuesIn(Functions()),
                         [](const testing::TestParamInfo<Function>& info) {
                           return std::string(info.param.name);
                         });

// The double logarithm and power read a 513-row table, one row per lane, by loads that transpose:
// every row, at its centre m_i = 1 + i/512 and at both edges of its interval, in several binades
// and in every lane position, catches a row read from the wrong place or a column mixed up.
const Function& Named(const char* name) {
  for (const Function& f : Functions()) {
    if (std::string(f.name) == name) return f;
  }
  throw std::invalid_argument(name);
}

std::vector<double> TableRowArguments() {
  std::vector<double> x;
  for (int i = 0; i <= 512; ++i) {
    const double centre = 1 + i / 512.0;
    for (const double m : {centre, std::nextafter(centre - 1 / 1024.0, 3.0),
                           std::nextafter(centre + 1 / 1024.0, 0.0), centre - 1 / 1024.0}) {
      if (m < 1 || m >= 2) continue;
      for (const int binade : {-1074 + 60, -3, 0, 1, 40, 1023}) x.push_back(std::ldexp(m, binade));
    }
  }
  return x;
}

struct TableCase {
  const char* function;
  double exponent;  // for the power
};

class TableRows : public testing::TestWithParam<TableCase> {};

TEST_P(TableRows, EveryRowWithinClass) {
  const Function& f = Named(GetParam().function);
  const std::vector<double> x = TableRowArguments();
  const Sample sample(f, x, std::vector<double>(x.size(), GetParam().exponent));
  for (int level : harness::LevelsUnderTest()) {
    const Errors errors = sample.Measure(level);
    EXPECT_TRUE(WithinClass(f, errors)) << f.name << " at " << harness::LevelName(level) << ": max "
                                        << errors.max_ulps << " ulp (" << errors.worst << ")";
  }
}

INSTANTIATE_TEST_SUITE_P(Math, TableRows,
                         testing::Values(TableCase{"LnF64", 0}, TableCase{"PowF64", 0.75},
                                         TableCase{"PowF64", -0.001},
                                         TableCase{"PowF64Prec26", 0.75}));

}  // namespace
}  // namespace zal::test::math
