// Whole-register rearrangements and fused products that transforms need: a square transpose of
// lanes-many registers, full-width zip and unzip of complex pairs, lane reversal. Included after
// vec-inl.h inside level translation units only.
#pragma once

#include "engine/simd/vec-inl.h"

// GCC 12 takes the undefined pass-through operand inside its own AVX-512 shuffle intrinsics for an
// uninitialised variable (fixed in GCC 13), as in vec_avx512-inl.h.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

// The transposes' loops run over register arrays: unrolled, the arrays stay in registers.
#if defined(__GNUC__)
#define ZAL_UNROLL_FULLY _Pragma("GCC unroll 16")
#else
#define ZAL_UNROLL_FULLY
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

// a * b + c and a * b - c, rounded once where the level has FMA.
ZAL_INLINE VF32 FusedMulAdd(VF32 a, VF32 b, VF32 c) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_fmadd_ps(a.raw, b.raw, c.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmadd_ps(a.raw, b.raw, c.raw)};
#else
  return a * b + c;
#endif
}
ZAL_INLINE VF64 FusedMulAdd(VF64 a, VF64 b, VF64 c) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_fmadd_pd(a.raw, b.raw, c.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmadd_pd(a.raw, b.raw, c.raw)};
#else
  return a * b + c;
#endif
}
ZAL_INLINE VF32 FusedMulSub(VF32 a, VF32 b, VF32 c) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_fmsub_ps(a.raw, b.raw, c.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmsub_ps(a.raw, b.raw, c.raw)};
#else
  return a * b - c;
#endif
}
ZAL_INLINE VF64 FusedMulSub(VF64 a, VF64 b, VF64 c) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_fmsub_pd(a.raw, b.raw, c.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmsub_pd(a.raw, b.raw, c.raw)};
#else
  return a * b - c;
#endif
}

// Lanes in reverse order.
ZAL_INLINE VF32 Reverse(VF32 v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_permutexvar_ps(
      _mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), v.raw)};
#elif ZAL_LEVEL_INDEX >= 3
  const __m256 halves_swapped = _mm256_permute2f128_ps(v.raw, v.raw, 0x01);
  return {_mm256_permute_ps(halves_swapped, _MM_SHUFFLE(0, 1, 2, 3))};
#else
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(0, 1, 2, 3))};
#endif
}
ZAL_INLINE VF64 Reverse(VF64 v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_permutexvar_pd(_mm512_setr_epi64(7, 6, 5, 4, 3, 2, 1, 0), v.raw)};
#elif ZAL_LEVEL_INDEX >= 3
  const __m256d halves_swapped = _mm256_permute2f128_pd(v.raw, v.raw, 0x01);
  return {_mm256_permute_pd(halves_swapped, 0x5)};
#else
  return {_mm_shuffle_pd(v.raw, v.raw, 0x1)};
#endif
}

#if ZAL_LEVEL_INDEX >= 5
// One two-source permute per output register: a third of the shuffles the in-block pair
// operations and block moves take.
ZAL_INLINE void Unzip(VF32 a, VF32 b, VF32& re, VF32& im) {
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  re.raw = _mm512_permutex2var_ps(a.raw, even, b.raw);
  im.raw = _mm512_permutex2var_ps(a.raw, odd, b.raw);
}
ZAL_INLINE void Unzip(VF64 a, VF64 b, VF64& re, VF64& im) {
  re.raw = _mm512_permutex2var_pd(a.raw, _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14), b.raw);
  im.raw = _mm512_permutex2var_pd(a.raw, _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15), b.raw);
}
ZAL_INLINE void Zip(VF32 re, VF32 im, VF32& a, VF32& b) {
  const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i high =
      _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  a.raw = _mm512_permutex2var_ps(re.raw, low, im.raw);
  b.raw = _mm512_permutex2var_ps(re.raw, high, im.raw);
}
ZAL_INLINE void Zip(VF64 re, VF64 im, VF64& a, VF64& b) {
  a.raw = _mm512_permutex2var_pd(re.raw, _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11), im.raw);
  b.raw = _mm512_permutex2var_pd(re.raw, _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15), im.raw);
}
#else
// 128-bit blocks of a and b rearranged so that the in-block pair operations act as full-width
// ones: zip output blocks come as [lo0 hi0 lo1 hi1 ...], unzip input blocks as
// [a0 a2 ... b0 b2 ...], [a1 a3 ... b1 b3 ...]; at 256 bits both are the same swap.
template <class V>
ZAL_INLINE void ZipBlocks(V& lo, V& hi) {
#if ZAL_LEVEL_INDEX >= 3
  if constexpr (V::kLanes == 8) {
    const __m256 first = _mm256_permute2f128_ps(lo.raw, hi.raw, 0x20);
    hi.raw = _mm256_permute2f128_ps(lo.raw, hi.raw, 0x31);
    lo.raw = first;
  } else {
    const __m256d first = _mm256_permute2f128_pd(lo.raw, hi.raw, 0x20);
    hi.raw = _mm256_permute2f128_pd(lo.raw, hi.raw, 0x31);
    lo.raw = first;
  }
#else
  (void)lo;
  (void)hi;
#endif
}

