// The reference of the complex-domain helpers: one element at a time, in the operation order every
// level reproduces, including the atan2 and sine/cosine evaluation of engine/simd/vec_trig-inl.h,
// and every NaN result the default NaN.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"

namespace zal::engine::portable {
namespace {

constexpr float kAtanCoefficients[] = {
    1.112373330e-03f,  -7.313407568e-03f, 2.253651799e-02f,  -4.469485531e-02f, 6.742707342e-02f,
    -8.811991187e-02f, 1.105860233e-01f,  -1.427991806e-01f, 1.999968035e-01f,  -3.333332725e-01f};
constexpr float kHalfPiHigh = 1.57079637050628662109375f;
constexpr float kHalfPiLow = -4.37113900018624283e-8f;
constexpr float kPiHigh = 3.1415927410125732421875f;
constexpr float kPiLow = -8.74227800037248566e-8f;

float Atan2(float y, float x) {
  if (std::isnan(x) || std::isnan(y)) return x + y;
  const float ax = std::fabs(x);
  const float ay = std::fabs(y);
  const float high = ax > ay ? ax : ay;
  float t = ax == ay ? 1.0f : (ax < ay ? ax : ay) / high;
  if (high == 0.0f) t = 0.0f;
  const float s = t * t;
  float p = kAtanCoefficients[0];
  for (std::size_t i = 1; i < std::size(kAtanCoefficients); ++i) p = p * s + kAtanCoefficients[i];
  float r = t + t * (s * p);
  if (ax < ay) r = (kHalfPiLow - r) + kHalfPiHigh;
  if (std::signbit(x)) r = (kPiLow - r) + kPiHigh;
  return std::copysign(r, y);
}

constexpr double kSinCoefficients[] = {-1.0 / 39916800, 1.0 / 362880, -1.0 / 5040, 1.0 / 120,
                                       -1.0 / 6};
constexpr double kCosCoefficients[] = {1.0 / 479001600, -1.0 / 3628800, 1.0 / 40320,
                                       -1.0 / 720,      1.0 / 24,       -0.5};
constexpr double kHalfPi1 = 1.5707963267341256;
constexpr double kHalfPi2 = 6.077100506303966e-11;
constexpr double kHalfPi3 = 2.0222662487959506e-21;
constexpr double kTwoOverPi = 0.6366197723675814;
constexpr double kRoundingBias = 6755399441055744.0;

struct SinCos {
  double sin;
  double cos;
};

SinCos SinCosOf(double x) {
  const double biased = x * kTwoOverPi + kRoundingBias;
  const double q = biased - kRoundingBias;
  const double r = ((x - q * kHalfPi1) - q * kHalfPi2) - q * kHalfPi3;
  const double s = r * r;
  double ps = kSinCoefficients[0];
  for (std::size_t i = 1; i < std::size(kSinCoefficients); ++i) ps = ps * s + kSinCoefficients[i];
  double pc = kCosCoefficients[0];
  for (std::size_t i = 1; i < std::size(kCosCoefficients); ++i) pc = pc * s + kCosCoefficients[i];
  const double sine = r + r * (s * ps);
  const double cosine = 1.0 + s * pc;
  const std::uint64_t quadrant = std::bit_cast<std::uint64_t>(biased);
  const bool odd = quadrant & 1;
  const bool upper = quadrant & 2;
  const double sin_value = odd ? cosine : sine;
  const double cos_value = odd ? sine : cosine;
  // A NaN x makes every part NaN; its sign is not part of the contract.
  return {upper ? -sin_value : sin_value, odd != upper ? -cos_value : cos_value};
}

}  // namespace

EngStatus MagnitudeSplitF32(const float* re, const float* im, float* dst, int n) {
  if (const EngStatus status = Check(n, re, im, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(std::sqrt(re[i] * re[i] + im[i] * im[i]));
  return engStsNoErr;
}
EngStatus MagnitudeSplitF64(const double* re, const double* im, double* dst, int n) {
  if (const EngStatus status = Check(n, re, im, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(std::sqrt(re[i] * re[i] + im[i] * im[i]));
  return engStsNoErr;
}
EngStatus MagnitudeC32(const Complex32* src, float* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) {
    dst[i] = DefaultNaN(std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im));
  }
  return engStsNoErr;
}
EngStatus MagnitudeC64(const Complex64* src, double* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) {
    dst[i] = DefaultNaN(std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im));
  }
  return engStsNoErr;
}
EngStatus PowerSpectrC32(const Complex32* src, float* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(src[i].re * src[i].re + src[i].im * src[i].im);
  return engStsNoErr;
}
EngStatus PowerSpectrC64(const Complex64* src, double* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(src[i].re * src[i].re + src[i].im * src[i].im);
  return engStsNoErr;
}

EngStatus CartToPolarF32(const float* src, float* magnitude, float* phase, int n) {
  if (const EngStatus status = Check(n, src, magnitude, phase)) return status;
  for (int i = 0; i < n; ++i) {
    const float re = src[2 * i];
    const float im = src[2 * i + 1];
    magnitude[i] = DefaultNaN(std::sqrt(re * re + im * im));
    phase[i] = DefaultNaN(Atan2(im, re));
  }
  return engStsNoErr;
}

EngStatus PolarToCartF32(const float* magnitude, const float* phase, float* dst, int n) {
  if (const EngStatus status = Check(n, magnitude, phase, dst)) return status;
  for (int i = 0; i < n; ++i) {
    const SinCos sc = SinCosOf(phase[i]);
    dst[2 * i] = DefaultNaN(static_cast<float>(magnitude[i] * sc.cos));
    dst[2 * i + 1] = DefaultNaN(static_cast<float>(magnitude[i] * sc.sin));
  }
  return engStsNoErr;
}

}  // namespace zal::engine::portable
