// Building blocks of vectorised math functions, on top of any level's vector layer: polynomial
// evaluation, exact sums and products, splitting a value into exponent and mantissa, and scaling
// by powers of two. Written for VF32 and VF64 alike.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// The scalar type of a vector's lanes.
template <class V>
using LaneOf = std::conditional_t<sizeof(V) / V::kLanes == 4, float, double>;

template <class V>
ZAL_INLINE V FromBits(std::uint64_t bits) {
  if constexpr (sizeof(LaneOf<V>) == 4) {
    return Broadcast(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
  } else {
    return Broadcast(std::bit_cast<double>(bits));
  }
}

template <class V>
ZAL_INLINE V Constant(double value) {
  return Broadcast(static_cast<LaneOf<V>>(value));
}

template <class V>
ZAL_INLINE V Abs(V v) {
  return AndNot(Constant<V>(-0.0), v);
}
template <class V>
ZAL_INLINE V SignOf(V v) {
  return And(Constant<V>(-0.0), v);
}
template <class V>
ZAL_INLINE V Negate(V v) {
  return Xor(Constant<V>(-0.0), v);
}

// Every lane of a comparison of V set.
template <class V>
ZAL_INLINE bool AllLanes(typename V::Mask m) {
  return LaneBits(m) == (1u << V::kLanes) - 1;
}

// c[0] + c[1] x + ... + c[N-1] x^(N-1), by Horner's rule.
template <class V, class C, std::size_t N>
ZAL_INLINE V Polynomial(V x, const C (&c)[N]) {
  V p = Broadcast(c[N - 1]);
  for (std::size_t i = N - 1; i-- > 0;) p = MulAdd(p, x, Broadcast(c[i]));
  return p;
}

// hi + lo == a + b exactly, hi the rounded sum; needs |a| >= |b| or a == 0.
template <class V>
struct Sum {
  V hi;
  V lo;
};
template <class V>
ZAL_INLINE Sum<V> FastTwoSum(V a, V b) {
  const V hi = a + b;
  return {hi, (a - hi) + b};
}

// The rounding error of a * b: exact with a fused multiply-add, by Dekker's splitting without.
template <class V>
ZAL_INLINE V ProductError(V a, V b, V product) {
  if constexpr (kHasFma) {
    return MulAdd(a, b, Negate(product));
  } else {
    constexpr double kSplitter = sizeof(LaneOf<V>) == 4 ? 4097.0 : 134217729.0;
    const auto split = [](V x) {
      const V t = Constant<V>(kSplitter) * x;
      const V high = t - (t - x);
      return Sum<V>{high, x - high};
    };
    const Sum<V> sa = split(a);
    const Sum<V> sb = split(b);
    return ((sa.hi * sb.hi - product) + sa.hi * sb.lo + sa.lo * sb.hi) + sa.lo * sb.lo;
  }
}

// x = 2^k * m with m in [sqrt(1/2), sqrt(2)), for positive normal x.
template <class V>
struct ExponentSplit {
  V k;
  V m;
};
template <class V>
ZAL_INLINE ExponentSplit<V> SplitExponent(V x) {
  V exponent;
  V in_one_two;
  if constexpr (kHasExponentOps) {
    exponent = GetExponent(x);
    in_one_two = GetMantissa(x);
  } else {
    constexpr bool kFloat = sizeof(LaneOf<V>) == 4;
    const V mantissa_bits = FromBits<V>(kFloat ? 0x007FFFFFu : 0x000FFFFFFFFFFFFFu);
    in_one_two = Or(And(x, mantissa_bits), Constant<V>(1.0));
    exponent = ExponentField(x) - Constant<V>(kFloat ? 127.0 : 1023.0);
  }
  const auto above = Less(Constant<V>(1.4142135623730951), in_one_two);
  return {exponent + Select(above, Constant<V>(1.0), Constant<V>(0.0)),
          Select(above, in_one_two * Constant<V>(0.5), in_one_two)};
}

// x = 2^k * m with m in [3/4, 3/2), for float x from the smallest normal to 2^127.
template <class V>
ZAL_INLINE ExponentSplit<V> SplitExponentNearOne(V x) {
  static_assert(sizeof(LaneOf<V>) == 4, "the float 4/3 decides the split");
  if constexpr (kHasExponentOps) {
    // getmant's range and the exponent of 4/3 x agree: the float 4/3 lies a little above 4/3, so
    // 4/3 x reaches the next power of two at m = 3/2, and after rounding not for the float below.
    return {GetExponent(x * Constant<V>(4.0 / 3)), GetMantissaNearOne(x)};
  } else {
    const V in_one_two = Or(And(x, FromBits<V>(0x007FFFFFu)), Constant<V>(1.0));
    const V exponent = ExponentField(x) - Constant<V>(127.0);
    const auto above = LessEqual(Constant<V>(1.5), in_one_two);
    return {Select(above, exponent + Constant<V>(1.0), exponent),
            Select(above, in_one_two * Constant<V>(0.5), in_one_two)};
  }
}

// x * 2^k for integral k, from the smallest subnormal result to overflow: two normal factors,
// so that only the last product rounds.
template <class V>
ZAL_INLINE V ScaleWide(V x, V k) {
  const V half = Floor(k * Constant<V>(0.5));
  return x * Pow2I(half) * Pow2I(k - half);
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
