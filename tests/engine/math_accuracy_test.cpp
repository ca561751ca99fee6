// Every math kernel at every level under test against MPFR, over a random sample of each
// function's domain: within 1 ulp, at least N correct bits, or exact, as its class says.
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace zal::test::math
