// The vector layer of the SSE levels (sse2, ssse3, sse42): one 128-bit register per value. SSE3,
// and with it addsub and the lane duplications, is present only from ssse3 on.
#pragma once

#include "engine/simd/vec_common-inl.h"
#include "engine/simd/vec_int128-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

inline constexpr bool kHasSse3 = ZAL_LEVEL_INDEX >= 1;

// Comparison results: every bit of a lane set or clear.
struct MF32 {
  __m128 raw = _mm_setzero_ps();
};
struct MF64 {
  __m128d raw = _mm_setzero_pd();
};

struct VF32 {
  __m128 raw;
  static constexpr int kLanes = 4;
  using Mask = MF32;
};
struct VF64 {
  __m128d raw;
  static constexpr int kLanes = 2;
  using Mask = MF64;
};

ZAL_INLINE VF32 Load(const float* p) {
  return {_mm_loadu_ps(p)};
}
ZAL_INLINE VF64 Load(const double* p) {
  return {_mm_loadu_pd(p)};
}
ZAL_INLINE void Store(float* p, VF32 v) {
  _mm_storeu_ps(p, v.raw);
}
ZAL_INLINE void Store(double* p, VF64 v) {
  _mm_storeu_pd(p, v.raw);
}
// p aligned to the register.
ZAL_INLINE void Stream(float* p, VF32 v) {
  _mm_stream_ps(p, v.raw);
}
ZAL_INLINE void Stream(double* p, VF64 v) {
  _mm_stream_pd(p, v.raw);
}

// Lanes n and above hold 1, which no operation turns into an exception or a zero divisor.
ZAL_INLINE VF32 LoadN(const float* p, int n) {
  const __m128i ones = _mm_castps_si128(_mm_set1_ps(1.0f));
  const __m128i beyond = _mm_andnot_si128(FirstBytes128(n * 4), ones);
  return {_mm_castsi128_ps(_mm_or_si128(LoadPartial128(p, n * 4), beyond))};
}
ZAL_INLINE VF64 LoadN(const double* p, int) {  // n is 1
  return {_mm_loadl_pd(_mm_set1_pd(1.0), p)};
}
ZAL_INLINE void StoreN(float* p, VF32 v, int n) {
  StorePartial128(p, _mm_castps_si128(v.raw), n * 4);
}
ZAL_INLINE void StoreN(double* p, VF64 v, int) {
  _mm_storel_pd(p, v.raw);
}

ZAL_INLINE VF32 Broadcast(float x) {
  return {_mm_set1_ps(x)};
}
ZAL_INLINE VF64 Broadcast(double x) {
  return {_mm_set1_pd(x)};
}
ZAL_INLINE VF32 BroadcastPair(float even, float odd) {
  return {_mm_setr_ps(even, odd, even, odd)};
}
ZAL_INLINE VF64 BroadcastPair(double even, double odd) {
  return {_mm_setr_pd(even, odd)};
}

// The same bits seen as float lanes.
ZAL_INLINE VF32 AsF32(VF64 v) {
  return {_mm_castpd_ps(v.raw)};
}

