// The decisions of the thresholds, through the dispatched engine at the run's level: strict
// comparisons and NaN elements, the two-sided form's refusal of crossed levels, the epsilon rule
// of the limited inversion, Normalize's divisor limit, and a long ramp without drift.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "engine/core/dispatch.h"

namespace zal::engine {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(Threshold, ComparisonsAreStrictAndKeepNan) {
  std::vector<float> p = {0.5f, 1.0f, 1.5f, kNan};
  std::vector<float> dst(4);
  ASSERT_EQ(dispatch::ThresholdGTValF32(p.data(), dst.data(), 4, 1.0f, 9.0f), engStsNoErr);
  EXPECT_EQ(dst[0], 0.5f);
  EXPECT_EQ(dst[1], 1.0f);
  EXPECT_EQ(dst[2], 9.0f);
  EXPECT_TRUE(std::isnan(dst[3]));
  ASSERT_EQ(dispatch::ThresholdLTValF32(p.data(), dst.data(), 4, 1.0f, -9.0f), engStsNoErr);
  EXPECT_EQ(dst[0], -9.0f);
  EXPECT_EQ(dst[1], 1.0f);
  EXPECT_TRUE(std::isnan(dst[3]));
  ASSERT_EQ(dispatch::ThresholdGTF32InPlace(p.data(), 4, 1.0f), engStsNoErr);
  EXPECT_EQ(p[2], 1.0f);
  EXPECT_TRUE(std::isnan(p[3]));
  ASSERT_EQ(dispatch::ThresholdLTF32InPlace(p.data(), 4, 0.75f), engStsNoErr);
  EXPECT_EQ(p[0], 0.75f);
  EXPECT_TRUE(std::isnan(p[3]));
}

TEST(Threshold, TwoSidedClampsAndRefusesCrossedLevels) {
  std::vector<float> p = {-2, 0, 3, kNan, 7};
  ASSERT_EQ(dispatch::ThresholdLTValGTValF32(p.data(), p.data(), 5, 1, 1, 1, 1), engStsNoErr);
  EXPECT_EQ(p[0], 1.0f);
  EXPECT_EQ(p[2], 1.0f);
  EXPECT_TRUE(std::isnan(p[3]));
  EXPECT_EQ(p[4], 1.0f);
  const std::vector<float> before = p;
  EXPECT_EQ(dispatch::ThresholdLTValGTValF32(p.data(), p.data(), 5, 2, 2, 1, 1),
            engStsThresholdErr);
  EXPECT_EQ(std::memcmp(before.data(), p.data(), sizeof(float) * 5), 0);
}

struct Inversion {
  double re;
  double im;
  double want_re;
  double want_im;
};

template <class C>
void ExpectInversions(double level, const std::vector<Inversion>& cases) {
  using R = decltype(C::re);
  std::vector<C> z;
  for (const Inversion& c : cases) z.push_back({static_cast<R>(c.re), static_cast<R>(c.im)});
  EngStatus status;
  if constexpr (sizeof(R) == 4) {
    status = dispatch::InvertThresholdC32InPlace(z.data(), static_cast<int>(z.size()), level);
  } else {
    status = dispatch::InvertThresholdC64InPlace(z.data(), static_cast<int>(z.size()), level);
  }
  ASSERT_EQ(status, engStsNoErr);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_NEAR(z[i].re, cases[i].want_re, 1e-6) << cases[i].re << ", " << cases[i].im;
    EXPECT_NEAR(z[i].im, cases[i].want_im, 1e-6) << cases[i].re << ", " << cases[i].im;
  }
}

TEST(InvertThreshold, ComplexFollowsTheEpsilonRule) {
  const std::vector<Inversion> cases = {
      {0, 0, 0.5, 0},      {1, 0, 0.5, 0},
      {4, 0, 0.25, 0},     {0, 1, 0, -0.5},
      {3e-4, 0, 0.5, 0},   {3.5e-4, 0, 0.5, 0},  // |z|^2 <= eps
      {-1, 0, -0.5, 0},    {1, 1, 0.5 / std::sqrt(2.0), -0.5 / std::sqrt(2.0)},
      {2, 2, 0.25, -0.25},
  };
  ExpectInversions<Complex32>(2.0, cases);
  ExpectInversions<Complex64>(2.0, cases);
}

TEST(InvertThreshold, RealUsesTheSquaredEpsilonAndTheSign) {
  std::vector<float> p = {0.0f, -0.0f, 3e-4f, -1.0f, 1.0f, 4.0f, -4.0f};
  ASSERT_EQ(dispatch::InvertThresholdF32InPlace(p.data(), 7, 2.0f), engStsNoErr);
  const float want[] = {0.5f, 0.5f, 0.5f, -0.5f, 0.5f, 0.25f, -0.25f};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(p[i], want[i]) << i;
  for (float level : {0.0f, -1.0f, kNan}) {
    std::vector<float> q = {3.0f};
    EXPECT_EQ(dispatch::InvertThresholdF32InPlace(q.data(), 1, level), engStsThreshNegLevelErr);
    EXPECT_EQ(q[0], 3.0f);
  }
}

TEST(Normalize, RefusesDivisorsBelowTheSmallestNormal) {
  const float src[] = {3.0f};
  float dst[] = {-1.0f};
  for (float div : {0.0f, -0.0f, 1e-39f, -1e-39f}) {
    EXPECT_EQ(dispatch::NormalizeF32(src, dst, 1, 1.0f, div), engStsDivByZeroErr) << div;
    EXPECT_EQ(dst[0], -1.0f);
  }
  ASSERT_EQ(dispatch::NormalizeF32(src, dst, 1, 1.0f, std::numeric_limits<float>::min()),
            engStsNoErr);
  ASSERT_EQ(dispatch::NormalizeF32(src, dst, 1, 1.0f, 2.0f), engStsNoErr);
  EXPECT_EQ(dst[0], 1.0f);
  const double src_double[] = {3.0};
  double dst_double[] = {-1.0};
  EXPECT_EQ(dispatch::NormalizeF64(src_double, dst_double, 1, 1.0, 1e-308), engStsDivByZeroErr);
  ASSERT_EQ(dispatch::NormalizeF64(src_double, dst_double, 1, 1.0, 1e-300), engStsNoErr);
}

// Every element of a ramp longer than float's exact integers is offset + slope i rounded once.
TEST(VectorSlope, LongRampHasNoDrift) {
  const int n = (1 << 24) + 77;
  std::vector<float> p(n);
  const float offset = -3.25f;
  const float slope = 0.1f;
  ASSERT_EQ(dispatch::VectorSlopeF32(p.data(), n, offset, slope), engStsNoErr);
  for (int i = 0; i < n; i += 997) {
    ASSERT_EQ(p[i], static_cast<float>(static_cast<double>(offset) + double{slope} * i)) << i;
  }
  EXPECT_EQ(p[n - 1], static_cast<float>(static_cast<double>(offset) + double{slope} * (n - 1)));
  std::vector<double> q(5);
  ASSERT_EQ(dispatch::VectorSlopeF64(q.data(), 5, 1.0, 0.5), engStsNoErr);
  EXPECT_EQ(q[3], 2.5);
}

}  // namespace
}  // namespace zal::engine
