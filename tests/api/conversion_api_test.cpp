// Sample format conversion through the shared library: the boundaries of every rule, binary16
// both ways over all 65536 patterns against a decoder written here, the caller's floating-point
// control state left as it was, the fused (de)interleaving conversions against Convert plus a
// plain (de)interleaving loop, and refused calls writing nothing.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

namespace u = zalaccelerate::utility;
using zalcore::utility::int24_t;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr unsigned kFlushToZero = 0x8000;
constexpr unsigned kDenormalsAreZero = 0x40;
constexpr unsigned kRoundTowardZero = 0x6000;
constexpr unsigned kRoundDown = 0x2000;

// Runs body with the given MXCSR control bits in force, and checks that they are still in force
// afterwards; the caller's register is restored on exit.
template <class Body>
void UnderControl(unsigned control, Body body) {
  const unsigned saved = _mm_getcsr();
  _mm_setcsr((saved & ~0xFFC0u) | control | 0x1F80);
  body();
  EXPECT_EQ(_mm_getcsr() & 0xFFC0u, (control | 0x1F80) & 0xFFC0u) << "control state changed";
  _mm_setcsr(saved);
}
constexpr unsigned kControls[] = {
    0,         kFlushToZero, kDenormalsAreZero, kFlushToZero | kDenormalsAreZero, kRoundTowardZero,
    kRoundDown};

struct FloatCase {
  float x;
  int scale;
  bool round;
  int want;
};

template <class T>
void ExpectConverted(const std::vector<FloatCase>& cases) {
  for (unsigned control : kControls) {
    UnderControl(control, [&] {
      for (const FloatCase& c : cases) {
        T got{};
        u::Convert(1, &c.x, &got, c.scale, c.round);
        EXPECT_EQ(static_cast<int>(got), c.want)
            << c.x << " scale " << c.scale << " round " << c.round << " MXCSR control 0x"
            << std::hex << control;
      }
    });
  }
}

TEST(ConvertFloatToShort, RoundsTruncatesAndSaturates) {
  ExpectConverted<short>({
      {2.5f, 0, true, 3},           {2.5f, 0, false, 2},          {-2.5f, 0, true, -3},
      {-2.5f, 0, false, -2},        {40000.0f, 0, false, 32767},  {-40000.0f, 0, false, -32768},
      {32767.0f, 0, true, 32767},   {32767.5f, 0, true, 32767},   {32768.0f, 0, false, 32767},
      {-32768.0f, 0, true, -32768}, {-32768.5f, 0, true, -32768}, {-32769.0f, 0, false, -32768},
      {1.0f, -15, false, 32767},    {-1.0f, -15, false, -32768},  {0.5f, -1, false, 1},
      {3.0f, 1, true, 2},           {3.0f, 1, false, 1},          {kNaN, 0, true, -32768},
      {kNaN, 0, false, -32768},     {kInf, 0, false, 32767},      {-kInf, 0, true, -32768},
      {1e-40f, 0, true, 0},         {-0.0f, 0, true, 0},          {1.0f, 128, false, 0},
      {1.0f, 127, false, 0},        {1.0f, -200, false, 32767},   {3e9f, 0, false, 32767},
      {-3e9f, 0, false, -32768},
  });
}

// The half is added in the caller's rounding mode: to nearest, a sum can round up to the next
// integer (just below a half) or to even (above 2^23).
TEST(ConvertFloatToInteger, AddedHalfRoundsInTheCallersMode) {
  const float below_half = 0.49999997f;
  const float odd = 8388609.0f;
  short s = 0;
  int i = 0;
  u::Convert(1, &below_half, &s, 0, true);
  EXPECT_EQ(s, 1);
  u::Convert(1, &odd, &i, 0, true);
  EXPECT_EQ(i, 8388610);
  UnderControl(kRoundTowardZero, [&] {
    u::Convert(1, &below_half, &s, 0, true);
    u::Convert(1, &odd, &i, 0, true);
  });
  EXPECT_EQ(s, 0);
  EXPECT_EQ(i, 8388609);
}

