// Thresholds, clamping, inversion with a magnitude limit, normalisation, ramps and elementwise
// extremes, written once against the vector layer. Every kernel is a comparison and a selection or
// a short fixed sequence of IEEE operations, so every level gives the portable variant's bits.
// Comparisons are ordered: a NaN element never compares, so it stays (thresholds) or, for
// Min/MaxEvery, the second operand's element is taken. The in-place one-sided thresholds and
// Min/MaxEvery are the processor's min and max, as compilers would make of the conditionals
// anyway: under denormals-are-zero they return a denormal element as zero.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <bit>
#include <cstddef>
#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

template <class T, class Op, class... Sources>
ZAL_INLINE EngStatus Each(Op op, T* dst, int n, Sources... src) {
  if (const EngStatus status = Check(n, src..., dst)) return status;
  Map<false>(op, dst, n, src...);
  return engStsNoErr;
}

// The binary32 machine epsilon: squared magnitudes up to it invert to the limit 1 / level.
constexpr double kInversionEpsilon = 1.1920928955078125e-7;

ZAL_INLINE VF32 SignOf(VF32 x) {
  return And(x, Broadcast(-0.0f));
}
ZAL_INLINE VF64 SignOf(VF64 x) {
  return And(x, Broadcast(-0.0));
}
ZAL_INLINE VF32 Magnitude(VF32 x) {
  return Xor(x, SignOf(x));
}
ZAL_INLINE VF64 Magnitude(VF64 x) {
  return Xor(x, SignOf(x));
}

// x^2 <= eps: 1/level; |x| < level: 1/level with the sign of x; otherwise 1/x.
template <class T>
ZAL_INLINE EngStatus InvertReal(T* p, int n, T level) {
  if (const EngStatus status = Check(n, p)) return status;
  if (!(level > 0)) return engStsThreshNegLevelErr;
  const T limit = T(1) / level;
  const T epsilon = static_cast<T>(kInversionEpsilon);
  Map<false>(WithDefaultNaN{[level, limit, epsilon](auto x) {
               const auto inverse = Broadcast(T(1)) / x;
               const auto limited = Select(Magnitude(x) < Broadcast(level),
                                           Or(Broadcast(limit), SignOf(x)), inverse);
               return Select(x * x <= Broadcast(epsilon), Broadcast(limit), limited);
             }},
             p, n, p);
  return engStsNoErr;
}

// p = re^2 + im^2. p <= eps: (1/level, 0); p < level^2: conj(z) / (sqrt(p) level), the
// reciprocal's direction at magnitude 1/level; otherwise conj(z) / p, the reciprocal itself.
template <class C>
ZAL_INLINE EngStatus InvertComplex(C* p, int n, RealOf<C> level) {
  using R = RealOf<C>;
  if (const EngStatus status = Check(n, p)) return status;
  if (!(level > 0)) return engStsThreshNegLevelErr;
  const R limit = R(1) / level;
  const R level_squared = level * level;
  const R epsilon = static_cast<R>(kInversionEpsilon);
  Map<false>(
      WithDefaultNaN{[level, limit, level_squared, epsilon](auto z) {
        const auto squares = z.v * z.v;
        const auto norm = squares + SwapPairs(squares);
        const auto conjugate = Xor(z.v, BroadcastPair(R(0), R(-0.0)));
        const auto limited = Sqrt(norm) * Broadcast(level);
        const auto divisor = Select(norm < Broadcast(level_squared), limited, norm);
        const auto inverse = conjugate / divisor;
        return decltype(z){Select(norm <= Broadcast(epsilon), BroadcastPair(limit, R(0)), inverse)};
      }},
      p, n, p);
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus Normalize(const T* src, T* dst, int n, T sub, T div) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  constexpr T kSmallestNormal =
      sizeof(T) == 4 ? T(1.17549435082228750797e-38f) : T(2.22507385850720138309e-308);
  if ((div < 0 ? -div : div) < kSmallestNormal) return engStsDivByZeroErr;
  const T reciprocal = T(1) / div;
  Map<false>(WithDefaultNaN{[sub, reciprocal](auto x) {
               return (x - Broadcast(sub)) * Broadcast(reciprocal);
             }},
             dst, n, src);
  return engStsNoErr;
}

