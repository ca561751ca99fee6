// The lowpass design through the exported interface: the taps against a long-double windowed
// sinc built here from the formulas, the window folding, and each window's frequency response
// against the textbook figures of the window method.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "zalaccelerate/filter.h"

namespace {

using namespace zalaccelerate::filter;
using zalaccelerate::utility::DSPWindowType;

constexpr long double kPi = 3.141592653589793238462643383279502884L;

long double Window(int code, int n, int len) {
  const long double phase = 2 * kPi * n / (len - 1);
  const int mirror = std::min(n, len - 1 - n);
  switch (code) {
    case 0:
      return 2.0L * mirror / (len - 1);
    case 1:
      return 0.42L - 0.5L * std::cos(phase) + 0.08L * std::cos(2 * phase);
    case 2:
      return 0.54L - 0.46L * std::cos(phase);
    default:
      return 0.5L - 0.5L * std::cos(phase);
  }
}

std::vector<long double> Reference(double f, int len, int code, bool normalize) {
  std::vector<long double> h(len);
  const long double c = (len - 1) / 2.0L;
  long double sum = 0;
  for (int n = 0; n < len; ++n) {
    const long double t = 2 * f * (n - c);
    const long double sinc = t == 0 ? 1.0L : std::sin(kPi * t) / (kPi * t);
    h[n] = 2 * f * sinc * Window(code, n, len);
    sum += h[n];
  }
  if (normalize) {
    for (auto& x : h) x /= sum;
  }
  return h;
}

std::vector<double> Design(double f, unsigned len, int window, bool normalize) {
  std::vector<double> taps(len, 0.0);
  std::vector<unsigned char> buffer(FIRGetWorkBufferSize(len));
  GenerateLowpassFIRCoefficients(f, len, taps.data(), static_cast<DSPWindowType>(window), normalize,
                                 buffer.data());
  return taps;
}

TEST(LowpassApi, TapsMatchTheWindowedSincAndAreSymmetric) {
  for (const int window : {0, 1, 2, 3, 4, 9}) {
    for (const unsigned len : {5u, 6u, 31u, 64u, 101u}) {
      for (const double f : {0.05, 0.25, 0.45}) {
        for (const bool normalize : {false, true}) {
          const auto got = Design(f, len, window, normalize);
          const auto want = Reference(f, static_cast<int>(len), std::min(window, 3), normalize);
          for (unsigned n = 0; n < len; ++n) {
            ASSERT_NEAR(got[n], static_cast<double>(want[n]), 1e-14)
                << window << " " << len << " " << f << " " << n;
            ASSERT_EQ(got[n], got[len - 1 - n]);
          }
          if (normalize) {
            long double sum = 0;
            for (const double t : got) sum += t;
            EXPECT_NEAR(static_cast<double>(sum), 1.0, 1e-14);
          }
        }
      }
    }
  }
}

TEST(LowpassApi, EveryWindowFromHannOnDesignsWithHann) {
  const auto hann = Design(0.2, 33, 3, true);
  for (const int window : {4, 5, 1000, -1}) EXPECT_EQ(Design(0.2, 33, window, true), hann);
}

TEST(LowpassApi, RefusedArgumentsLeaveTheTapsUnwritten) {
  struct Case {
    double f;
    unsigned len;
    bool null_buffer;
  };
  const Case cases[] = {{0.2, 4, false},
                        {0.2, 0, false},
                        {0.0, 31, false},
                        {0.5, 31, false},
                        {-0.1, 31, false},
                        {0.2, 31, true},
                        {std::numeric_limits<double>::quiet_NaN(), 31, false},
                        {0.2, 0x80000000u, false}};
  for (const Case& c : cases) {
    std::vector<double> taps(64, 7.0);
    std::vector<unsigned char> buffer(8 * 64);
    GenerateLowpassFIRCoefficients(c.f, c.len, taps.data(), DSPWindowType::Hann, true,
                                   c.null_buffer ? nullptr : buffer.data());
    EXPECT_EQ(taps, std::vector<double>(64, 7.0)) << c.f << " " << c.len;
  }
  std::vector<unsigned char> buffer(8 * 64);
  GenerateLowpassFIRCoefficients(0.2, 31, nullptr, DSPWindowType::Hann, true, buffer.data());
}

// |H(f)| of the taps, in long double.
long double Gain(const std::vector<double>& h, long double f) {
  long double re = 0;
  long double im = 0;
  for (std::size_t n = 0; n < h.size(); ++n) {
    re += h[n] * std::cos(2 * kPi * f * n);
    im -= h[n] * std::sin(2 * kPi * f * n);
  }
  return std::sqrt(re * re + im * im);
}

// The window method's textbook figures, per window: peak approximation error in dB (the same in
// pass and stop band) and transition width times (tapsLen - 1), in cycles per sample.
struct Textbook {
  int window;
  double error_db;
  double transition;
};
constexpr Textbook kTextbook[] = {{0, -25, 3.05}, {1, -74, 5.5}, {2, -53, 3.3}, {3, -44, 3.1}};

TEST(LowpassApi, EachWindowReachesItsTextbookRippleAndStopband) {
  constexpr unsigned kLen = 101;
  constexpr double kCut = 0.2;
  for (const Textbook& t : kTextbook) {
    const auto h = Design(kCut, kLen, t.window, true);
    const double half = 0.6 * t.transition / (kLen - 1);
    long double ripple = 0;
    long double stop = 0;
    for (int i = 0; i <= 4000; ++i) {
      const long double f = 0.5L * i / 4000;
      if (f < kCut - half) ripple = std::max(ripple, std::fabs(Gain(h, f) - 1));
      if (f > kCut + half) stop = std::max(stop, Gain(h, f));
    }
    const double ripple_db = 20 * std::log10(static_cast<double>(ripple));
    const double stop_db = 20 * std::log10(static_cast<double>(stop));
    // Within a few dB of the textbook: as good, and not a different window's figure.
    EXPECT_LT(stop_db, t.error_db + 3) << t.window;
    EXPECT_GT(stop_db, t.error_db - 12) << t.window;
    EXPECT_LT(ripple_db, t.error_db + 3) << t.window;
  }
}

}  // namespace
