// Vector trigonometry on top of a level's vector layer: atan2 in float and a joint sine and cosine
// in double. Plain multiplies and adds in a fixed order, never fused, so every level gives the same
// bits; the scalar reference reproduces them operation for operation.
// Included only inside level translation units, after the vector layer.
#pragma once

#include <bit>
#include <cstdint>

namespace zal::engine::ZAL_LEVEL {
namespace {

// atan(t) = t + t s P(s), s = t^2, for t in [0, 1]: relative error 2^-31 by a weighted
// least-squares fit, well below float rounding. Highest degree first.
inline constexpr float kAtanCoefficients[] = {
    1.112373330e-03f,  -7.313407568e-03f, 2.253651799e-02f,  -4.469485531e-02f, 6.742707342e-02f,
    -8.811991187e-02f, 1.105860233e-01f,  -1.427991806e-01f, 1.999968035e-01f,  -3.333332725e-01f};

// pi/2 and pi as a float plus the float nearest to the remainder.
inline constexpr float kHalfPiHigh = 1.57079637050628662109375f;
inline constexpr float kHalfPiLow = -4.37113900018624283e-8f;
inline constexpr float kPiHigh = 3.1415927410125732421875f;
inline constexpr float kPiLow = -8.74227800037248566e-8f;

// Set where the sign bit of x is, -0 and negative NaN included.
ZAL_INLINE MF32 SignBitSet(VF32 x) {
  return Or(And(x, Broadcast(-0.0f)), Broadcast(1.0f)) < Broadcast(0.0f);
}

// atan2(y, x) with the C library's special values: the sign of y on the result, atan2(+-0, +0) =
// +-0, atan2(+-0, -0) = +-pi, pi/4 multiples for infinities, NaN from NaN. Within 2 ulp of the
// exact value (1.52 ulp the largest error seen): t = min/max rounds once, the polynomial adds
// well under an ulp, and the quadrant corrections add a float constant's remainder before the
// constant itself.
ZAL_INLINE VF32 Atan2(VF32 y, VF32 x) {
  const VF32 sign_clear = Broadcast(std::bit_cast<float>(0x7FFFFFFFu));
  const VF32 ax = And(x, sign_clear);
  const VF32 ay = And(y, sign_clear);
  const VF32 zero = Broadcast(0.0f);
  const VF32 one = Broadcast(1.0f);
  const VF32 low = Min(ax, ay);
  const VF32 high = Max(ax, ay);
  VF32 t = Select(ax == ay, one, low / high);
  t = Select(high == zero, zero, t);
  const VF32 s = t * t;
  VF32 p = Broadcast(kAtanCoefficients[0]);
  for (int i = 1; i < static_cast<int>(sizeof kAtanCoefficients / sizeof(float)); ++i) {
    p = p * s + Broadcast(kAtanCoefficients[i]);
  }
  VF32 r = t + t * (s * p);
  r = Select(ax < ay, (Broadcast(kHalfPiLow) - r) + Broadcast(kHalfPiHigh), r);
  r = Select(SignBitSet(x), (Broadcast(kPiLow) - r) + Broadcast(kPiHigh), r);
  r = Or(r, And(y, Broadcast(-0.0f)));
  return Select(IsNan(x) | IsNan(y), x + y, r);
}

// Taylor coefficients of sin(r)/r - 1 and cos(r) - 1 in r^2, highest degree first: on
// |r| <= pi/4 they leave a relative error below 2^-37, far below the float results they feed.
inline constexpr double kSinCoefficients[] = {-1.0 / 39916800, 1.0 / 362880, -1.0 / 5040, 1.0 / 120,
                                              -1.0 / 6};
inline constexpr double kCosCoefficients[] = {1.0 / 479001600, -1.0 / 3628800, 1.0 / 40320,
                                              -1.0 / 720,      1.0 / 24,       -0.5};
// pi/2 in three parts, the first two of 33 bits, so q * part is exact for |q| < 2^20.
inline constexpr double kHalfPi1 = 1.5707963267341256;
inline constexpr double kHalfPi2 = 6.077100506303966e-11;
inline constexpr double kHalfPi3 = 2.0222662487959506e-21;
inline constexpr double kTwoOverPi = 0.6366197723675814;
// Adding 1.5 * 2^52 rounds to an integer, left in the low bits of the mantissa.
inline constexpr double kRoundingBias = 6755399441055744.0;

struct SinCosF64 {
  VF64 sin;
  VF64 cos;
};

// Set where `bit` of the integer held in the low mantissa bits of `biased` is clear: the bit is
// moved into 1.0, which it leaves unchanged only when clear.
ZAL_INLINE MF64 QuadrantBitClear(VF64 biased, std::uint64_t bit) {
  const VF64 one = Broadcast(1.0);
  return Or(And(biased, Broadcast(std::bit_cast<double>(bit))), one) == one;
}

// sin(x) and cos(x), reduced by the nearest multiple of pi/2 in three exact steps: accurate to
// well below 2^-30 relative for |x| < 2^20 pi/2; beyond that the reduction loses accuracy.
ZAL_INLINE SinCosF64 SinCos(VF64 x) {
  const VF64 biased = x * Broadcast(kTwoOverPi) + Broadcast(kRoundingBias);
  const VF64 q = biased - Broadcast(kRoundingBias);
  const VF64 r =
      ((x - q * Broadcast(kHalfPi1)) - q * Broadcast(kHalfPi2)) - q * Broadcast(kHalfPi3);
  const VF64 s = r * r;
  VF64 ps = Broadcast(kSinCoefficients[0]);
  for (int i = 1; i < static_cast<int>(sizeof kSinCoefficients / sizeof(double)); ++i) {
    ps = ps * s + Broadcast(kSinCoefficients[i]);
  }
  VF64 pc = Broadcast(kCosCoefficients[0]);
  for (int i = 1; i < static_cast<int>(sizeof kCosCoefficients / sizeof(double)); ++i) {
    pc = pc * s + Broadcast(kCosCoefficients[i]);
  }
  const VF64 sine = r + r * (s * ps);
  const VF64 cosine = Broadcast(1.0) + s * pc;
  const MF64 even = QuadrantBitClear(biased, 1);
  const MF64 lower = QuadrantBitClear(biased, 2);
  const VF64 negative = Broadcast(-0.0);
  const VF64 positive = Broadcast(0.0);
  // Quadrant q mod 4: sin = (S, C, -S, -C), cos = (C, -S, -C, S).
  const VF64 sin_sign = Select(lower, positive, negative);
  const VF64 cos_sign = Xor(Select(even, positive, negative), sin_sign);
  return {Xor(Select(even, sine, cosine), sin_sign), Xor(Select(even, cosine, sine), cos_sign)};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
