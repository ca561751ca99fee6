// The vector layer of the AVX levels (avx, avx2): 256-bit floating-point registers. Integer
// vectors are 256-bit only from avx2 on; the avx level keeps the 128-bit ones.
#pragma once

#include "engine/simd/vec_common-inl.h"

#if ZAL_LEVEL_INDEX < 4
#include "engine/simd/vec_int128-inl.h"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

struct MF32 {
  __m256 raw = _mm256_setzero_ps();
};
struct MF64 {
  __m256d raw = _mm256_setzero_pd();
};

struct VF32 {
  __m256 raw;
  static constexpr int kLanes = 8;
  using Mask = MF32;
};
struct VF64 {
  __m256d raw;
  static constexpr int kLanes = 4;
  using Mask = MF64;
};

ZAL_INLINE __m256i FirstBytes256(int bytes) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kLaneMask.bytes + 64 - bytes));
}

// The first `bytes` bytes of v (an even count below 32) and nothing else.
ZAL_INLINE void StorePartial256(void* p, __m256i v, int bytes) {
  char* c = static_cast<char*>(p);
  __m128i part = _mm256_castsi256_si128(v);
  if (bytes >= 16) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(c), part);
    part = _mm256_extractf128_si256(v, 1);
    c += 16;
    bytes -= 16;
  }
  StorePartial128(c, part, bytes);
}

ZAL_INLINE VF32 Load(const float* p) {
  return {_mm256_loadu_ps(p)};
}
ZAL_INLINE VF64 Load(const double* p) {
  return {_mm256_loadu_pd(p)};
}
ZAL_INLINE void Store(float* p, VF32 v) {
  _mm256_storeu_ps(p, v.raw);
}
ZAL_INLINE void Store(double* p, VF64 v) {
  _mm256_storeu_pd(p, v.raw);
}
// p aligned to the register.
ZAL_INLINE void Stream(float* p, VF32 v) {
  _mm256_stream_ps(p, v.raw);
}
ZAL_INLINE void Stream(double* p, VF64 v) {
  _mm256_stream_pd(p, v.raw);
}

// Lanes n and above hold 1, which no operation turns into an exception or a zero divisor. The
// masked load does not touch them.
ZAL_INLINE VF32 LoadN(const float* p, int n) {
  const __m256i first = FirstBytes256(n * 4);
  return {_mm256_blendv_ps(_mm256_set1_ps(1.0f), _mm256_maskload_ps(p, first),
                           _mm256_castsi256_ps(first))};
}
ZAL_INLINE VF64 LoadN(const double* p, int n) {
  const __m256i first = FirstBytes256(n * 8);
  return {_mm256_blendv_pd(_mm256_set1_pd(1.0), _mm256_maskload_pd(p, first),
                           _mm256_castsi256_pd(first))};
}
ZAL_INLINE void StoreN(float* p, VF32 v, int n) {
  StorePartial256(p, _mm256_castps_si256(v.raw), n * 4);
}
ZAL_INLINE void StoreN(double* p, VF64 v, int n) {
  StorePartial256(p, _mm256_castpd_si256(v.raw), n * 8);
}

ZAL_INLINE VF32 Broadcast(float x) {
  return {_mm256_set1_ps(x)};
}
ZAL_INLINE VF64 Broadcast(double x) {
  return {_mm256_set1_pd(x)};
}
ZAL_INLINE VF32 BroadcastPair(float even, float odd) {
  return {_mm256_setr_ps(even, odd, even, odd, even, odd, even, odd)};
}
ZAL_INLINE VF64 BroadcastPair(double even, double odd) {
  return {_mm256_setr_pd(even, odd, even, odd)};
}

// The same bits seen as float lanes.
ZAL_INLINE VF32 AsF32(VF64 v) {
  return {_mm256_castpd_ps(v.raw)};
}

