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

// (p, q)(r, s) = (pr - qs, ps + qr).
template <class V>
ZAL_INLINE V ComplexMultiply(V a, V b) {
  return AddSub(a * DupEven(b), SwapPairs(a) * DupOdd(b));
}

// (p, q)/(r, s) = ((pr + qs) / d, (qr - ps) / d) with d = rr + ss, unscaled.
template <class V>
ZAL_INLINE V ComplexDivide(V dividend, V divisor) {
  const V squares = divisor * divisor;
  const V norm = squares + SwapPairs(squares);
  return SubAdd(dividend * DupEven(divisor), SwapPairs(dividend) * DupOdd(divisor)) / norm;
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
ZAL_INLINE VC32 operator/(VC32 a, VC32 b) {
  return {ComplexDivide(a.v, b.v)};
}
ZAL_INLINE VC64 operator/(VC64 a, VC64 b) {
  return {ComplexDivide(a.v, b.v)};
}

// Marks the elements whose real and imaginary parts are both zero.
ZAL_INLINE MF32 IsZero(VC32 v) {
  return BothOfPair(IsZero(v.v));
}
ZAL_INLINE MF64 IsZero(VC64 v) {
  return BothOfPair(IsZero(v.v));
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