TEST(ConvertFloatToInt, SaturatesAtTwoToThe31) {
  ExpectConverted<int>({
      {2147483520.0f, 0, false, 2147483520},
      {2147483648.0f, 0, false, 2147483647},
      {2147483648.0f, 0, true, 2147483647},
      {-2147483648.0f, 0, false, -2147483647 - 1},
      {-2147483904.0f, 0, true, -2147483647 - 1},
      {1.0f, -31, false, 2147483647},
      {-1.0f, -31, true, -2147483647 - 1},
      {kNaN, 0, false, -2147483647 - 1},
      {kInf, 0, true, 2147483647},
      {-1.5f, 0, true, -2},
      {1.5f, 0, false, 1},
  });
}

TEST(ConvertFloatToByte, SaturatesToItsRange) {
  ExpectConverted<unsigned char>({
      {255.0f, 0, false, 255},
      {255.5f, 0, true, 255},
      {256.0f, 0, false, 255},
      {-1.0f, 0, false, 0},
      {-0.5f, 0, true, 0},
      {0.5f, 0, true, 1},
      {kNaN, 0, true, 0},
      {1.0f, -8, false, 255},
      {-kInf, 0, false, 0},
  });
}

TEST(ConvertFloatToInt24, TwoRules) {
  ExpectConverted<int24_t>({
      // Truncating: the library's own rule, with +-1.0 limits only when scaled.
      {1.0f, -23, false, 8388607},
      {-1.0f, -23, false, -8388608},
      {2.0f, -23, false, 8388607},
      {0.5f, -23, false, 4194304},
      {3.0e6f, 0, false, 3000000},
      {1.0e7f, 0, false, 8388607},
      {-1.0e7f, 0, false, -8388608},
      {2.5f, 0, false, 2},
      {3.5f, 0, false, 3},
      {-3.5f, 0, false, -3},
      {kNaN, 0, false, -8388608},
      {kNaN, -23, false, -8388608},
      {8388607.5f, 0, false, 8388607},
      {1.0f, -24, false, 8388607},
      {0.99999994f, -23, false, 8388607},
      {2.0f, 1, false, 0},
      // Rounding: limited, then ties to even, whatever rounding the caller set.
      {2.5f, 0, true, 2},
      {3.5f, 0, true, 4},
      {-2.5f, 0, true, -2},
      {-3.5f, 0, true, -4},
      {1.0f, -23, true, 8388607},
      {-1.0f, -23, true, -8388608},
      {8388607.5f, 0, true, 8388607},
      {kInf, 0, true, 8388607},
      {-kInf, 0, true, -8388608},
      {kNaN, 0, true, -8388608},
      {0.5f, 0, true, 0},
      {1.5f, 0, true, 2},
  });
}

TEST(ConvertDoubleToInt, RoundsAndSaturates) {
  struct Case {
    double x;
    int scale;
    bool round;
    int want;
  };
  const Case cases[] = {{2147483647.4, 0, true, 2147483647},
                        {2147483647.5, 0, true, 2147483647},
                        {2147483648.0, 0, false, 2147483647},
                        {-2147483648.5, 0, true, -2147483647 - 1},
                        {-2147483649.0, 0, false, -2147483647 - 1},
                        {2.5, 0, true, 3},
                        {-2.5, 0, false, -2},
                        {1.0, -31, false, 2147483647},
                        {std::nan(""), 0, true, -2147483647 - 1},
                        {0.75, -2, false, 3}};
  for (const Case& c : cases) {
    int got = 0;
    u::Convert(1, &c.x, &got, c.scale, c.round);
    EXPECT_EQ(got, c.want) << c.x;
  }
}

TEST(ConvertToFloat, EveryShortAndByteIsExact) {
  std::vector<short> shorts(65536);
  for (int i = 0; i < 65536; ++i) shorts[i] = static_cast<short>(i - 32768);
  std::vector<float> floats(65536);
  u::Convert(65536, shorts.data(), floats.data(), 0);
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(floats[i], static_cast<float>(i - 32768));
  u::Convert(65536, shorts.data(), floats.data(), 15);
  for (int i = 0; i < 65536; ++i)
    ASSERT_EQ(floats[i], std::ldexp(static_cast<float>(i - 32768), -15));
  std::vector<unsigned char> bytes(256);
  for (int i = 0; i < 256; ++i) bytes[i] = static_cast<unsigned char>(i);
  u::Convert(256, bytes.data(), floats.data());
  for (int i = 0; i < 256; ++i) ASSERT_EQ(floats[i], static_cast<float>(i));
  const short two = 2;
  float one = 0;
  u::Convert(1, &two, &one, 1);
  EXPECT_EQ(one, 1.0f);
}

