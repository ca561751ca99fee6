// The reference of the conversion family: one element at a time, each rule written out as it is
// stated, so that the level kernels' register tricks are checked against the plain arithmetic.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <immintrin.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/primitives/conversion/conversion_factors-inl.h"

namespace zal::engine::portable {
namespace {

constexpr int kTowardZero = 0;
constexpr int kNearestEven = 1;
constexpr int kHalfAway = 2;

// The processor's conversion to a 32-bit integer: NaN and values outside the range give -2^31.
template <class Real>
int TruncateToInt(Real y) {
  if (!(y >= static_cast<Real>(-2147483648.0) && y < static_cast<Real>(2147483648.0))) {
    return INT_MIN;
  }
  return static_cast<int>(y);
}

// To nearest, ties to even, for |y| < 2^23.
int NearestEven(float y) {
  const float below = std::floor(y);
  const float fraction = y - below;
  auto result = static_cast<int>(below);
  if (fraction > 0.5f || (fraction == 0.5f && (result & 1))) ++result;
  return result;
}

template <class Real>
Real LimitAbove(Real y, Real limit) {
  return limit < y ? limit : y;
}
template <class Real>
Real LimitBelow(Real y, Real limit) {
  return y > limit ? y : limit;
}

template <class Real>
Real AddSignedHalf(Real y) {
  return y + std::copysign(static_cast<Real>(0.5), y);
}

int Saturate(int value, int low, int high) {
  return value < low ? low : (value > high ? high : value);
}

Int24 ToInt24(int value) {
  return {{static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
           static_cast<unsigned char>(value >> 16)}};
}
int FromInt24(Int24 sample) {
  const std::uint32_t bits = sample.bytes[0] | (std::uint32_t{sample.bytes[1]} << 8) |
                             (std::uint32_t{sample.bytes[2]} << 16);
  return static_cast<int>(bits ^ 0x800000u) - 0x800000;
}

// Saturating float to a signed or unsigned range, by the family's rule: limited from above, half
// added when rounding, truncated, saturated.
int FloatToRange(float x, float factor, bool round, int low, int high) {
  float y = LimitAbove(x * factor, static_cast<float>(high));
  if (round) y = AddSignedHalf(y);
  return Saturate(TruncateToInt(y), low, high);
}

int FloatToS32(float x, float factor, bool round) {
  float y = x * factor;
  if (round) y = AddSignedHalf(LimitAbove(y, 2147483648.0f));
  if (y >= 2147483648.0f) return INT_MAX;
  return TruncateToInt(y);
}

int DoubleToS32(double x, double factor, bool round) {
  double y = LimitAbove(x * factor, 2147483647.0);
  if (round) y = AddSignedHalf(y);
  return TruncateToInt(y);
}

int FloatToS24Even(float x, float factor) {
  const float y = LimitAbove(LimitBelow(x * factor, -8388608.0f), 8388607.0f);
  return NearestEven(y);
}

int FloatToS24Limited(float x, float factor, bool limit_to_unit, bool round) {
  float y = x;
  if (limit_to_unit) y = x >= 1.0f ? factor : (x <= -1.0f ? -factor : x * factor);
  if (std::isnan(y)) return -8388608;
  y = LimitAbove(LimitBelow(y, -8388608.0f), 8388607.0f);
  // Halves away from zero by the fraction the truncation leaves (exact below 2^24), not by the C
  // library's round, which some runtimes get wrong just below one half.
  const float truncated = std::trunc(y);
  const float fraction = y - truncated;
  const int rounding = !round ? 0 : (fraction >= 0.5f ? 1 : (fraction <= -0.5f ? -1 : 0));
  return static_cast<int>(truncated) + rounding;
}

// Binary16 from its fields.
float HalfToFloat(unsigned short h) {
  const bool negative = h & 0x8000;
  const int exponent = (h >> 10) & 0x1F;
  const int fraction = h & 0x3FF;
  float magnitude;
  if (exponent == 0x1F) {
    const std::uint32_t bits =
        0x7F800000u | (fraction ? 0x400000u | (static_cast<std::uint32_t>(fraction) << 13) : 0u);
    std::memcpy(&magnitude, &bits, sizeof magnitude);
  } else if (exponent == 0) {
    magnitude = std::ldexp(static_cast<float>(fraction), -24);
  } else {
    magnitude = std::ldexp(static_cast<float>(1024 + fraction), exponent - 25);
  }
  return negative ? -magnitude : magnitude;
}

// Binary16 toward zero or to nearest even, from the float's significand shifted into place.
unsigned short FloatToHalf(float x, bool nearest) {
  std::uint32_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const auto sign = static_cast<unsigned short>((bits >> 16) & 0x8000);
  const std::uint32_t magnitude = bits & 0x7FFFFFFF;
  const int exponent = static_cast<int>(magnitude >> 23);
  if (exponent == 0xFF) {
    if (magnitude == 0x7F800000) return sign | 0x7C00;
    return static_cast<unsigned short>(sign | 0x7E00 | ((magnitude >> 13) & 0x3FF));
  }
  // Significand with its leading bit; the half's unit in the last place is 2^(e - 25) for the
  // normal exponents and 2^-24 below them.
  const std::uint32_t significand = exponent ? (magnitude & 0x7FFFFF) | 0x800000 : 0;
  const int half_exponent = exponent - 127 + 15;
  const int shift = half_exponent >= 1 ? 13 : 13 + 1 - half_exponent;
  if (half_exponent >= 31) return sign | (nearest ? 0x7C00 : 0x7BFF);
  std::uint32_t kept = shift >= 32 ? 0 : significand >> shift;
  if (nearest && shift < 32) {
    const std::uint64_t dropped = significand & ((std::uint64_t{1} << shift) - 1);
    const std::uint64_t half_unit = std::uint64_t{1} << (shift - 1);
    if (dropped > half_unit || (dropped == half_unit && (kept & 1))) ++kept;
  }
  // A normal half: the biased exponent above the fraction; the carry of a rounding that fills
  // the fraction moves into the exponent, up to the infinity.
  const std::uint32_t encoded =
      half_exponent >= 1 ? (static_cast<std::uint32_t>(half_exponent) << 10) + kept - 0x400 : kept;
  return static_cast<unsigned short>(sign | encoded);
}

template <class From, class To, class Convert>
EngStatus Each(Convert convert, const From* src, To* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = convert(src[i]);
  return engStsNoErr;
}

bool ValidRounding(int mode) {
  return mode == kTowardZero || mode == kHalfAway;
}

EngStatus CheckChannels(const void* interleaved, const void* planar, const void* const* channels_of,
                        int channels, int frames) {
  if (!interleaved || !planar) return engStsNullPtrErr;
  if (channels <= 0) return engStsSizeErr;
  for (int c = 0; c < channels; ++c) {
    if (!channels_of[c]) return engStsNullPtrErr;
  }
  return frames <= 0 ? engStsSizeErr : engStsNoErr;
}

template <class From, class Convert>
EngStatus Deinterleave(Convert convert, const From* src, float* const* dst, int channels,
                       int frames) {
  const EngStatus status =
      CheckChannels(src, dst, reinterpret_cast<const void* const*>(dst), channels, frames);
  if (status) return status;
  for (int f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) {
      dst[c][f] = convert(src[static_cast<std::ptrdiff_t>(f) * channels + c]);
    }
  }
  return engStsNoErr;
}

template <class To, class Convert>
void Interleave(Convert convert, const float* const* src, To* dst, int channels, int frames) {
  for (int f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) {
      dst[static_cast<std::ptrdiff_t>(f) * channels + c] = convert(src[c][f]);
    }
  }
}