// Complex pairs (re, im) of the 2 * kLanes values at a, b as separate real and imaginary lanes,
// in order.
template <class V>
ZAL_INLINE void Unzip(V a, V b, V& re, V& im) {
  ZipBlocks(a, b);
  re = FirstOfPairs(a, b);
  im = SecondOfPairs(a, b);
}
// The inverse of Unzip.
template <class V>
ZAL_INLINE void Zip(V re, V im, V& a, V& b) {
  a = InterleaveLow(re, im);
  b = InterleaveHigh(re, im);
  ZipBlocks(a, b);
}
#endif

// v[0..kLanes) as the rows of a square matrix, transposed in place.
ZAL_INLINE void Transpose(VF32* v) {
#if ZAL_LEVEL_INDEX >= 5
  __m512 u[16];
  ZAL_UNROLL_FULLY
  for (int g = 0; g < 16; g += 4) {
    const __m512 t0 = _mm512_unpacklo_ps(v[g].raw, v[g + 1].raw);
    const __m512 t1 = _mm512_unpackhi_ps(v[g].raw, v[g + 1].raw);
    const __m512 t2 = _mm512_unpacklo_ps(v[g + 2].raw, v[g + 3].raw);
    const __m512 t3 = _mm512_unpackhi_ps(v[g + 2].raw, v[g + 3].raw);
    u[g] = _mm512_castpd_ps(_mm512_unpacklo_pd(_mm512_castps_pd(t0), _mm512_castps_pd(t2)));
    u[g + 1] = _mm512_castpd_ps(_mm512_unpackhi_pd(_mm512_castps_pd(t0), _mm512_castps_pd(t2)));
    u[g + 2] = _mm512_castpd_ps(_mm512_unpacklo_pd(_mm512_castps_pd(t1), _mm512_castps_pd(t3)));
    u[g + 3] = _mm512_castpd_ps(_mm512_unpackhi_pd(_mm512_castps_pd(t1), _mm512_castps_pd(t3)));
  }
  ZAL_UNROLL_FULLY
  for (int c = 0; c < 4; ++c) {
    const __m512 x0 = _mm512_shuffle_f32x4(u[c], u[4 + c], _MM_SHUFFLE(1, 0, 1, 0));
    const __m512 x1 = _mm512_shuffle_f32x4(u[c], u[4 + c], _MM_SHUFFLE(3, 2, 3, 2));
    const __m512 x2 = _mm512_shuffle_f32x4(u[8 + c], u[12 + c], _MM_SHUFFLE(1, 0, 1, 0));
    const __m512 x3 = _mm512_shuffle_f32x4(u[8 + c], u[12 + c], _MM_SHUFFLE(3, 2, 3, 2));
    v[c].raw = _mm512_shuffle_f32x4(x0, x2, _MM_SHUFFLE(2, 0, 2, 0));
    v[4 + c].raw = _mm512_shuffle_f32x4(x0, x2, _MM_SHUFFLE(3, 1, 3, 1));
    v[8 + c].raw = _mm512_shuffle_f32x4(x1, x3, _MM_SHUFFLE(2, 0, 2, 0));
    v[12 + c].raw = _mm512_shuffle_f32x4(x1, x3, _MM_SHUFFLE(3, 1, 3, 1));
  }
#elif ZAL_LEVEL_INDEX >= 3
  __m256 s[8];
  ZAL_UNROLL_FULLY
  for (int g = 0; g < 8; g += 4) {
    const __m256 t0 = _mm256_unpacklo_ps(v[g].raw, v[g + 1].raw);
    const __m256 t1 = _mm256_unpackhi_ps(v[g].raw, v[g + 1].raw);
    const __m256 t2 = _mm256_unpacklo_ps(v[g + 2].raw, v[g + 3].raw);
    const __m256 t3 = _mm256_unpackhi_ps(v[g + 2].raw, v[g + 3].raw);
    s[g] = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
    s[g + 1] = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
    s[g + 2] = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
    s[g + 3] = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
  }
  ZAL_UNROLL_FULLY
  for (int c = 0; c < 4; ++c) {
    v[c].raw = _mm256_permute2f128_ps(s[c], s[4 + c], 0x20);
    v[4 + c].raw = _mm256_permute2f128_ps(s[c], s[4 + c], 0x31);
  }
#else
  const __m128 t0 = _mm_unpacklo_ps(v[0].raw, v[1].raw);
  const __m128 t1 = _mm_unpackhi_ps(v[0].raw, v[1].raw);
  const __m128 t2 = _mm_unpacklo_ps(v[2].raw, v[3].raw);
  const __m128 t3 = _mm_unpackhi_ps(v[2].raw, v[3].raw);
  v[0].raw = _mm_movelh_ps(t0, t2);
  v[1].raw = _mm_movehl_ps(t2, t0);
  v[2].raw = _mm_movelh_ps(t1, t3);
  v[3].raw = _mm_movehl_ps(t3, t1);
#endif
}
ZAL_INLINE void Transpose(VF64* v) {
#if ZAL_LEVEL_INDEX >= 5
  __m512d u[8];
  ZAL_UNROLL_FULLY
  for (int g = 0; g < 8; g += 2) {
    u[g] = _mm512_unpacklo_pd(v[g].raw, v[g + 1].raw);
    u[g + 1] = _mm512_unpackhi_pd(v[g].raw, v[g + 1].raw);
  }
  ZAL_UNROLL_FULLY
  for (int c = 0; c < 2; ++c) {
    const __m512d x0 = _mm512_shuffle_f64x2(u[c], u[2 + c], _MM_SHUFFLE(1, 0, 1, 0));
    const __m512d x1 = _mm512_shuffle_f64x2(u[c], u[2 + c], _MM_SHUFFLE(3, 2, 3, 2));
    const __m512d x2 = _mm512_shuffle_f64x2(u[4 + c], u[6 + c], _MM_SHUFFLE(1, 0, 1, 0));
    const __m512d x3 = _mm512_shuffle_f64x2(u[4 + c], u[6 + c], _MM_SHUFFLE(3, 2, 3, 2));
    v[c].raw = _mm512_shuffle_f64x2(x0, x2, _MM_SHUFFLE(2, 0, 2, 0));
    v[2 + c].raw = _mm512_shuffle_f64x2(x0, x2, _MM_SHUFFLE(3, 1, 3, 1));
    v[4 + c].raw = _mm512_shuffle_f64x2(x1, x3, _MM_SHUFFLE(2, 0, 2, 0));
    v[6 + c].raw = _mm512_shuffle_f64x2(x1, x3, _MM_SHUFFLE(3, 1, 3, 1));
  }
#elif ZAL_LEVEL_INDEX >= 3
  const __m256d t0 = _mm256_unpacklo_pd(v[0].raw, v[1].raw);
  const __m256d t1 = _mm256_unpackhi_pd(v[0].raw, v[1].raw);
  const __m256d t2 = _mm256_unpacklo_pd(v[2].raw, v[3].raw);
  const __m256d t3 = _mm256_unpackhi_pd(v[2].raw, v[3].raw);
  v[0].raw = _mm256_permute2f128_pd(t0, t2, 0x20);
  v[1].raw = _mm256_permute2f128_pd(t1, t3, 0x20);
  v[2].raw = _mm256_permute2f128_pd(t0, t2, 0x31);
  v[3].raw = _mm256_permute2f128_pd(t1, t3, 0x31);
#else
  const __m128d t0 = _mm_unpacklo_pd(v[0].raw, v[1].raw);
  v[1].raw = _mm_unpackhi_pd(v[0].raw, v[1].raw);
  v[0].raw = t0;
#endif
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
