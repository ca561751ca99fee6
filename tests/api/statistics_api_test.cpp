// The exported reductions, thresholds and complex helpers through the shared library: each
// front's argument order, and the result rules on refusal (zero results, value cells stored
// anyway, index outputs always written, outputs left alone). Kernel results are covered bit for
// bit by the cross-level tests.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

namespace u = zalaccelerate::utility;

const float kData[] = {3, 1, 1, 5, 5};
constexpr unsigned kTooLong = 0x80000000u;  // reaches the engine as a negative length

TEST(Reductions, ReturnTheirResults) {
  EXPECT_EQ(u::Sum(5, kData), 15.0f);
  EXPECT_EQ(u::Mean(5, kData), 3.0f);
  EXPECT_EQ(u::Min(5, kData), 1.0f);
  EXPECT_EQ(u::Max(5, kData), 5.0f);
  EXPECT_EQ(u::NormL1(5, kData), 15.0f);
  EXPECT_FLOAT_EQ(u::NormL2(5, kData), std::sqrt(61.0f));
  EXPECT_EQ(u::DotProduct(5, kData, kData), 61.0f);
  float value = 0;
  EXPECT_EQ(u::MinIndex(5, kData, &value), 1);
  EXPECT_EQ(value, 1.0f);
  EXPECT_EQ(u::MaxIndex(5, kData, &value), 3);
  EXPECT_EQ(value, 5.0f);
  EXPECT_EQ(u::MinIndex(5, kData, nullptr), 1);
  float low = 0;
  float high = 0;
  int low_index = -1;
  int high_index = -1;
  u::MinMaxIndex(5, kData, low, high, low_index, high_index);
  EXPECT_EQ(low, 1.0f);
  EXPECT_EQ(high, 5.0f);
  EXPECT_EQ(low_index, 1);
  EXPECT_EQ(high_index, 3);
  u::MinMax(5, kData, low, high);
  EXPECT_EQ(low, 1.0f);
  EXPECT_EQ(high, 5.0f);
  const double data_double[] = {1, 2, 3, 4};
  EXPECT_EQ(u::Sum(4, data_double), 10.0);
  EXPECT_EQ(u::Mean(4, data_double), 2.5);
  EXPECT_EQ(u::DotProduct(4, data_double, data_double), 30.0);
}

TEST(Reductions, RefusalsGiveZeroOrLeaveOutputs) {
  for (unsigned len : {0u, kTooLong}) {
    EXPECT_EQ(u::Sum(len, kData), 0.0f);
    EXPECT_EQ(u::Mean(len, kData), 0.0f);
    EXPECT_EQ(u::Min(len, kData), 0.0f);
    EXPECT_EQ(u::Max(len, kData), 0.0f);
    EXPECT_EQ(u::NormL1(len, kData), 0.0f);
    EXPECT_EQ(u::NormL2(len, kData), 0.0f);
    EXPECT_EQ(u::MaxAbs(kData, len), 0.0f);
    EXPECT_EQ(u::DotProduct(len, kData, kData), 0.0f);
    float value = 7;
    EXPECT_EQ(u::MinIndex(len, kData, &value), 0);
    EXPECT_EQ(value, 0.0f);
    value = 7;
    EXPECT_EQ(u::MaxIndex(len, kData, &value), 0);
    EXPECT_EQ(value, 0.0f);
    float low = 7;
    float high = 8;
    int low_index = -1;
    int high_index = -1;
    u::MinMaxIndex(len, kData, low, high, low_index, high_index);
    EXPECT_EQ(low_index, 0);
    EXPECT_EQ(high_index, 0);
    EXPECT_EQ(low, 7.0f);
    EXPECT_EQ(high, 8.0f);
    u::MinMax(len, kData, low, high);
    EXPECT_EQ(low, 7.0f);
    EXPECT_EQ(high, 8.0f);
    float deviation = 9;
    u::StandardDeviation(len, kData, deviation);
    EXPECT_EQ(deviation, 9.0f);
    EXPECT_FALSE(u::Equal(len, reinterpret_cast<const unsigned char*>(kData),
                          reinterpret_cast<const unsigned char*>(kData)));
  }
  EXPECT_EQ(u::Sum(5, static_cast<const float*>(nullptr)), 0.0f);
  EXPECT_EQ(u::DotProduct(5, kData, nullptr), 0.0f);
}

TEST(StandardDeviation, DividesByLenMinusOne) {
  std::vector<float> x(1024);
  for (int i = 0; i < 1024; ++i) x[i] = i % 2 ? 1.0f : -1.0f;
  float out = 0;
  u::StandardDeviation(1024, x.data(), out);
  EXPECT_FLOAT_EQ(out, std::sqrt(1024.0f / 1023.0f));
  std::vector<double> xd(x.begin(), x.end());
  double out_double = 0;
  u::StandardDeviation(1024, xd.data(), out_double);
  EXPECT_DOUBLE_EQ(out_double, std::sqrt(1024.0 / 1023.0));
  u::StandardDeviation(1, x.data(), out);
  EXPECT_EQ(out, 0.0f);
}

