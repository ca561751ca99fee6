// 128-bit integer vectors: the integer layer of the SSE levels, and of the AVX level, which has no
// 256-bit integer instructions.
#pragma once

#include "engine/simd/vec_common-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

struct VS16 {
  __m128i raw;
  static constexpr int kLanes = 8;
};
struct VS32 {
  __m128i raw;
  static constexpr int kLanes = 4;
};
// The two halves of a widened VS16, in the lane order PackSat undoes.
struct VS32Pair {
  VS32 lo;
  VS32 hi;
};

ZAL_INLINE VS16 Load(const short* p) {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
}
ZAL_INLINE void Store(short* p, VS16 v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v.raw);
}
ZAL_INLINE void Stream(short* p, VS16 v) {
  _mm_stream_si128(reinterpret_cast<__m128i*>(p), v.raw);
}
// Lanes from n on are clear.
ZAL_INLINE VS16 LoadN(const short* p, int n) {
  return {LoadPartial128(p, n * 2)};
}
ZAL_INLINE void StoreN(short* p, VS16 v, int n) {
  StorePartial128(p, v.raw, n * 2);
}

ZAL_INLINE VS16 Broadcast(short x) {
  return {_mm_set1_epi16(x)};
}
ZAL_INLINE VS32 Broadcast(std::int32_t x) {
  return {_mm_set1_epi32(x)};
}

// Exact 32-bit products.
ZAL_INLINE VS32Pair MulWide(VS16 a, VS16 b) {
  const __m128i low = _mm_mullo_epi16(a.raw, b.raw);
  const __m128i high = _mm_mulhi_epi16(a.raw, b.raw);
  return {{_mm_unpacklo_epi16(low, high)}, {_mm_unpackhi_epi16(low, high)}};
}
ZAL_INLINE VS32Pair Widen(VS16 v) {
  return {{_mm_srai_epi32(_mm_unpacklo_epi16(v.raw, v.raw), 16)},
          {_mm_srai_epi32(_mm_unpackhi_epi16(v.raw, v.raw), 16)}};
}
// Saturates to 16 bits.
ZAL_INLINE VS16 PackSat(VS32Pair v) {
  return {_mm_packs_epi32(v.lo.raw, v.hi.raw)};
}

ZAL_INLINE VS32 operator+(VS32 a, VS32 b) {
  return {_mm_add_epi32(a.raw, b.raw)};
}
ZAL_INLINE VS32 operator&(VS32 a, VS32 b) {
  return {_mm_and_si128(a.raw, b.raw)};
}
// Shift counts from 0 to 31, the same for every lane.
ZAL_INLINE VS32 ShiftRightArithmetic(VS32 v, int count) {
  return {_mm_sra_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
ZAL_INLINE VS32 ShiftLeft(VS32 v, int count) {
  return {_mm_sll_epi32(v.raw, _mm_cvtsi32_si128(count))};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