TEST(ConvertInt24, RangeEndsAndScales) {
  const int24_t ends[] = {int24_t(-8388608), int24_t(8388607), int24_t(-1), int24_t(0)};
  float floats[4];
  int ints[4];
  u::Convert(4, ends, floats, 0);
  u::Convert(4, ends, ints);
  EXPECT_EQ(floats[0], -8388608.0f);
  EXPECT_EQ(floats[1], 8388607.0f);
  EXPECT_EQ(ints[0], -8388608);
  EXPECT_EQ(ints[1], 8388607);
  EXPECT_EQ(ints[2], -1);
  u::Convert(4, ends, floats, 23);
  EXPECT_EQ(floats[0], -1.0f);
  EXPECT_EQ(floats[1], 8388607.0f / 8388608.0f);
  // The factor is the float nearest 2^-scale: 2^-149 at 149, 0 from 151 on, +Inf below -127.
  u::Convert(4, ends, floats, 149);
  EXPECT_EQ(floats[1], 8388607.0f * 0x1p-149f);
  u::Convert(4, ends, floats, 151);
  EXPECT_EQ(floats[1], 0.0f);
  u::Convert(4, ends, floats, -128);
  EXPECT_EQ(floats[1], kInf);
  EXPECT_TRUE(std::isnan(floats[3]));

  const int wide[] = {-2147483647 - 1, 2147483647, 256, -257, 8388607, 8388608};
  int24_t narrow[6];
  u::Convert(6, wide, narrow, 8);
  EXPECT_EQ(int{narrow[0]}, -8388608);
  EXPECT_EQ(int{narrow[1]}, 8388607);
  EXPECT_EQ(int{narrow[2]}, 1);
  EXPECT_EQ(int{narrow[3]}, -1);  // toward zero
  u::Convert(6, wide, narrow, 0);
  EXPECT_EQ(int{narrow[4]}, 8388607);
  EXPECT_EQ(int{narrow[5]}, 8388607);
}

// Long arrays through the one-pass scaled path: each sample's exact float times the float nearest
// 2^-scale, one rounding, whatever the length's tail; the bytes after the array stay as they were.
TEST(ConvertInt24, ScaledLongArraysMatchAProductPerSample) {
  const int scales[] = {1, 8, 15, 23, 31, -8, -23, 126, 140, 149, 150, -127};
  const unsigned lengths[] = {1, 15, 16, 47, 193, 4099};
  std::mt19937 rng(24);
  std::uniform_int_distribution<int> value(int24_t::kMin, int24_t::kMax);
  for (const unsigned len : lengths) {
    std::vector<int24_t> src(len);
    for (int24_t& x : src) x = int24_t(value(rng));
    src[0] = int24_t(int24_t::kMin);
    for (const int scale : scales) {
      SCOPED_TRACE(testing::Message() << "len " << len << ", scale " << scale);
      const float factor = static_cast<float>(std::ldexp(1.0, -scale));
      std::vector<float> dst(len + 4, 42.0f);
      u::Convert(len, src.data(), dst.data(), scale);
      for (unsigned i = 0; i < len; ++i) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(dst[i]),
                  std::bit_cast<std::uint32_t>(static_cast<float>(int{src[i]}) * factor))
            << "at " << i;
      }
      for (unsigned i = len; i < len + 4; ++i) ASSERT_EQ(dst[i], 42.0f);
    }
  }
}