TEST(Equal, ComparesBytes) {
  const unsigned char a[] = {1, 2, 3};
  const unsigned char b[] = {1, 2, 4};
  EXPECT_TRUE(u::Equal(3, a, a));
  EXPECT_FALSE(u::Equal(3, a, b));
  EXPECT_TRUE(u::Equal(2, a, b));
  EXPECT_FALSE(u::Equal(3, a, nullptr));
}

// The same result for every alignment of the source and every length, NaN skipped.
TEST(MaxAbs, SameForEveryAlignmentAndLength) {
  EXPECT_EQ(u::MaxAbs(kData, 0), 0.0f);
  EXPECT_EQ(u::MaxAbs(nullptr, 5), 0.0f);
  alignas(16) float buffer[64 + 4] = {};
  for (int length = 1; length <= 40; ++length) {
    for (int offset = 0; offset < 4; ++offset) {
      float* src = buffer + offset;
      for (int i = 0; i < length; ++i) src[i] = static_cast<float>((i * 7) % 11) - 5.0f;
      src[length / 2] = -6.5f;
      if (length > 2) src[length - 1] = std::nanf("");
      EXPECT_EQ(u::MaxAbs(src, length), 6.5f) << length << " at " << offset;
    }
  }
}

TEST(Thresholds, FrontsPassTheirArgumentsInOrder) {
  std::vector<float> p = {0.5f, 1.0f, 1.5f};
  std::vector<float> dst(3);
  u::Threshold_GTVal(3, p.data(), dst.data(), 1.0f, 9.0f);
  EXPECT_EQ(dst, (std::vector<float>{0.5f, 1.0f, 9.0f}));
  u::Threshold_LTVal_InPlace(3, p.data(), 1.0f, -1.0f);
  EXPECT_EQ(p, (std::vector<float>{-1.0f, 1.0f, 1.5f}));
  std::vector<float> q = {-5, 0, 5};
  u::Trim(3, q.data(), 2, 2);
  EXPECT_EQ(q, (std::vector<float>{2, 2, 2}));
  q = {-5, 0, 5};
  u::Trim(3, q.data(), -1, 1);
  EXPECT_EQ(q, (std::vector<float>{-1, 0, 1}));
  const float src[] = {3};
  float out[] = {-7};
  u::Normalize(1, src, out, 1.0f, 0.0f);
  EXPECT_EQ(out[0], -7.0f);
  u::Normalize(1, src, out, 1.0f, 2.0f);
  EXPECT_EQ(out[0], 1.0f);
  std::vector<float> ramp(4);
  u::VectorSlope(4, ramp.data(), 1.0f, 0.5f);
  EXPECT_EQ(ramp, (std::vector<float>{1, 1.5f, 2, 2.5f}));
  std::vector<std::complex<float>> z = {{0, 0}, {1, 0}, {4, 0}, {0, 1}};
  u::Invert_Threshold_InPlace(4, z.data(), 2.0f);
  EXPECT_EQ(z, (std::vector<std::complex<float>>{{0.5f, 0}, {0.5f, 0}, {0.25f, 0}, {0, -0.5f}}));
  const float a[] = {1, 5};
  float b[] = {3, 2};
  u::MinEvery(2, a, b, dst.data());
  EXPECT_EQ(dst[0], 1.0f);
  EXPECT_EQ(dst[1], 2.0f);
  u::MaxEvery_InPlace(2, a, b);
  EXPECT_EQ(b[0], 3.0f);
  EXPECT_EQ(b[1], 5.0f);
}

TEST(ComplexHelpers, FrontsPassTheirArgumentsInOrder) {
  const float pairs[] = {3, 4, -1, 0, 0, -1, 0, 0};
  float magnitude[4];
  float phase[4];
  u::CartToPolar(4, pairs, magnitude, phase);
  EXPECT_EQ(magnitude[0], 5.0f);
  EXPECT_FLOAT_EQ(phase[1], 3.14159265f);
  EXPECT_FLOAT_EQ(phase[2], -1.57079633f);
  EXPECT_EQ(phase[3], 0.0f);
  EXPECT_EQ(magnitude[3], 0.0f);
  float back[8];
  u::PolarToCart(4, magnitude, phase, back);
  EXPECT_NEAR(back[0], 3.0f, 1e-6f);
  EXPECT_NEAR(back[1], 4.0f, 1e-6f);
  const std::complex<float> z[] = {{3, 4}, {-1, 0}};
  float power[2];
  u::PowerSpectr(2, z, power);
  EXPECT_EQ(power[0], 25.0f);
  u::Magnitude(2, z, power);
  EXPECT_EQ(power[0], 5.0f);
  const double re[] = {3};
  const double im[] = {4};
  double m[1];
  u::Magnitude(1, re, im, m);
  EXPECT_EQ(m[0], 5.0);
  float untouched[] = {-2};
  u::Magnitude(0, pairs, pairs, untouched);
  EXPECT_EQ(untouched[0], -2.0f);
}

}  // namespace
