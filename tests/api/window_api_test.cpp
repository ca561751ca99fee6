// The window functions through the exported interface: the forwarding of every overload, the
// silent refusals, and the double Bartlett window's trip through single precision.
#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

using namespace zalaccelerate::utility;

TEST(WindowApi, WindowTypeEnumeratesTheFourWindowsIn32Bits) {
  static_assert(sizeof(DSPWindowType) == 4);
  static_assert(std::is_same_v<std::underlying_type_t<DSPWindowType>, int>);
  EXPECT_EQ(Bartlett, 0);
  EXPECT_EQ(Blackman, 1);
  EXPECT_EQ(Hamming, 2);
  EXPECT_EQ(Hann, 3);
}

TEST(WindowApi, EveryOverloadReachesItsWindow) {
  const std::vector<float> ones(5, 1.0f);
  const std::vector<double> ones_double(5, 1.0);
  std::vector<float> got(5);
  std::vector<double> got_double(5);
  WindowHann(5, ones.data(), got.data());
  EXPECT_EQ(got, (std::vector<float>{0, 0.5f, 1, 0.5f, 0}));
  WindowHamming(5, ones.data(), got.data());
  EXPECT_EQ(got[0], 0.08f);
  WindowBlackman(3, ones.data(), got.data(), -0.16f);
  EXPECT_EQ(got[1], 1.0f);
  WindowKaiser(5, ones.data(), got.data(), 0.0f);
  EXPECT_EQ(got, ones);
  WindowBartlett(5, ones.data(), got.data());
  EXPECT_EQ(got, (std::vector<float>{0, 0.5f, 1, 0.5f, 0}));

  WindowHann(5, ones_double.data(), got_double.data());
  EXPECT_EQ(got_double[0], 0.0);
  EXPECT_NEAR(got_double[1], 0.5, 1e-15);
  WindowHamming(5, ones_double.data(), got_double.data());
  EXPECT_EQ(got_double[0], 0.08);
  WindowBlackman(3, ones_double.data(), got_double.data(), -0.16);
  EXPECT_NEAR(got_double[1], 1.0, 1e-15);
  WindowKaiser(5, ones_double.data(), got_double.data(), 0.0);
  EXPECT_EQ(got_double, ones_double);
  WindowBartlett(5, ones_double.data(), got_double.data());
  EXPECT_EQ(got_double, (std::vector<double>{0, 0.5, 1, 0.5, 0}));
}

TEST(WindowApi, RefusedCallsWriteNothing) {
  const std::vector<float> src(80, 3.0f);
  const std::vector<float> untouched(80, 7.0f);
  std::vector<float> dst = untouched;
  for (unsigned len : {0u, 2u, 0x80000000u, 0xFFFFFFFFu}) {
    WindowHann(len, src.data(), dst.data());
    WindowHamming(len, src.data(), dst.data());
    WindowBlackman(len, src.data(), dst.data(), -0.16f);
    WindowBartlett(len, src.data(), dst.data());
  }
  WindowKaiser(0, src.data(), dst.data(), 1.0f);
  WindowKaiser(0x80000000u, src.data(), dst.data(), 0.0f);
  WindowKaiser(78, src.data(), dst.data(), 1.0f);  // beta 38.5
  WindowHann(8, nullptr, dst.data());
  WindowKaiser(8, src.data(), nullptr, 1.0f);
  EXPECT_EQ(dst, untouched);

  const std::vector<double> src_double(80, 3.0);
  const std::vector<double> untouched_double(80, 7.0);
  std::vector<double> dst_double = untouched_double;
  WindowBartlett(0, src_double.data(), dst_double.data());
  WindowBartlett(0x80000000u, src_double.data(), dst_double.data());
  WindowBartlett(8, src_double.data(), nullptr);
  WindowHann(2, src_double.data(), dst_double.data());
  EXPECT_EQ(dst_double, untouched_double);
}

// The double window is the float one's, converted: equal to float accuracy, and in the last
// digits different from the weights computed in double.
TEST(WindowApi, DoubleBartlettCarriesSinglePrecision) {
  constexpr unsigned kLen = 7;
  std::vector<double> src(kLen);
  std::vector<float> src_float(kLen);
  for (unsigned i = 0; i < kLen; ++i) {
    src[i] = 1.0 + 0.1 * i;
    src_float[i] = static_cast<float>(src[i]);
  }
  std::vector<double> got(kLen);
  std::vector<float> want(kLen);
  WindowBartlett(kLen, src.data(), got.data());
  WindowBartlett(kLen, src_float.data(), want.data());
  bool any_differs_from_double = false;
  for (unsigned i = 0; i < kLen; ++i) {
    EXPECT_EQ(got[i], static_cast<double>(want[i])) << i;
    const double exact = src[i] * 2.0 * std::fmin(i, kLen - 1 - i) / (kLen - 1);
    EXPECT_NEAR(got[i], exact, 1e-6 * std::fabs(exact)) << i;
    any_differs_from_double |= got[i] != exact;
  }
  EXPECT_TRUE(any_differs_from_double);

  // In place, as for every window.
  std::vector<double> in_place = src;
  WindowBartlett(kLen, in_place.data(), in_place.data());
  EXPECT_EQ(in_place, got);
}

// A length the float window refuses still passes through the temporary: dst receives src
// rounded to float.
TEST(WindowApi, DoubleBartlettOfOneOrTwoElementsRoundsToFloat) {
  const std::vector<double> src = {0.1, -1.0 / 3};
  for (unsigned len : {1u, 2u}) {
    std::vector<double> dst(2, 7.0);
    WindowBartlett(len, src.data(), dst.data());
    for (unsigned i = 0; i < 2; ++i) {
      EXPECT_EQ(dst[i], i < len ? static_cast<double>(static_cast<float>(src[i])) : 7.0)
          << len << " " << i;
    }
  }
}

}  // namespace
