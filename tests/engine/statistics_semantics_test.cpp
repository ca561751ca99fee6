// The decisions of the reductions, through the dispatched engine at the run's level: the error
// bound of the fixed-order sums against a long double reference on adversarial data, the hints,
// first-occurrence ties and the NaN rule of the extremes, and the single-element deviation.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "engine/core/dispatch.h"

namespace zal::engine {
namespace {

constexpr int kDefaultHint = 0;
constexpr int kAccurateHint = 2;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// Data that punish a naive running sum: magnitudes over many octaves, both signs, and a large
// cancelling pair, so the exact sum is far below the sum of magnitudes.
template <class T>
std::vector<T> Adversarial(int n, std::uint32_t seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> mantissa(1.0, 2.0);
  std::uniform_int_distribution<int> octave(-20, 20);
  std::bernoulli_distribution negative(0.5);
  std::vector<T> x(n);
  for (T& v : x)
    v = static_cast<T>((negative(rng) ? -1 : 1) * std::ldexp(mantissa(rng), octave(rng)));
  x[n / 3] = static_cast<T>(1e7);
  x[2 * n / 3] = static_cast<T>(-1e7);
  return x;
}

struct Reference {
  long double sum = 0;
  long double magnitudes = 0;
};

template <class T, class Term>
Reference ExactSum(int n, Term term) {
  Reference r;
  for (int i = 0; i < n; ++i) {
    const long double t = term(i);
    r.sum += t;
    r.magnitudes += std::fabs(t);
  }
  return r;
}

// The bound of K fixed partials combined pairwise: each term passes at most n/K + log2 K
// roundings.
template <class A>
long double Bound(int n, long double magnitudes) {
  constexpr int kPartials = 256 / sizeof(A);
  constexpr int kCombineSteps = sizeof(A) == 4 ? 6 : 5;
  return (static_cast<long double>(n) / kPartials + kCombineSteps + 1) *
         std::numeric_limits<A>::epsilon() * magnitudes;
}

class Sums : public testing::TestWithParam<int> {};

TEST_P(Sums, StayWithinTheFixedOrderBound) {
  const int n = GetParam();
  const std::vector<float> x = Adversarial<float>(n, 7u + n);
  const std::vector<float> y = Adversarial<float>(n, 11u + n);
  const std::vector<double> xd = Adversarial<double>(n, 13u + n);
  const Reference sum = ExactSum<float>(n, [&](int i) { return x[i]; });
  const Reference dot =
      ExactSum<float>(n, [&](int i) { return x[i] * static_cast<long double>(y[i]); });
  const Reference squares =
      ExactSum<float>(n, [&](int i) { return x[i] * static_cast<long double>(x[i]); });
  const Reference sum_double = ExactSum<double>(n, [&](int i) { return xd[i]; });
  float result = 0;
  ASSERT_EQ(dispatch::SumF32(x.data(), n, &result, kDefaultHint), engStsNoErr);
  EXPECT_LE(std::fabs(result - sum.sum), Bound<float>(n, sum.magnitudes)) << "float sum";
  ASSERT_EQ(dispatch::SumF32(x.data(), n, &result, kAccurateHint), engStsNoErr);
  // Accumulated in double: only the final rounding to float is visible.
  EXPECT_LE(std::fabs(result - sum.sum),
            std::fabs(sum.sum) * 0x1p-24L + Bound<double>(n, sum.magnitudes))
      << "float sum, accurate hint";
  ASSERT_EQ(dispatch::DotProductF32(x.data(), y.data(), n, &result), engStsNoErr);
  // Each product rounds once more before it is added.
  EXPECT_LE(std::fabs(result - dot.sum), Bound<float>(n + 64, dot.magnitudes)) << "dot product";
  ASSERT_EQ(dispatch::NormL2F32(x.data(), n, &result), engStsNoErr);
  EXPECT_LE(std::fabs(result - std::sqrt(squares.sum)),
            std::sqrt(squares.sum) * (Bound<float>(n + 64, 1) + 0x1p-23L))
      << "L2 norm";
  double result_double = 0;
  ASSERT_EQ(dispatch::SumF64(xd.data(), n, &result_double), engStsNoErr);
  EXPECT_LE(std::fabs(result_double - sum_double.sum), Bound<double>(n, sum_double.magnitudes))
      << "double sum";
}

INSTANTIATE_TEST_SUITE_P(Lengths, Sums, testing::Values(1, 63, 64, 65, 1000, 100003, 1 << 20));

// The accurate hint keeps the deviation of data with a large offset, which float accumulation
// of the squared deviations around a float mean loses.
TEST(StandardDeviation, AccurateHintAccumulatesInDouble) {
  const int n = 4096;
  std::vector<float> x(n);
  for (int i = 0; i < n; ++i) x[i] = 10000.0f + static_cast<float>(i % 2);
  long double mean = 0;
  for (float v : x) mean += v;
  mean /= n;
  long double squares = 0;
  for (float v : x) squares += (v - mean) * (v - mean);
  const long double exact = std::sqrt(squares / (n - 1));
  float result = 0;
  ASSERT_EQ(dispatch::StdDevF32(x.data(), n, &result, kAccurateHint), engStsNoErr);
  EXPECT_LE(std::fabs(result - exact), exact * 0x1p-22L);
  double result_double = 0;
  const std::vector<double> xd(x.begin(), x.end());
  ASSERT_EQ(dispatch::StdDevF64(xd.data(), n, &result_double), engStsNoErr);
  EXPECT_LE(std::fabs(result_double - exact), exact * 0x1p-48L);
}

TEST(StandardDeviation, OfOneElementIsZero) {
  const float x = 42.0f;
  float result = -1;
  for (int hint : {kDefaultHint, kAccurateHint}) {
    ASSERT_EQ(dispatch::StdDevF32(&x, 1, &result, hint), engStsNoErr);
    EXPECT_EQ(result, 0.0f);
  }
}

struct ExtremeCase {
  const char* name;
  std::vector<float> data;
  int min_index;
  int max_index;
};

// Indices of every extreme function, and Min/Max/MinMax values, which are the elements at them.
void ExpectExtremes(const ExtremeCase& c) {
  SCOPED_TRACE(c.name);
  const int n = static_cast<int>(c.data.size());
  const float* src = c.data.data();
  float value = 0;
  int index = -1;
  ASSERT_EQ(dispatch::MinIndexF32(src, n, &value, &index), engStsNoErr);
  EXPECT_EQ(index, c.min_index);
  ASSERT_EQ(dispatch::MaxIndexF32(src, n, &value, &index), engStsNoErr);
  EXPECT_EQ(index, c.max_index);
  float low = 0;
  float high = 0;
  int low_index = -1;
  int high_index = -1;
  ASSERT_EQ(dispatch::MinMaxIndexF32(src, n, &low, &low_index, &high, &high_index), engStsNoErr);
  EXPECT_EQ(low_index, c.min_index);
  EXPECT_EQ(high_index, c.max_index);
  const auto same = [](float a, float b) {
    return (std::isnan(a) && std::isnan(b)) ||
           std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  };
  EXPECT_TRUE(same(low, src[c.min_index]));
  EXPECT_TRUE(same(high, src[c.max_index]));
  ASSERT_EQ(dispatch::MinF32(src, n, &value), engStsNoErr);
  EXPECT_TRUE(same(value, src[c.min_index]));
  ASSERT_EQ(dispatch::MaxF32(src, n, &value), engStsNoErr);
  EXPECT_TRUE(same(value, src[c.max_index]));
  ASSERT_EQ(dispatch::MinMaxF32(src, n, &low, &high), engStsNoErr);
  EXPECT_TRUE(same(low, src[c.min_index]));
  EXPECT_TRUE(same(high, src[c.max_index]));
}

// A long array of ones with the given values placed.
std::vector<float> Ones(int n, std::initializer_list<std::pair<int, float>> placed) {
  std::vector<float> x(n, 1.0f);
  for (auto [i, v] : placed) x[i] = v;
  return x;
}

TEST(Extremes, FirstOccurrenceAndNanRule) {
  const ExtremeCase cases[] = {
      {"ties", {3, 1, 1, 5, 5}, 1, 3},
      {"signed zeros", {0.0f, -0.0f, 0.0f}, 0, 0},
      {"negative zero first", {-0.0f, 0.0f}, 0, 0},
      {"NaN skipped", {kNan, 2, kNan, -3, kNan}, 3, 1},
      {"all NaN", {kNan, kNan, kNan}, 0, 0},
      {"infinities behind NaN", {kNan, kNan, -kInf, kInf}, 2, 3},
      {"only -Inf after NaN", {kNan, -kInf}, 1, 1},
      {"ties in later blocks", Ones(10000, {{1500, 9}, {7000, 9}, {3000, -9}, {9999, -9}}), 3000,
       1500},
      {"tie in the tail", Ones(1037, {{1030, 5}, {1036, 5}}), 0, 1030},
      {"extreme in the first element", Ones(5000, {{0, 7}, {4999, 7}}), 1, 0},
  };
  for (const ExtremeCase& c : cases) ExpectExtremes(c);
}

// Every position of a unique extreme, across a register and a block boundary.
TEST(Extremes, FindEveryPosition) {
  const int n = 1100;
  for (int at = 0; at < n; ++at) {
    std::vector<float> x(n, 0.5f);
    x[at] = 2.0f;
    x[n - 1 - at] = -2.0f;
    if (at == n - 1 - at) continue;
    float value = 0;
    int index = -1;
    ASSERT_EQ(dispatch::MaxIndexF32(x.data(), n, &value, &index), engStsNoErr);
    ASSERT_EQ(index, at);
    ASSERT_EQ(dispatch::MinIndexF32(x.data(), n, &value, &index), engStsNoErr);
    ASSERT_EQ(index, n - 1 - at);
  }
}

TEST(Equal, ComparesEveryByte) {
  std::vector<unsigned char> a(37, 0x5A);
  std::vector<unsigned char> b = a;
  int flag = -1;
  ASSERT_EQ(dispatch::EqualU8(a.data(), b.data(), 37, &flag), engStsNoErr);
  EXPECT_EQ(flag, 1);
  for (int at : {0, 7, 8, 31, 36}) {
    b = a;
    b[at] ^= 1;
    ASSERT_EQ(dispatch::EqualU8(a.data(), b.data(), 37, &flag), engStsNoErr);
    EXPECT_EQ(flag, 0) << "byte " << at;
  }
  EXPECT_EQ(dispatch::EqualU8(a.data(), nullptr, 37, &flag), engStsNullPtrErr);
  EXPECT_EQ(dispatch::EqualU8(a.data(), b.data(), 0, &flag), engStsSizeErr);
}

}  // namespace
}  // namespace zal::engine
