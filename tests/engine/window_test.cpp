// The windows at the run's level: every weight against a long-double evaluation of its formula,
// the refusals in the engine's order, and the values a user can check by hand.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/core/primitive_declarations.h"

namespace zal::engine {
namespace {

constexpr long double kPi = 3.141592653589793238462643383279502884L;

// |got - want| in units of the last place of want rounded to T.
template <class T>
double UlpDistance(T got, long double want) {
  const T rounded = static_cast<T>(want);
  if (rounded == 0) return got == 0 ? 0 : std::numeric_limits<double>::infinity();
  const int exponent = std::ilogb(rounded) - (std::numeric_limits<T>::digits - 1);
  return static_cast<double>(std::fabs(static_cast<long double>(got) - want) /
                             std::ldexp(1.0L, exponent));
}

// The cosines in the oracle are written in s = sin(pi n / (N - 1)), where long double keeps its
// relative accuracy down to the smallest weights: 0.5 - 0.5 cos(2t) = s^2, 0.54 - 0.46 cos(2t) =
// 0.08 + 0.92 s^2, and the Blackman sum is s^2 ((1 + 4 alpha) - 4 alpha s^2). Each is evaluated at
// the nearer end, where t <= pi/2 (the formulas are symmetric).
long double HalfAngle(long double n, long double last) {
  return kPi * std::fmin(n, last - n) / last;
}
long double HannWeight(long double n, long double last, long double) {
  const long double s = std::sin(HalfAngle(n, last));
  return s * s;
}
long double HammingWeight(long double n, long double last, long double) {
  const long double s = std::sin(HalfAngle(n, last));
  return 0.08L + 0.92L * s * s;
}
long double BlackmanWeight(long double n, long double last, long double alpha) {
  const long double s = std::sin(HalfAngle(n, last));
  return s * s * ((1 + 4 * alpha) - 4 * alpha * s * s);
}
long double BartlettWeight(long double n, long double last, long double) {
  return 2 * std::fmin(n, last - n) / last;
}
// The power series, all of whose terms are positive, to long double's precision.
long double BesselI0(long double x) {
  const long double y = x * x / 4;
  long double term = 1;
  long double sum = 1;
  for (int k = 1; term > 1e-22L * sum; ++k) {
    term *= y / (static_cast<long double>(k) * k);
    sum += term;
  }
  return sum;
}
long double KaiserWeight(long double n, long double last, long double alpha) {
  return BesselI0(alpha * std::sqrt(n * (last - n))) / BesselI0(alpha * last / 2);
}

template <class T>
struct Window {
  const char* name;
  EngStatus (*apply)(const T* src, T* dst, int n, T alpha);
  long double (*weight)(long double n, long double last, long double alpha);
};

template <class T>
const std::vector<Window<T>>& Windows();
template <>
const std::vector<Window<float>>& Windows() {
  static const std::vector<Window<float>> windows = {
      {"Bartlett",
       [](const float* s, float* d, int n, float) { return dispatch::WindowBartlettF32(s, d, n); },
       BartlettWeight},
      {"Hann",
       [](const float* s, float* d, int n, float) { return dispatch::WindowHannF32(s, d, n); },
       HannWeight},
      {"Hamming",
       [](const float* s, float* d, int n, float) { return dispatch::WindowHammingF32(s, d, n); },
       HammingWeight},
      {"Blackman", dispatch::WindowBlackmanF32, BlackmanWeight},
      {"Kaiser", dispatch::WindowKaiserF32, KaiserWeight},
  };
  return windows;
}
template <>
const std::vector<Window<double>>& Windows() {
  static const std::vector<Window<double>> windows = {
      {"Hann",
       [](const double* s, double* d, int n, double) { return dispatch::WindowHannF64(s, d, n); },
       HannWeight},
      {"Hamming",
       [](const double* s, double* d, int n, double) {
         return dispatch::WindowHammingF64(s, d, n);
       },
       HammingWeight},
      {"Blackman", dispatch::WindowBlackmanF64, BlackmanWeight},
      {"Kaiser", dispatch::WindowKaiserF64, KaiserWeight},
  };
  return windows;
}

constexpr int kLengths[] = {3,  4,  5,  6,  7,   8,   9,    15,   16,   17,   31,    32,
                            33, 63, 64, 65, 100, 127, 1000, 1001, 4096, 4097, 65536, 65537};
// Blackman: the classic window and the family's edge of no cancellation, plain Hann, and beyond.
constexpr double kBlackmanAlphas[] = {-0.16, -0.25, 0.0, 0.5};
// Kaiser shapes beta = alpha (N - 1) / 2 up to the largest accepted.
constexpr double kKaiserBetas[] = {0.5, 2.0, 5.0, 8.6, 14.0, 25.0, 38.0};

template <class T>
std::vector<double> ParametersOf(const char* name, int n) {
  if (std::strcmp(name, "Blackman") == 0) {
    return {std::begin(kBlackmanAlphas), std::end(kBlackmanAlphas)};
  }
  if (std::strcmp(name, "Kaiser") == 0) {
    std::vector<double> alphas;
    // Rounded to T first, so that the oracle sees the alpha the kernel does, and kept in range.
    for (double beta : kKaiserBetas)
      alphas.push_back(static_cast<T>(2 * beta / (n - 1) * 0.999999));
    return alphas;
  }
  return {0.0};
}

template <class T>
void ExpectWeightsWithinTwoUlp() {
  for (const Window<T>& window : Windows<T>()) {
    double worst = 0;
    for (int n : kLengths) {
      const std::vector<T> ones(n, T{1});
      std::vector<T> weights(n);
      for (double parameter : ParametersOf<T>(window.name, n)) {
        const T alpha = static_cast<T>(parameter);
        ASSERT_EQ(window.apply(ones.data(), weights.data(), n, alpha), engStsNoErr)
            << window.name << " " << n << " " << parameter;
        for (int i = 0; i < n; ++i) {
          const double distance = UlpDistance(weights[i], window.weight(i, n - 1.0L, alpha));
          worst = std::max(worst, distance);
          ASSERT_LE(distance, 2.0) << window.name << " n " << n << " alpha " << parameter << " at "
                                   << i << ": " << weights[i];
          ASSERT_EQ(weights[i], weights[n - 1 - i]) << window.name << " n " << n << " at " << i;
        }
      }
    }
    std::printf("%-9s %s: worst %.3f ulp\n", window.name, sizeof(T) == 4 ? "float " : "double",
                worst);
  }
}

TEST(Windows, FloatWeightsWithinTwoUlpOfTheFormula) {
  ExpectWeightsWithinTwoUlp<float>();
}
TEST(Windows, DoubleWeightsWithinTwoUlpOfTheFormula) {
  ExpectWeightsWithinTwoUlp<double>();
}

// The float raised-cosine windows carry their weights along chains of indices, re-anchored from
// time to time: the worst error over long windows, whose chains are the longest and whose first
// weights the smallest, and over lengths whose middle falls at a block's or an anchor's edge; and
// the portable variant's bits, which walks each index's chain alone.
TEST(Windows, FloatRaisedCosineChainsStayWithinTwoUlpOverLongWindows) {
  const std::vector<Window<float>> portable_windows = {
      {"Hann",
       [](const float* s, float* d, int n, float) { return portable::WindowHannF32(s, d, n); },
       HannWeight},
      {"Hamming",
       [](const float* s, float* d, int n, float) { return portable::WindowHammingF32(s, d, n); },
       HammingWeight},
      {"Blackman", portable::WindowBlackmanF32, BlackmanWeight},
  };
  constexpr int kChainLengths[] = {127,  128,  129,  255,     257,
                                   4100, 4223, 8319, 1 << 20, (1 << 22) - 3};
  for (const Window<float>& window : Windows<float>()) {
    if (std::strcmp(window.name, "Bartlett") == 0 || std::strcmp(window.name, "Kaiser") == 0) {
      continue;
    }
    double worst = 0;
    for (int n : kChainLengths) {
      const std::vector<float> ones(n, 1.0f);
      std::vector<float> weights(n);
      ASSERT_EQ(window.apply(ones.data(), weights.data(), n, -0.16f), engStsNoErr) << n;
      for (const Window<float>& portable_window : portable_windows) {
        if (std::strcmp(portable_window.name, window.name) != 0) continue;
        std::vector<float> reference(n);
        ASSERT_EQ(portable_window.apply(ones.data(), reference.data(), n, -0.16f), engStsNoErr);
        ASSERT_EQ(std::memcmp(weights.data(), reference.data(), n * sizeof(float)), 0)
            << window.name << " n " << n;
      }
      for (int i = 0; i <= n / 2; ++i) {
        const double distance = UlpDistance(weights[i], window.weight(i, n - 1.0L, -0.16f));
        worst = std::max(worst, distance);
        ASSERT_LE(distance, 2.0) << window.name << " n " << n << " at " << i;
        ASSERT_EQ(weights[i], weights[n - 1 - i]) << window.name << " n " << n << " at " << i;
      }
    }
    std::printf("%-9s float, long windows: worst %.3f ulp\n", window.name, worst);
  }
}

// The long double raised-cosine windows add a correction to each block's anchor: the worst error
// over lengths at and past the switch to that method, with the blocks meeting the middle at every
// phase, for each Blackman alpha; and the portable variant's bits.
TEST(Windows, DoubleRaisedCosineBlocksStayWithinTwoUlp) {
  const std::vector<Window<double>> portable_windows = {
      {"Hann",
       [](const double* s, double* d, int n, double) { return portable::WindowHannF64(s, d, n); },
       HannWeight},
      {"Hamming",
       [](const double* s, double* d, int n, double) {
         return portable::WindowHammingF64(s, d, n);
       },
       HammingWeight},
      {"Blackman", portable::WindowBlackmanF64, BlackmanWeight},
  };
  constexpr int kBlockLengths[] = {575,  576,   577,   578,    607,     608,
                                   640,  641,   1087,  2049,   3212,    3213,
                                   3214, 12345, 65599, 100003, 1 << 20, (1 << 21) + 1};
  for (const Window<double>& portable_window : portable_windows) {
    const Window<double>* window = nullptr;
    for (const Window<double>& w : Windows<double>()) {
      if (std::strcmp(w.name, portable_window.name) == 0) window = &w;
    }
    ASSERT_NE(window, nullptr);
    double worst = 0;
    for (int n : kBlockLengths) {
      const std::vector<double> ones(n, 1.0);
      std::vector<double> weights(n);
      std::vector<double> reference(n);
      for (double alpha : ParametersOf<double>(window->name, n)) {
        ASSERT_EQ(window->apply(ones.data(), weights.data(), n, alpha), engStsNoErr) << n;
        ASSERT_EQ(portable_window.apply(ones.data(), reference.data(), n, alpha), engStsNoErr);
        ASSERT_EQ(std::memcmp(weights.data(), reference.data(), n * sizeof(double)), 0)
            << window->name << " n " << n << " alpha " << alpha;
        for (int i = 0; i <= n / 2; ++i) {
          const double distance = UlpDistance(weights[i], window->weight(i, n - 1.0L, alpha));
          worst = std::max(worst, distance);
          ASSERT_LE(distance, 2.0)
              << window->name << " n " << n << " alpha " << alpha << " at " << i;
          ASSERT_EQ(weights[i], weights[n - 1 - i]) << window->name << " n " << n << " at " << i;
        }
      }
    }
    std::printf("%-9s double, long windows: worst %.3f ulp\n", window->name, worst);
  }
}

// The weights a user can check by hand, applied to ones.
TEST(Windows, ValuesByHand) {
  struct Case {
    const char* name;
    int n;
    float alpha;
    std::vector<float> weights;
  };
  const Case cases[] = {
      {"Hann", 5, 0, {0, 0.5f, 1, 0.5f, 0}},
      {"Hamming", 5, 0, {0.08f, 0.54f, 1, 0.54f, 0.08f}},
      {"Bartlett", 5, 0, {0, 0.5f, 1, 0.5f, 0}},
      {"Bartlett", 4, 0, {0, 2.0f / 3, 2.0f / 3, 0}},
      {"Blackman", 3, -0.16f, {0, 1, 0}},
      {"Blackman", 5, -0.16f, {0, 0.34f, 1, 0.34f, 0}},
      {"Kaiser", 4, 0, {1, 1, 1, 1}},
  };
  for (const Case& c : cases) {
    for (const Window<float>& window : Windows<float>()) {
      if (std::strcmp(window.name, c.name) != 0) continue;
      const std::vector<float> ones(c.n, 1.0f);
      std::vector<float> got(c.n);
      ASSERT_EQ(window.apply(ones.data(), got.data(), c.n, c.alpha), engStsNoErr) << c.name;
      for (int i = 0; i < c.n; ++i) {
        EXPECT_LE(UlpDistance(got[i], c.weights[i]), 1.0) << c.name << " " << c.n << " at " << i;
      }
    }
  }
  // The double Hann and Hamming weights too, at the ends and the centre.
  const std::vector<double> ones(5, 1.0);
  std::vector<double> got(5);
  ASSERT_EQ(dispatch::WindowHannF64(ones.data(), got.data(), 5), engStsNoErr);
  EXPECT_EQ(got[0], 0.0);
  EXPECT_EQ(got[4], 0.0);
  EXPECT_LE(UlpDistance(got[2], 1.0L), 2.0);
  ASSERT_EQ(dispatch::WindowHammingF64(ones.data(), got.data(), 5), engStsNoErr);
  EXPECT_EQ(got[0], 0.08);
  EXPECT_LE(UlpDistance(got[2], 1.0L), 2.0);
}

// Refusals in order, each leaving the destination as it was.
TEST(Windows, RefusalsInOrderLeaveTheDestinationAlone) {
  constexpr float kInf = std::numeric_limits<float>::infinity();
  struct Case {
    const char* name;
    bool null_src;
    int n;
    float alpha;
    EngStatus status;
  };
  const Case cases[] = {
      {"Hann", true, 0, 0, engStsNullPtrErr},
      {"Hann", false, 2, 0, engStsSizeErr},
      {"Hann", false, -1, 0, engStsSizeErr},
      {"Hann", false, INT_MIN, 0, engStsSizeErr},
      {"Hamming", false, 2, 0, engStsSizeErr},
      {"Bartlett", false, 2, 0, engStsSizeErr},
      {"Bartlett", false, 1, 0, engStsSizeErr},
      {"Blackman", false, 2, -0.16f, engStsSizeErr},
      {"Kaiser", true, 8, kInf, engStsNullPtrErr},
      {"Kaiser", false, 0, kInf, engStsSizeErr},
      {"Kaiser", false, INT_MIN, 0, engStsSizeErr},
      {"Kaiser", false, 8, kInf, engStsHugeWinErr},
      {"Kaiser", false, 8, -11, engStsHugeWinErr},
      {"Kaiser", false, 78, 1, engStsHugeWinErr},  // beta 38.5
      {"Kaiser", false, 2, 77, engStsHugeWinErr},
  };
  for (const Case& c : cases) {
    for (const Window<float>& window : Windows<float>()) {
      if (std::strcmp(window.name, c.name) != 0) continue;
      const std::vector<float> src(80, 3.0f);
      std::vector<float> dst(80, 7.0f);
      EXPECT_EQ(window.apply(c.null_src ? nullptr : src.data(), dst.data(), c.n, c.alpha), c.status)
          << c.name << " n " << c.n;
      EXPECT_EQ(dst, std::vector<float>(80, 7.0f)) << c.name << " n " << c.n;
    }
  }
}

TEST(Windows, KaiserEdges) {
  const std::vector<float> src = {2.5f, -1.0f, 4.0f, 0.25f, 8.0f, -3.0f, 1.5f};
  std::vector<float> dst(src.size());
  // alpha 0: every weight 1.
  ASSERT_EQ(dispatch::WindowKaiserF32(src.data(), dst.data(), 7, 0.0f), engStsNoErr);
  EXPECT_EQ(dst, src);
  // Length 1 copies, whatever alpha (beta is 0).
  dst.assign(src.size(), 0.0f);
  ASSERT_EQ(dispatch::WindowKaiserF32(src.data(), dst.data(), 1, 1e30f), engStsNoErr);
  EXPECT_EQ(dst[0], 2.5f);
  EXPECT_EQ(dst[1], 0.0f);
  // beta exactly 38 is accepted; the centre keeps weight 1 exactly.
  std::vector<float> ones(77, 1.0f);
  std::vector<float> weights(77);
  ASSERT_EQ(dispatch::WindowKaiserF32(ones.data(), weights.data(), 77, 1.0f), engStsNoErr);
  EXPECT_EQ(weights[38], 1.0f);
  EXPECT_LE(UlpDistance(weights[0], 1 / BesselI0(38)), 2.0);
  // A NaN alpha passes the size check (no comparison holds) and makes every weight NaN.
  ASSERT_EQ(
      dispatch::WindowKaiserF32(src.data(), dst.data(), 7, std::numeric_limits<float>::quiet_NaN()),
      engStsNoErr);
  for (float x : dst) EXPECT_TRUE(std::isnan(x));
}

TEST(Windows, InPlaceGivesTheSameResult) {
  for (int n : {3, 4, 33, 1000, 4097}) {
    std::vector<float> src(n);
    for (int i = 0; i < n; ++i) src[i] = std::sin(0.37f * i) + 0.1f * (i % 7);
    for (const Window<float>& window : Windows<float>()) {
      const float alpha = std::strcmp(window.name, "Kaiser") == 0 ? 10.0f / n : -0.16f;
      std::vector<float> separate(n);
      ASSERT_EQ(window.apply(src.data(), separate.data(), n, alpha), engStsNoErr);
      std::vector<float> in_place = src;
      ASSERT_EQ(window.apply(in_place.data(), in_place.data(), n, alpha), engStsNoErr);
      EXPECT_EQ(in_place, separate) << window.name << " " << n;
    }
  }
}

}  // namespace
}  // namespace zal::engine
