// The accuracy of the polar conversions against double-precision evaluation of the formulas, at
// the run's level: phases within 2 ulp of atan2, PolarToCart within 1 ulp of mag cos and mag sin,
// the special values of atan2, and split and interleaved magnitudes giving the same bits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "engine/core/dispatch.h"

namespace zal::engine {
namespace {

// |got - want| in units of the last place of want rounded to float (denormal spacing below the
// normal range).
double UlpDistance(float got, double want) {
  const float rounded = static_cast<float>(want);
  const double magnitude = std::fabs(static_cast<double>(rounded));
  const double ulp = magnitude < std::numeric_limits<float>::min()
                         ? std::ldexp(1.0, -149)
                         : std::ldexp(1.0, std::ilogb(magnitude) - 23);
  return std::fabs(got - want) / ulp;
}

TEST(CartToPolar, PhaseWithinTwoUlpOfAtan2) {
  std::mt19937 rng(2024);
  std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
  std::uniform_int_distribution<int> octave(-40, 40);
  const int n = 1 << 20;
  std::vector<float> pairs(2 * n);
  for (int i = 0; i < n; ++i) {
    const float y = std::ldexp(unit(rng), octave(rng));
    // Every other element has nearly equal parts, where the quotient is near 1.
    const float x = i % 2 ? y * (1.0f + 0.01f * unit(rng)) : std::ldexp(unit(rng), octave(rng));
    pairs[2 * i] = x;
    pairs[2 * i + 1] = y;
  }
  std::vector<float> magnitude(n);
  std::vector<float> phase(n);
  ASSERT_EQ(dispatch::CartToPolarF32(pairs.data(), magnitude.data(), phase.data(), n), engStsNoErr);
  double worst = 0;
  for (int i = 0; i < n; ++i) {
    const double x = pairs[2 * i];
    const double y = pairs[2 * i + 1];
    worst = std::max(worst, UlpDistance(phase[i], std::atan2(y, x)));
    const float rounded = std::sqrt(static_cast<float>(pairs[2 * i] * pairs[2 * i]) +
                                    static_cast<float>(pairs[2 * i + 1] * pairs[2 * i + 1]));
    ASSERT_EQ(magnitude[i], rounded) << i;
  }
  EXPECT_LE(worst, 2.0);
}

TEST(CartToPolar, SpecialValues) {
  constexpr float kInf = std::numeric_limits<float>::infinity();
  constexpr float kPi = 3.14159265f;
  const struct {
    float re;
    float im;
    float phase;  // its sign, and roughly its value
  } cases[] = {
      {0, 0, 0},
      {-1, 0, kPi},
      {0, -1, -kPi / 2},
      {0, 1, kPi / 2},
      {-0.0f, 0, kPi},
      {-0.0f, -0.0f, -kPi},
      {kInf, kInf, kPi / 4},
      {-kInf, 1, kPi},
      {1, -kInf, -kPi / 2},
      {-kInf, -kInf, -3 * kPi / 4},
      {5, 0, 0},
      {-3, -0.0f, -kPi},
  };
  for (const auto& c : cases) {
    const float pair[] = {c.re, c.im};
    float magnitude = -1;
    float phase = -1;
    ASSERT_EQ(dispatch::CartToPolarF32(pair, &magnitude, &phase, 1), engStsNoErr);
    EXPECT_LE(UlpDistance(phase, std::atan2(double{c.im}, double{c.re})), 2.0)
        << c.re << ", " << c.im;
    EXPECT_EQ(std::signbit(phase), std::signbit(c.phase)) << c.re << ", " << c.im;
  }
  const float nan_pair[] = {std::numeric_limits<float>::quiet_NaN(), 1};
  float magnitude;
  float phase;
  ASSERT_EQ(dispatch::CartToPolarF32(nan_pair, &magnitude, &phase, 1), engStsNoErr);
  EXPECT_TRUE(std::isnan(phase));
}

TEST(PolarToCart, WithinOneUlpOfTheFormulaInDouble) {
  std::mt19937 rng(77);
  std::uniform_real_distribution<float> phases(-1.6e6f, 1.6e6f);
  std::uniform_real_distribution<float> small(-7.0f, 7.0f);
  std::uniform_real_distribution<float> magnitudes(0.0f, 100.0f);
  const int n = 1 << 20;
  std::vector<float> magnitude(n);
  std::vector<float> phase(n);
  for (int i = 0; i < n; ++i) {
    magnitude[i] = magnitudes(rng);
    phase[i] = i % 4 ? small(rng) : phases(rng);
  }
  std::vector<float> pairs(2 * n);
  ASSERT_EQ(dispatch::PolarToCartF32(magnitude.data(), phase.data(), pairs.data(), n), engStsNoErr);
  double worst = 0;
  for (int i = 0; i < n; ++i) {
    worst = std::max(worst, UlpDistance(pairs[2 * i], magnitude[i] * std::cos(double{phase[i]})));
    worst =
        std::max(worst, UlpDistance(pairs[2 * i + 1], magnitude[i] * std::sin(double{phase[i]})));
  }
  EXPECT_LE(worst, 1.0);
}

TEST(PolarToCart, RoundTripThroughCartToPolar) {
  const int n = 1001;
  std::vector<float> magnitude(n);
  std::vector<float> phase(n);
  for (int i = 0; i < n; ++i) {
    magnitude[i] = 0.5f + static_cast<float>(i) / 7.0f;
    phase[i] = -3.14f + 6.28f * static_cast<float>(i) / n;
  }
  std::vector<float> pairs(2 * n);
  std::vector<float> magnitude_back(n);
  std::vector<float> phase_back(n);
  ASSERT_EQ(dispatch::PolarToCartF32(magnitude.data(), phase.data(), pairs.data(), n), engStsNoErr);
  ASSERT_EQ(dispatch::CartToPolarF32(pairs.data(), magnitude_back.data(), phase_back.data(), n),
            engStsNoErr);
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(magnitude_back[i], magnitude[i], magnitude[i] * 3e-7f) << i;
    EXPECT_NEAR(phase_back[i], phase[i], 1e-6f) << i;
  }
}

TEST(Magnitude, SplitAndInterleavedGiveTheSameBits) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<float> value(-1e3f, 1e3f);
  const int n = 257;
  std::vector<float> re(n);
  std::vector<float> im(n);
  std::vector<Complex32> z(n);
  for (int i = 0; i < n; ++i) {
    re[i] = value(rng);
    im[i] = value(rng);
    z[i] = {re[i], im[i]};
  }
  std::vector<float> split(n);
  std::vector<float> interleaved(n);
  ASSERT_EQ(dispatch::MagnitudeSplitF32(re.data(), im.data(), split.data(), n), engStsNoErr);
  ASSERT_EQ(dispatch::MagnitudeC32(z.data(), interleaved.data(), n), engStsNoErr);
  EXPECT_EQ(std::memcmp(split.data(), interleaved.data(), sizeof(float) * n), 0);
}

}  // namespace
}  // namespace zal::engine