ZAL_INLINE VF32 operator+(VF32 a, VF32 b) {
  return {_mm_add_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator+(VF64 a, VF64 b) {
  return {_mm_add_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator-(VF32 a, VF32 b) {
  return {_mm_sub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator-(VF64 a, VF64 b) {
  return {_mm_sub_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator*(VF32 a, VF32 b) {
  return {_mm_mul_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator*(VF64 a, VF64 b) {
  return {_mm_mul_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator/(VF32 a, VF32 b) {
  return {_mm_div_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator/(VF64 a, VF64 b) {
  return {_mm_div_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Xor(VF32 a, VF32 b) {
  return {_mm_xor_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Xor(VF64 a, VF64 b) {
  return {_mm_xor_pd(a.raw, b.raw)};
}

ZAL_INLINE MF32 IsZero(VF32 v) {
  return {_mm_cmpeq_ps(v.raw, _mm_setzero_ps())};
}
ZAL_INLINE MF64 IsZero(VF64 v) {
  return {_mm_cmpeq_pd(v.raw, _mm_setzero_pd())};
}
ZAL_INLINE MF32 operator|(MF32 a, MF32 b) {
  return {_mm_or_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator|(MF64 a, MF64 b) {
  return {_mm_or_pd(a.raw, b.raw)};
}
ZAL_INLINE bool AnyLane(MF32 m) {
  return _mm_movemask_ps(m.raw) != 0;
}
ZAL_INLINE bool AnyLane(MF64 m) {
  return _mm_movemask_pd(m.raw) != 0;
}

// Pairs of lanes (0, 1), (2, 3) ... hold interleaved complex values.
ZAL_INLINE VF32 DupEven(VF32 v) {
  if constexpr (kHasSse3) return {_mm_moveldup_ps(v.raw)};
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(2, 2, 0, 0))};
}
ZAL_INLINE VF64 DupEven(VF64 v) {
  return {_mm_unpacklo_pd(v.raw, v.raw)};
}
ZAL_INLINE VF32 DupOdd(VF32 v) {
  if constexpr (kHasSse3) return {_mm_movehdup_ps(v.raw)};
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(3, 3, 1, 1))};
}
ZAL_INLINE VF64 DupOdd(VF64 v) {
  return {_mm_unpackhi_pd(v.raw, v.raw)};
}
ZAL_INLINE VF32 SwapPairs(VF32 v) {
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(2, 3, 0, 1))};
}
ZAL_INLINE VF64 SwapPairs(VF64 v) {
  return {_mm_shuffle_pd(v.raw, v.raw, 1)};
}
// The first (or second) lane of every pair of a and b, a's before b's within each 128-bit block:
// two registers of pairs split by lane. InterleaveLow and InterleaveHigh put them back.
ZAL_INLINE VF32 FirstOfPairs(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF64 FirstOfPairs(VF64 a, VF64 b) {
  return {_mm_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 SecondOfPairs(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 SecondOfPairs(VF64 a, VF64 b) {
  return {_mm_unpackhi_pd(a.raw, b.raw)};
}
// Lanes of a and b alternating, from the low or the high half of each 128-bit block.
ZAL_INLINE VF32 InterleaveLow(VF32 a, VF32 b) {
  return {_mm_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveLow(VF64 a, VF64 b) {
  return {_mm_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 InterleaveHigh(VF32 a, VF32 b) {
  return {_mm_unpackhi_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveHigh(VF64 a, VF64 b) {
  return {_mm_unpackhi_pd(a.raw, b.raw)};
}
// Set where both lanes of the pair are set.
ZAL_INLINE MF32 BothOfPair(MF32 m) {
  return {_mm_and_ps(m.raw, SwapPairs(VF32{m.raw}).raw)};
}
ZAL_INLINE MF64 BothOfPair(MF64 m) {
  return {_mm_and_pd(m.raw, SwapPairs(VF64{m.raw}).raw)};
}

// a - b in even lanes, a + b in odd ones. Adding the negation is the same operation as
// subtracting, bit for bit, where SSE3 is missing.
ZAL_INLINE VF32 AddSub(VF32 a, VF32 b) {
  if constexpr (kHasSse3) return {_mm_addsub_ps(a.raw, b.raw)};
  return a + Xor(b, BroadcastPair(-0.0f, 0.0f));
}
ZAL_INLINE VF64 AddSub(VF64 a, VF64 b) {
  if constexpr (kHasSse3) return {_mm_addsub_pd(a.raw, b.raw)};
  return a + Xor(b, BroadcastPair(-0.0, 0.0));
}
// a + b in even lanes, a - b in odd ones.
ZAL_INLINE VF32 SubAdd(VF32 a, VF32 b) {
  return a + Xor(b, BroadcastPair(0.0f, -0.0f));
}
ZAL_INLINE VF64 SubAdd(VF64 a, VF64 b) {
  return a + Xor(b, BroadcastPair(0.0, -0.0));
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
