// Complex vectors: interleaved (re, im) pairs in a real vector, with the arithmetic of the engine's
// complex primitives. The products and quotients keep the scalar reference's operation order and
// never fuse, so every level gives the same bits.
#pragma once

#include "engine/core/shapes.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

struct VC32 {
  VF32 v;
  static constexpr int kLanes = VF32::kLanes / 2;
  using Mask = MF32;
};
struct VC64 {
  VF64 v;
  static constexpr int kLanes = VF64::kLanes / 2;
  using Mask = MF64;
};

// Two registers of complex values, for operations that share instructions between them.
template <class V>
struct ComplexPair {
  V lo;
  V hi;
  static constexpr int kLanes = 2 * V::kLanes;
  using Mask = typename V::Mask;
};

// Complex elements that the loops take two registers at a time, a ComplexPair per vector. Never
// an object: a Paired<C>* only ever holds the address of a C.
template <class C>
struct Paired {
  C value;
};

// (p, q)(r, s) = (pr - qs, ps + qr).
template <class V>
ZAL_INLINE V ComplexMultiply(V a, V b) {
  return AddSub(a * DupEven(b), SwapPairs(a) * DupOdd(b));
}

ZAL_INLINE const float* Lanes(const Complex32* p) {
  return reinterpret_cast<const float*>(p);
}
ZAL_INLINE const double* Lanes(const Complex64* p) {
  return reinterpret_cast<const double*>(p);
}
ZAL_INLINE float* Lanes(Complex32* p) {
  return reinterpret_cast<float*>(p);
}
ZAL_INLINE double* Lanes(Complex64* p) {
  return reinterpret_cast<double*>(p);
}

ZAL_INLINE VC32 Load(const Complex32* p) {
  return {Load(Lanes(p))};
}
ZAL_INLINE VC64 Load(const Complex64* p) {
  return {Load(Lanes(p))};
}
ZAL_INLINE void Store(Complex32* p, VC32 v) {
  Store(Lanes(p), v.v);
}
ZAL_INLINE void Store(Complex64* p, VC64 v) {
  Store(Lanes(p), v.v);
}
ZAL_INLINE void Stream(Complex32* p, VC32 v) {
  Stream(Lanes(p), v.v);
}
ZAL_INLINE void Stream(Complex64* p, VC64 v) {
  Stream(Lanes(p), v.v);
}
// Elements n and above hold 1 + 1i.
ZAL_INLINE VC32 LoadN(const Complex32* p, int n) {
  return {LoadN(Lanes(p), 2 * n)};
}
ZAL_INLINE VC64 LoadN(const Complex64* p, int n) {
  return {LoadN(Lanes(p), 2 * n)};
}
ZAL_INLINE void StoreN(Complex32* p, VC32 v, int n) {
  StoreN(Lanes(p), v.v, 2 * n);
}
ZAL_INLINE void StoreN(Complex64* p, VC64 v, int n) {
  StoreN(Lanes(p), v.v, 2 * n);
}

// The pair broadcast as one 64-bit lane, without taking it apart.
ZAL_INLINE VC32 Broadcast(Complex32 c) {
  return {AsF32(Broadcast(__builtin_bit_cast(double, c)))};
}
ZAL_INLINE VC64 Broadcast(Complex64 c) {
  return {BroadcastPair(c.re, c.im)};
}

template <class C>
ZAL_INLINE const Paired<C>* InPairs(const C* p) {
  return reinterpret_cast<const Paired<C>*>(p);
}
template <class C>
ZAL_INLINE Paired<C>* InPairs(C* p) {
  return reinterpret_cast<Paired<C>*>(p);
}
template <class C>
ZAL_INLINE const C* Unpaired(const Paired<C>* p) {
  return reinterpret_cast<const C*>(p);
}
template <class C>
ZAL_INLINE C* Unpaired(Paired<C>* p) {
  return reinterpret_cast<C*>(p);
}

template <class C>
using PairOf = ComplexPair<decltype(Load(static_cast<const C*>(nullptr)))>;