// Whole-register stores run ahead of the samples inside the array; the array's last bytes and
// the ones after it must still be exact, for lengths around every register multiple.
TEST(ConvertFloatToInt24, StoresEndAtTheArraysEnd) {
  for (unsigned len = 1; len <= 200; ++len) {
    std::vector<float> src(len);
    for (unsigned i = 0; i < len; ++i) src[i] = (i % 2 ? -1.0f : 1.0f) * (0.25f + 0.003f * i);
    for (const bool round : {false, true}) {
      std::vector<int24_t> dst(len + 8, int24_t(0x5A5A5A));
      u::Convert(len, src.data(), dst.data(), -23, round);
      for (unsigned i = 0; i < len; ++i) {
        const double scaled = std::ldexp(static_cast<double>(src[i]), 23);
        const double expected = round ? std::nearbyint(scaled) : std::trunc(scaled);
        ASSERT_EQ(int{dst[i]}, static_cast<int>(expected)) << "len " << len << " at " << i;
      }
      for (unsigned i = len; i < len + 8; ++i) ASSERT_EQ(int{dst[i]}, 0x5A5A5A) << "len " << len;
    }
  }
}

TEST(ConvertFloatDouble, WidensExactlyAndNarrowsInTheCallersMode) {
  const float f[] = {1e-45f, -kInf, 3.4028235e38f, 0.1f};
  double d[4];
  u::Convert(4, f, d);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(d[i], static_cast<double>(f[i]));
  const double back[] = {0.1, 1e300, -1e-300, 1.0 + 0x1p-30};
  float narrowed[4];
  UnderControl(kRoundTowardZero, [&] {
    u::Convert(4, back, narrowed);
    EXPECT_EQ(narrowed[1], std::numeric_limits<float>::max());
    EXPECT_EQ(narrowed[3], 1.0f);
  });
  u::Convert(4, back, narrowed);
  EXPECT_EQ(narrowed[0], 0.1f);
  EXPECT_EQ(narrowed[1], kInf);
}

// ---- Binary16 -----------------------------------------------------------------------------------

// Binary16 read field by field, independent of the library's bit manipulations.
double DecodeHalf(unsigned short h) {
  const int exponent = (h >> 10) & 0x1F;
  const int fraction = h & 0x3FF;
  const double sign = (h & 0x8000) ? -1.0 : 1.0;
  if (exponent == 0x1F) return fraction ? std::nan("") : sign * HUGE_VAL;
  if (exponent == 0) return sign * fraction * std::ldexp(1.0, -24);
  return sign * (1024 + fraction) * std::ldexp(1.0, exponent - 25);
}

TEST(Half, EveryPatternToFloatIsExact) {
  std::vector<unsigned short> halves(65536);
  for (int i = 0; i < 65536; ++i) halves[i] = static_cast<unsigned short>(i);
  std::vector<float> floats(65536);
  for (unsigned control : kControls) {
    UnderControl(control, [&] { u::ConvertHalf2Float(halves.data(), floats.data(), 65536); });
    for (int i = 0; i < 65536; ++i) {
      const double want = DecodeHalf(halves[i]);
      if (std::isnan(want)) {
        const auto bits = std::bit_cast<std::uint32_t>(floats[i]);
        // Quiet, with the payload moved up.
        ASSERT_EQ(bits, ((i & 0x8000u) << 16) | 0x7FC00000u | ((i & 0x3FFu) << 13)) << i;
      } else {
        ASSERT_EQ(static_cast<double>(floats[i]), want) << "half 0x" << std::hex << i;
        ASSERT_EQ(std::signbit(floats[i]), (i & 0x8000) != 0) << i;
      }
    }
  }
}

// The largest half not above |x| in magnitude, with x's sign: rounding toward zero by search.
unsigned short TowardZeroReference(float x, const std::vector<double>& positive) {
  const unsigned short sign = std::signbit(x) ? 0x8000 : 0;
  const double magnitude = std::fabs(static_cast<double>(x));
  if (std::isinf(x)) return sign | 0x7C00;
  const auto above = std::upper_bound(positive.begin(), positive.end(), magnitude);
  return static_cast<unsigned short>(sign | (above - positive.begin() - 1));
}