// p[i] = offset + slope * i, computed in double (where i is exact) and rounded once: no drift
// however long the ramp.
template <class T>
ZAL_INLINE EngStatus VectorSlope(T* p, int n, T offset, T slope) {
  if (const EngStatus status = Check(n, p)) return status;
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  constexpr int kWide = VF64::kLanes;
  alignas(64) double iota[kLanes];
  for (int l = 0; l < kLanes; ++l) iota[l] = l;
  const VF64 first = Load(iota);
  const VF64 offset_wide = Broadcast(static_cast<double>(offset));
  const VF64 slope_wide = Broadcast(static_cast<double>(slope));
  const auto at = [&](std::ptrdiff_t i) {
    const VF64 base = Broadcast(static_cast<double>(i));
    if constexpr (sizeof(T) == 4) {
      const VF64 second = Load(iota + kWide);
      return Narrow(offset_wide + slope_wide * (base + first),
                    offset_wide + slope_wide * (base + second));
    } else {
      return offset_wide + slope_wide * (base + first);
    }
  };
  std::ptrdiff_t i = 0;
  for (; i + kLanes <= n; i += kLanes) Store(p + i, DefaultNaN(at(i)));
  if (i < n) StoreN(p + i, DefaultNaN(at(i)), static_cast<int>(n - i));
  return engStsNoErr;
}

}  // namespace

#define ZAL_THRESHOLD_KERNELS(T, E)                                                              \
  EngStatus ThresholdGT##E##InPlace(T* p, int n, T level) {                                      \
    return Each([level](auto x) { return Min(Broadcast(level), x); }, p, n, p);                  \
  }                                                                                              \
  EngStatus ThresholdLT##E##InPlace(T* p, int n, T level) {                                      \
    return Each([level](auto x) { return Max(Broadcast(level), x); }, p, n, p);                  \
  }                                                                                              \
  EngStatus ThresholdGTVal##E(const T* s, T* d, int n, T level, T value) {                       \
    return Each(                                                                                 \
        [level, value](auto x) { return Select(Broadcast(level) < x, Broadcast(value), x); }, d, \
        n, s);                                                                                   \
  }                                                                                              \
  EngStatus ThresholdLTVal##E(const T* s, T* d, int n, T level, T value) {                       \
    return Each(                                                                                 \
        [level, value](auto x) { return Select(x < Broadcast(level), Broadcast(value), x); }, d, \
        n, s);                                                                                   \
  }                                                                                              \
  EngStatus ThresholdGTVal##E##InPlace(T* p, int n, T level, T value) {                          \
    return ThresholdGTVal##E(p, p, n, level, value);                                             \
  }                                                                                              \
  EngStatus ThresholdLTVal##E##InPlace(T* p, int n, T level, T value) {                          \
    return ThresholdLTVal##E(p, p, n, level, value);                                             \
  }                                                                                              \
  EngStatus InvertThreshold##E##InPlace(T* p, int n, T level) {                                  \
    return InvertReal(p, n, level);                                                              \
  }                                                                                              \
  EngStatus Normalize##E(const T* s, T* d, int n, T sub, T div) {                                \
    return Normalize(s, d, n, sub, div);                                                         \
  }                                                                                              \
  EngStatus VectorSlope##E(T* p, int n, T offset, T slope) {                                     \
    return VectorSlope(p, n, offset, slope);                                                     \
  }

ZAL_THRESHOLD_KERNELS(float, F32)
ZAL_THRESHOLD_KERNELS(double, F64)
#undef ZAL_THRESHOLD_KERNELS

// Levels tested on the original element: below level_lt, then above level_gt. Crossed levels
// (level_lt > level_gt) are refused.
EngStatus ThresholdLTValGTValF32(const float* s, float* d, int n, float level_lt, float value_lt,
                                 float level_gt, float value_gt) {
  if (const EngStatus status = Check(n, s, d)) return status;
  if (level_lt > level_gt) return engStsThresholdErr;
  Map<false>(
      [=](VF32 x) {
        const VF32 low = Select(x < Broadcast(level_lt), Broadcast(value_lt), x);
        return Select(Broadcast(level_gt) < x, Broadcast(value_gt), low);
      },
      d, n, s);
  return engStsNoErr;
}

EngStatus InvertThresholdC32InPlace(Complex32* p, int n, float level) {
  return InvertComplex(p, n, level);
}
EngStatus InvertThresholdC64InPlace(Complex64* p, int n, double level) {
  return InvertComplex(p, n, level);
}

// a < b ? a : b, and a > b ? a : b: the second operand where either is NaN.
EngStatus MinEveryF32(const float* a, const float* b, float* d, int n) {
  return Each([](VF32 x, VF32 y) { return Min(x, y); }, d, n, a, b);
}
EngStatus MaxEveryF32(const float* a, const float* b, float* d, int n) {
  return Each([](VF32 x, VF32 y) { return Max(x, y); }, d, n, a, b);
}
EngStatus MinEveryF32InPlace(const float* s, float* d, int n) {
  return MinEveryF32(s, d, d, n);
}
EngStatus MaxEveryF32InPlace(const float* s, float* d, int n) {
  return MaxEveryF32(s, d, d, n);
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_THRESHOLD_PRIMITIVES(ZAL_CHECK_SHAPE)