template <class C>
ZAL_INLINE PairOf<C> Load(const Paired<C>* p) {
  constexpr int kHalf = PairOf<C>::kLanes / 2;
  return {Load(Unpaired(p)), Load(Unpaired(p) + kHalf)};
}
template <class C>
ZAL_INLINE void Store(Paired<C>* p, PairOf<C> v) {
  constexpr int kHalf = PairOf<C>::kLanes / 2;
  Store(Unpaired(p), v.lo);
  Store(Unpaired(p) + kHalf, v.hi);
}
template <class C>
ZAL_INLINE void Stream(Paired<C>* p, PairOf<C> v) {
  constexpr int kHalf = PairOf<C>::kLanes / 2;
  Stream(Unpaired(p), v.lo);
  Stream(Unpaired(p) + kHalf, v.hi);
}
// Elements n and above hold 1 + 1i. A whole register is never taken partly: LoadN and StoreN of
// one register expect fewer elements than it holds.
template <class C>
ZAL_INLINE PairOf<C> LoadN(const Paired<C>* p, int n) {
  constexpr int kHalf = PairOf<C>::kLanes / 2;
  const C* c = Unpaired(p);
  if (n > kHalf) return {Load(c), LoadN(c + kHalf, n - kHalf)};
  return {n == kHalf ? Load(c) : LoadN(c, n), Broadcast(C{1, 1})};
}
template <class C>
ZAL_INLINE void StoreN(Paired<C>* p, PairOf<C> v, int n) {
  constexpr int kHalf = PairOf<C>::kLanes / 2;
  C* c = Unpaired(p);
  if (n > kHalf) {
    Store(c, v.lo);
    StoreN(c + kHalf, v.hi, n - kHalf);
  } else if (n == kHalf) {
    Store(c, v.lo);
  } else {
    StoreN(c, v.lo, n);
  }
}

ZAL_INLINE VC32 operator+(VC32 a, VC32 b) {
  return {a.v + b.v};
}
ZAL_INLINE VC64 operator+(VC64 a, VC64 b) {
  return {a.v + b.v};
}
ZAL_INLINE VC32 operator-(VC32 a, VC32 b) {
  return {a.v - b.v};
}
ZAL_INLINE VC64 operator-(VC64 a, VC64 b) {
  return {a.v - b.v};
}
ZAL_INLINE VC32 operator*(VC32 a, VC32 b) {
  return {ComplexMultiply(a.v, b.v)};
}
ZAL_INLINE VC64 operator*(VC64 a, VC64 b) {
  return {ComplexMultiply(a.v, b.v)};
}
// Every element times a real factor, which the factor vector holds in both lanes of its pair.
ZAL_INLINE VC32 operator*(VC32 a, VF32 factor) {
  return {a.v * factor};
}
ZAL_INLINE VC64 operator*(VC64 a, VF64 factor) {
  return {a.v * factor};
}

// (pr + qs, qr - ps): the numerator of (p, q)/(r, s), whose denominator is rr + ss.
template <class V>
ZAL_INLINE V QuotientNumerator(V dividend, V divisor) {
  return {SubAdd(dividend.v * DupEven(divisor.v), SwapPairs(dividend.v) * DupOdd(divisor.v))};
}

// 1 / x by a true IEEE division: an approximate reciprocal would differ between processors.
ZAL_INLINE VF32 Reciprocal(VF32 x) {
  return Broadcast(1.0f) / x;
}
ZAL_INLINE VF64 Reciprocal(VF64 x) {
  return Broadcast(1.0) / x;
}

// The real parts and the imaginary parts of two registers of complex values, a register each, in
// an order (within 128-bit blocks) that Interleaved undoes.
template <class F>
struct Planes {
  F re;
  F im;
};
template <class V>
ZAL_INLINE auto Split(ComplexPair<V> c) {
  return Planes<decltype(c.lo.v)>{FirstOfPairs(c.lo.v, c.hi.v), SecondOfPairs(c.lo.v, c.hi.v)};
}
template <class V, class F>
ZAL_INLINE ComplexPair<V> Interleaved(F re, F im) {
  return {{InterleaveLow(re, im)}, {InterleaveHigh(re, im)}};
}

// (p + qi)/(r + si) = ((pr + qs) + (qr - ps)i) * (1 / (rr + ss)), unscaled. Split into planes,
// the two registers' norms fill one register: one division per element, none repeated.
template <class V>
ZAL_INLINE ComplexPair<V> operator/(ComplexPair<V> dividend, ComplexPair<V> divisor) {
  const auto [p, q] = Split(dividend);
  const auto [r, s] = Split(divisor);
  const auto reciprocal = Reciprocal(r * r + s * s);
  return Interleaved<V>((p * r + q * s) * reciprocal, (q * r - p * s) * reciprocal);
}

// Marks the elements whose real and imaginary parts are both zero.
ZAL_INLINE MF32 IsZero(VC32 v) {
  return BothOfPair(IsZero(v.v));
}
ZAL_INLINE MF64 IsZero(VC64 v) {
  return BothOfPair(IsZero(v.v));
}
// A zero element has a zero norm, which the quotient computes anyway: only where a norm is zero
// (an underflow can also make one) are the parts themselves compared.
template <class V>
ZAL_INLINE typename V::Mask IsZero(ComplexPair<V> v) {
  const auto [re, im] = Split(v);
  if (!AnyLane(IsZero(re * re + im * im))) return {};
  return IsZero(v.lo) | IsZero(v.hi);
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
