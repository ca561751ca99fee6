// The default NaN (engine/simd/default_nan-inl.h) for every lane that holds a NaN.
#pragma once

#include "engine/simd/default_nan-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// Lane selection by bit operations below avx512: compilers turn a blend whose mask is a
// comparison into a branch per lane at some levels.
template <class V>
ZAL_INLINE V DefaultNaNLanes(V v, V nan) {
#if ZAL_LEVEL_INDEX >= 5
  return Select(IsNan(v), nan, v);
#else
  const V lanes = {IsNan(v).raw};
  return Or(AndNot(lanes, v), And(lanes, nan));
#endif
}

ZAL_INLINE VF32 DefaultNaN(VF32 v) {
  return DefaultNaNLanes(v, Broadcast(kDefaultNaNF32));
}
ZAL_INLINE VF64 DefaultNaN(VF64 v) {
  return DefaultNaNLanes(v, Broadcast(kDefaultNaNF64));
}
ZAL_INLINE VC32 DefaultNaN(VC32 c) {
  return {DefaultNaN(c.v)};
}
ZAL_INLINE VC64 DefaultNaN(VC64 c) {
  return {DefaultNaN(c.v)};
}
template <class V>
ZAL_INLINE ComplexPair<V> DefaultNaN(ComplexPair<V> c) {
  return {DefaultNaN(c.lo), DefaultNaN(c.hi)};
}

// The lanes where a or b holds a NaN: one comparison for two registers.
ZAL_INLINE MF32 NaNLanes(VF32 a, VF32 b) {
  return Unordered(a, b);
}
ZAL_INLINE MF64 NaNLanes(VF64 a, VF64 b) {
  return Unordered(a, b);
}
ZAL_INLINE MF32 NaNLanes(VC32 a, VC32 b) {
  return Unordered(a.v, b.v);
}
ZAL_INLINE MF64 NaNLanes(VC64 a, VC64 b) {
  return Unordered(a.v, b.v);
}
template <class V>
ZAL_INLINE typename V::Mask NaNLanes(ComplexPair<V> a, ComplexPair<V> b) {
  return NaNLanes(a.lo, a.hi) | NaNLanes(b.lo, b.hi);
}

// The results of one unrolled step, NaNs made the default NaN. NaN results are rare: two
// comparisons and a branch cover four registers, and only a step that holds one is rewritten.
template <class V>
ZAL_INLINE void DefaultNaNs(V& r0, V& r1, V& r2, V& r3) {
  if (AnyLane(NaNLanes(r0, r1) | NaNLanes(r2, r3))) [[unlikely]] {
    r0 = DefaultNaN(r0);
    r1 = DefaultNaN(r1);
    r2 = DefaultNaN(r2);
    r3 = DefaultNaN(r3);
  }
}
template <class V>
ZAL_INLINE void DefaultNaNs(V& r) {
  r = DefaultNaN(r);
}

// Marks an elementwise op whose NaN results the loops make the default NaN (see Finish in
// loops-inl.h); it takes the element index where the op does.
template <class Op>
struct WithDefaultNaN {
  static constexpr bool kTakesIndex = requires { requires Op::kTakesIndex; };
  static constexpr bool kDefaultNaNs = true;
  Op op;
  template <class... Arguments>
  ZAL_INLINE auto operator()(Arguments... arguments) const {
    return op(arguments...);
  }
};
template <class Op>
WithDefaultNaN(Op) -> WithDefaultNaN<Op>;

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