ZAL_INLINE VF32 operator+(VF32 a, VF32 b) {
  return {_mm256_add_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator+(VF64 a, VF64 b) {
  return {_mm256_add_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator-(VF32 a, VF32 b) {
  return {_mm256_sub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator-(VF64 a, VF64 b) {
  return {_mm256_sub_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator*(VF32 a, VF32 b) {
  return {_mm256_mul_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator*(VF64 a, VF64 b) {
  return {_mm256_mul_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator/(VF32 a, VF32 b) {
  return {_mm256_div_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator/(VF64 a, VF64 b) {
  return {_mm256_div_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Xor(VF32 a, VF32 b) {
  return {_mm256_xor_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Xor(VF64 a, VF64 b) {
  return {_mm256_xor_pd(a.raw, b.raw)};
}

ZAL_INLINE MF32 IsZero(VF32 v) {
  return {_mm256_cmp_ps(v.raw, _mm256_setzero_ps(), _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 IsZero(VF64 v) {
  return {_mm256_cmp_pd(v.raw, _mm256_setzero_pd(), _CMP_EQ_OQ)};
}
ZAL_INLINE MF32 operator|(MF32 a, MF32 b) {
  return {_mm256_or_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator|(MF64 a, MF64 b) {
  return {_mm256_or_pd(a.raw, b.raw)};
}
ZAL_INLINE bool AnyLane(MF32 m) {
  return _mm256_movemask_ps(m.raw) != 0;
}
ZAL_INLINE bool AnyLane(MF64 m) {
  return _mm256_movemask_pd(m.raw) != 0;
}

// Pairs of lanes (0, 1), (2, 3) ... hold interleaved complex values.
ZAL_INLINE VF32 DupEven(VF32 v) {
  return {_mm256_moveldup_ps(v.raw)};
}
ZAL_INLINE VF64 DupEven(VF64 v) {
  return {_mm256_movedup_pd(v.raw)};
}
ZAL_INLINE VF32 DupOdd(VF32 v) {
  return {_mm256_movehdup_ps(v.raw)};
}
ZAL_INLINE VF64 DupOdd(VF64 v) {
  return {_mm256_permute_pd(v.raw, 0xF)};
}
ZAL_INLINE VF32 SwapPairs(VF32 v) {
  return {_mm256_permute_ps(v.raw, _MM_SHUFFLE(2, 3, 0, 1))};
}
ZAL_INLINE VF64 SwapPairs(VF64 v) {
  return {_mm256_permute_pd(v.raw, 0x5)};
}
// The first (or second) lane of every pair of a and b, a's before b's within each 128-bit block:
// two registers of pairs split by lane. InterleaveLow and InterleaveHigh put them back.
ZAL_INLINE VF32 FirstOfPairs(VF32 a, VF32 b) {
  return {_mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF64 FirstOfPairs(VF64 a, VF64 b) {
  return {_mm256_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 SecondOfPairs(VF32 a, VF32 b) {
  return {_mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 SecondOfPairs(VF64 a, VF64 b) {
  return {_mm256_unpackhi_pd(a.raw, b.raw)};
}
// Lanes of a and b alternating, from the low or the high half of each 128-bit block.
ZAL_INLINE VF32 InterleaveLow(VF32 a, VF32 b) {
  return {_mm256_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveLow(VF64 a, VF64 b) {
  return {_mm256_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 InterleaveHigh(VF32 a, VF32 b) {
  return {_mm256_unpackhi_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveHigh(VF64 a, VF64 b) {
  return {_mm256_unpackhi_pd(a.raw, b.raw)};
}
// Set where both lanes of the pair are set.
ZAL_INLINE MF32 BothOfPair(MF32 m) {
  return {_mm256_and_ps(m.raw, SwapPairs(VF32{m.raw}).raw)};
}
ZAL_INLINE MF64 BothOfPair(MF64 m) {
  return {_mm256_and_pd(m.raw, SwapPairs(VF64{m.raw}).raw)};
}

// a - b in even lanes, a + b in odd ones.
ZAL_INLINE VF32 AddSub(VF32 a, VF32 b) {
  return {_mm256_addsub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 AddSub(VF64 a, VF64 b) {
  return {_mm256_addsub_pd(a.raw, b.raw)};
}
// a + b in even lanes, a - b in odd ones: adding the negation is subtracting, bit for bit.
ZAL_INLINE VF32 SubAdd(VF32 a, VF32 b) {
  return a + Xor(b, BroadcastPair(0.0f, -0.0f));
}
ZAL_INLINE VF64 SubAdd(VF64 a, VF64 b) {
  return a + Xor(b, BroadcastPair(0.0, -0.0));
}

#if ZAL_LEVEL_INDEX >= 4
struct VS16 {
  __m256i raw;
  static constexpr int kLanes = 16;
};
struct VS32 {
  __m256i raw;
  static constexpr int kLanes = 8;
};
// The two halves of a widened VS16, in the lane order PackSat undoes (within 128-bit lanes).
struct VS32Pair {
  VS32 lo;
  VS32 hi;
};

ZAL_INLINE VS16 Load(const short* p) {
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
}
ZAL_INLINE void Store(short* p, VS16 v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v.raw);
}
ZAL_INLINE void Stream(short* p, VS16 v) {
  _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v.raw);
}
// Lanes from n on are clear.
ZAL_INLINE VS16 LoadN(const short* p, int n) {
  const int bytes = n * 2;
  if (bytes < 16) return {_mm256_zextsi128_si256(LoadPartial128(p, bytes))};
  return {_mm256_set_m128i(LoadPartial128(p + 8, bytes - 16),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
ZAL_INLINE void StoreN(short* p, VS16 v, int n) {
  StorePartial256(p, v.raw, n * 2);
}

ZAL_INLINE VS16 Broadcast(short x) {
  return {_mm256_set1_epi16(x)};
}
ZAL_INLINE VS32 Broadcast(std::int32_t x) {
  return {_mm256_set1_epi32(x)};
}

// Exact 32-bit products.
ZAL_INLINE VS32Pair MulWide(VS16 a, VS16 b) {
  const __m256i low = _mm256_mullo_epi16(a.raw, b.raw);
  const __m256i high = _mm256_mulhi_epi16(a.raw, b.raw);
  return {{_mm256_unpacklo_epi16(low, high)}, {_mm256_unpackhi_epi16(low, high)}};
}
ZAL_INLINE VS32Pair Widen(VS16 v) {
  return {{_mm256_srai_epi32(_mm256_unpacklo_epi16(v.raw, v.raw), 16)},
          {_mm256_srai_epi32(_mm256_unpackhi_epi16(v.raw, v.raw), 16)}};
}
// Saturates to 16 bits.
ZAL_INLINE VS16 PackSat(VS32Pair v) {
  return {_mm256_packs_epi32(v.lo.raw, v.hi.raw)};
}

ZAL_INLINE VS32 operator+(VS32 a, VS32 b) {
  return {_mm256_add_epi32(a.raw, b.raw)};
}
ZAL_INLINE VS32 operator&(VS32 a, VS32 b) {
  return {_mm256_and_si256(a.raw, b.raw)};
}
// Shift counts from 0 to 31, the same for every lane.
ZAL_INLINE VS32 ShiftRightArithmetic(VS32 v, int count) {
  return {_mm256_sra_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
ZAL_INLINE VS32 ShiftLeft(VS32 v, int count) {
  return {_mm256_sll_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
#endif

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