TEST(Half, FromFloatRoundsTowardZero) {
  std::vector<double> positive(0x7C00);
  for (int h = 0; h < 0x7C00; ++h) positive[h] = DecodeHalf(static_cast<unsigned short>(h));
  // Every half value, its float neighbours, and the midpoints and quarter points between halves,
  // of both signs; then floats far below and above the half range.
  std::vector<float> inputs;
  for (int h = 0; h < 0x7C00; ++h) {
    const auto value = static_cast<float>(positive[h]);
    const double next = h + 1 < 0x7C00 ? positive[h + 1] : 65536.0;
    for (float x : {value, std::nextafter(value, 0.0f), std::nextafter(value, kInf),
                    static_cast<float>((positive[h] + next) / 2),
                    static_cast<float>(positive[h] + (next - positive[h]) / 4)}) {
      inputs.push_back(x);
      inputs.push_back(-x);
    }
  }
  for (float x :
       {1e-45f, 1e-38f, 2.9e-8f, 65504.0f, 65519.99f, 65520.0f, 70000.0f, 1e38f, kInf, 1.0009f}) {
    inputs.push_back(x);
    inputs.push_back(-x);
  }
  std::vector<unsigned short> halves(inputs.size());
  for (unsigned control : kControls) {
    UnderControl(control, [&] {
      u::ConvertFloat2Half(inputs.data(), halves.data(), static_cast<unsigned>(inputs.size()));
    });
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      ASSERT_EQ(halves[i], TowardZeroReference(inputs[i], positive))
          << inputs[i] << " MXCSR control 0x" << std::hex << control;
    }
  }
  float spec[] = {1.0009f, 70000.0f, kNaN, -kNaN};
  unsigned short out[4];
  u::ConvertFloat2Half(spec, out, 4);
  EXPECT_EQ(out[0], 0x3C00);
  EXPECT_EQ(out[1], 0x7BFF);
  EXPECT_EQ(out[2] & 0x7E00, 0x7E00);
  EXPECT_EQ(out[3] & 0xFE00, 0xFE00);
}

// ---- Fused (de)interleaving ---------------------------------------------------------------------

template <class T>
std::vector<T> RandomSamples(std::size_t count, std::mt19937& rng) {
  std::vector<T> samples(count);
  if constexpr (std::is_floating_point_v<T>) {
    std::uniform_real_distribution<float> value(-1.2f, 1.2f);
    for (T& x : samples) x = value(rng);
    samples[0] = kNaN;
  } else if constexpr (std::is_same_v<T, int24_t>) {
    std::uniform_int_distribution<int> value(int24_t::kMin, int24_t::kMax);
    for (T& x : samples) x = int24_t(value(rng));
  } else {
    std::uniform_int_distribution<T> value(std::numeric_limits<T>::min(),
                                           std::numeric_limits<T>::max());
    for (T& x : samples) x = value(rng);
  }
  return samples;
}

constexpr unsigned kFrameCounts[] = {1, 3, 17, 63, 333, 1001};

template <class From>
void CheckDeinterleave(std::mt19937& rng) {
  for (unsigned channels = 1; channels <= 8; ++channels) {
    for (unsigned frames : kFrameCounts) {
      for (int scale : {0, 15, 23, -3}) {
        const std::vector<From> src = RandomSamples<From>(channels * frames, rng);
        // Two passes: Convert, then a plain deinterleaving loop.
        std::vector<float> converted(src.size());
        if constexpr (std::is_same_v<From, float>) {
          const float factor = std::ldexp(1.0f, -scale);
          for (std::size_t i = 0; i < src.size(); ++i)
            converted[i] = scale ? src[i] * factor : src[i];
        } else {
          u::Convert(static_cast<unsigned>(src.size()), src.data(), converted.data(), scale);
        }
        std::vector<std::vector<float>> got(channels, std::vector<float>(frames + 1, -7.0f));
        std::vector<float*> pointers;
        for (auto& channel : got) pointers.push_back(channel.data());
        u::DeinterleaveConvert(channels, frames, src.data(), pointers.data(), scale);
        for (unsigned c = 0; c < channels; ++c) {
          for (unsigned f = 0; f < frames; ++f) {
            const float want = converted[f * channels + c];
            ASSERT_EQ(std::bit_cast<std::uint32_t>(got[c][f]), std::bit_cast<std::uint32_t>(want))
                << channels << " channels, frame " << f << ", channel " << c;
          }
          ASSERT_EQ(got[c][frames], -7.0f) << "wrote past channel " << c;
        }
      }
    }
  }
}