EngStatus CheckInterleave(const float* const* src, const void* dst, int channels, int frames) {
  return CheckChannels(dst, src, reinterpret_cast<const void* const*>(src), channels, frames);
}

// A factor of 1 leaves a sample as it is (no multiplication, which a denormal mode could touch).
float Scaled(float x, float factor) {
  return factor == 1.0f ? x : x * factor;
}

}  // namespace

EngStatus ConvertU8ToF32(const unsigned char* src, float* dst, int n) {
  return Each([](unsigned char x) { return static_cast<float>(x); }, src, dst, n);
}
EngStatus ConvertS16ToF32Scaled(const short* src, float* dst, int n, int scale) {
  const float f = ScaleFactor(scale);
  return Each([f](short x) { return static_cast<float>(x) * f; }, src, dst, n);
}
EngStatus ConvertS16ToF64Scaled(const short* src, double* dst, int n, int scale) {
  const double f = ScaleFactorF64(scale);
  return Each([f](short x) { return static_cast<double>(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToF32Scaled(const int* src, float* dst, int n, int scale) {
  const float f = ScaleFactor(scale);
  return Each([f](int x) { return static_cast<float>(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToF64Scaled(const int* src, double* dst, int n, int scale) {
  const double f = ScaleFactorF64(scale);
  return Each([f](int x) { return static_cast<double>(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToS24Scaled(const int* src, Int24* dst, int n, int scale) {
  const double f = ScaleFactorF64(scale);
  return Each(
      [f](int x) {
        const double y = LimitAbove(LimitBelow(static_cast<double>(x) * f, -8388608.0), 8388607.0);
        return ToInt24(TruncateToInt(y));
      },
      src, dst, n);
}

EngStatus ConvertF32ToU8(const float* src, unsigned char* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ScaleFactor(scale);
  const bool round = mode == kHalfAway;
  return Each(
      [f, round](float x) { return static_cast<unsigned char>(FloatToRange(x, f, round, 0, 255)); },
      src, dst, n);
}
EngStatus ConvertF32ToS16(const float* src, short* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ScaleFactor(scale);
  const bool round = mode == kHalfAway;
  return Each(
      [f, round](float x) { return static_cast<short>(FloatToRange(x, f, round, -32768, 32767)); },
      src, dst, n);
}
EngStatus ConvertF32ToS32(const float* src, int* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ScaleFactor(scale);
  const bool round = mode == kHalfAway;
  return Each([f, round](float x) { return FloatToS32(x, f, round); }, src, dst, n);
}
EngStatus ConvertF64ToS32(const double* src, int* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const double f = ScaleFactorF64(scale);
  const bool round = mode == kHalfAway;
  return Each([f, round](double x) { return DoubleToS32(x, f, round); }, src, dst, n);
}
EngStatus ConvertF32ToS24Even(const float* src, Int24* dst, int n, int scale) {
  const float f = ScaleFactor(scale);
  return Each([f](float x) { return ToInt24(FloatToS24Even(x, f)); }, src, dst, n);
}
EngStatus ConvertF32ToS24Limited(const float* src, Int24* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ExactPowerOfTwo(scale);
  const bool round = mode == kHalfAway;
  return Each(
      [f, scale, round](float x) { return ToInt24(FloatToS24Limited(x, f, scale != 0, round)); },
      src, dst, n);
}

EngStatus ConvertF32ToF64(const float* src, double* dst, int n) {
  return Each([](float x) { return static_cast<double>(x); }, src, dst, n);
}
EngStatus ConvertF64ToF32(const double* src, float* dst, int n) {
  return Each([](double x) { return static_cast<float>(x); }, src, dst, n);
}
EngStatus ConvertS24ToS32(const Int24* src, int* dst, int n) {
  return Each([](Int24 x) { return FromInt24(x); }, src, dst, n);
}
EngStatus ConvertS24ToF32(const Int24* src, float* dst, int n) {
  return Each([](Int24 x) { return static_cast<float>(FromInt24(x)); }, src, dst, n);
}

EngStatus ConvertF32ToF16(const float* src, unsigned short* dst, int n, int mode) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (mode != kTowardZero && mode != kNearestEven) return engStsRoundModeNotSupportedErr;
  const bool nearest = mode == kNearestEven;
  return Each([nearest](float x) { return FloatToHalf(x, nearest); }, src, dst, n);
}
EngStatus ConvertF16ToF32(const unsigned short* src, float* dst, int n) {
  return Each([](unsigned short h) { return HalfToFloat(h); }, src, dst, n);
}

EngStatus DeinterleaveConvertS16ToF32(const short* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return Deinterleave([factor](short x) { return Scaled(static_cast<float>(x), factor); }, src, dst,
                      channels, frames);
}
EngStatus DeinterleaveConvertS24ToF32(const Int24* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return Deinterleave(
      [factor](Int24 x) { return Scaled(static_cast<float>(FromInt24(x)), factor); }, src, dst,
      channels, frames);
}
EngStatus DeinterleaveConvertS32ToF32(const int* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return Deinterleave([factor](int x) { return Scaled(static_cast<float>(x), factor); }, src, dst,
                      channels, frames);
}
EngStatus DeinterleaveConvertF32ToF32(const float* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return Deinterleave([factor](float x) { return Scaled(x, factor); }, src, dst, channels, frames);
}

EngStatus InterleaveConvertF32ToS16(const float* const* src, short* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckInterleave(src, dst, channels, frames)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ScaleFactor(scale);
  const bool round = mode == kHalfAway;
  Interleave(
      [f, round](float x) { return static_cast<short>(FloatToRange(x, f, round, -32768, 32767)); },
      src, dst, channels, frames);
  return engStsNoErr;
}
EngStatus InterleaveConvertF32ToS24(const float* const* src, Int24* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckInterleave(src, dst, channels, frames)) return status;
  if (mode == kNearestEven) {
    const float f = ScaleFactor(scale);
    Interleave([f](float x) { return ToInt24(FloatToS24Even(x, f)); }, src, dst, channels, frames);
    return engStsNoErr;
  }
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ExactPowerOfTwo(scale);
  const bool round = mode == kHalfAway;
  Interleave(
      [f, scale, round](float x) { return ToInt24(FloatToS24Limited(x, f, scale != 0, round)); },
      src, dst, channels, frames);
  return engStsNoErr;
}
EngStatus InterleaveConvertF32ToS32(const float* const* src, int* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckInterleave(src, dst, channels, frames)) return status;
  if (!ValidRounding(mode)) return engStsRoundModeNotSupportedErr;
  const float f = ScaleFactor(scale);
  const bool round = mode == kHalfAway;
  Interleave([f, round](float x) { return FloatToS32(x, f, round); }, src, dst, channels, frames);
  return engStsNoErr;
}

}  // namespace zal::engine::portable