TEST(DeinterleaveConvert, MatchesConvertThenDeinterleave) {
  std::mt19937 rng(11);
  CheckDeinterleave<short>(rng);
  CheckDeinterleave<int24_t>(rng);
  CheckDeinterleave<int>(rng);
  CheckDeinterleave<float>(rng);
}

template <class To>
void CheckInterleave(std::mt19937& rng) {
  for (unsigned channels = 1; channels <= 8; ++channels) {
    for (unsigned frames : kFrameCounts) {
      for (int scale : {0, -15, -23, -31}) {
        for (bool round : {false, true}) {
          std::vector<std::vector<float>> src;
          std::vector<const float*> pointers;
          for (unsigned c = 0; c < channels; ++c) {
            src.push_back(RandomSamples<float>(frames, rng));
            pointers.push_back(src.back().data());
          }
          // Two passes: a plain interleaving loop, then Convert.
          std::vector<float> interleaved(channels * frames);
          for (unsigned f = 0; f < frames; ++f) {
            for (unsigned c = 0; c < channels; ++c) interleaved[f * channels + c] = src[c][f];
          }
          std::vector<To> want(interleaved.size());
          u::Convert(static_cast<unsigned>(interleaved.size()), interleaved.data(), want.data(),
                     scale, round);
          std::vector<To> got(interleaved.size() + 1, To(5));
          u::InterleaveConvert(channels, frames, pointers.data(), got.data(), scale, round);
          for (std::size_t i = 0; i < want.size(); ++i) {
            ASSERT_EQ(int(got[i]), int(want[i]))
                << channels << " channels, " << frames << " frames, sample " << i << ", scale "
                << scale << ", round " << round;
          }
          ASSERT_EQ(int(got.back()), 5) << "wrote past the destination";
        }
      }
    }
  }
}

TEST(InterleaveConvert, MatchesInterleaveThenConvert) {
  std::mt19937 rng(12);
  CheckInterleave<short>(rng);
  CheckInterleave<int24_t>(rng);
  CheckInterleave<int>(rng);
}

// ---- Refusals -----------------------------------------------------------------------------------

TEST(Conversion, RefusedCallsWriteNothing) {
  float floats[4] = {1.5f, 2.5f, 3.5f, 4.5f};
  short shorts[4] = {7, 7, 7, 7};
  int24_t packed[4] = {int24_t(7), int24_t(7), int24_t(7), int24_t(7)};
  unsigned short halves[4] = {7, 7, 7, 7};
  for (unsigned len : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    u::Convert(len, floats, shorts, 0, true);
    u::Convert(len, floats, packed, 0, true);
    u::ConvertFloat2Half(floats, halves, len);
    u::Convert(len, shorts, floats, 0);
  }
  u::Convert(4, static_cast<const float*>(nullptr), shorts, 0, true);
  u::Convert(4, floats, static_cast<short*>(nullptr), 0, true);
  u::Convert(4, static_cast<const float*>(nullptr), packed, 0, false);
  u::Convert(0x80000000u, floats, static_cast<int24_t*>(nullptr), 0, false);
  u::ConvertHalf2Float(nullptr, floats, 4);
  u::Convert(4, static_cast<const int24_t*>(nullptr), floats, 3);
  u::Convert(0x80000000u, packed, floats, 3);
  u::Convert(4, packed, static_cast<float*>(nullptr), 3);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(shorts[i], 7);
    EXPECT_EQ(int{packed[i]}, 7);
    EXPECT_EQ(halves[i], 7);
    EXPECT_EQ(floats[i], 1.5f + i);
  }
  float* planar[2] = {floats, nullptr};
  u::DeinterleaveConvert(2, 2, shorts, planar, 0);
  u::DeinterleaveConvert(0, 2, shorts, planar, 0);
  u::DeinterleaveConvert(1, 0x80000000u, shorts, planar, 0);
  const float* sources[2] = {floats, nullptr};
  u::InterleaveConvert(2, 2, sources, shorts, 0, false);
  u::InterleaveConvert(1, 0, sources, shorts, 0, false);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(shorts[i], 7);
    EXPECT_EQ(floats[i], 1.5f + i);
  }
}

}  // namespace
