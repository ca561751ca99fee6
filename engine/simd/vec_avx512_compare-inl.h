// Comparisons, selection, extremes, square roots and float/double conversion of the avx512 level.
#pragma once

#include "engine/simd/vec_avx512-inl.h"

// As in vec_avx512-inl.h: GCC 12 warns inside its own reduction and conversion intrinsics.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

// The lower of a and b, or b where either is NaN (so a NaN in `a` leaves `b`); Max mirrors it.
ZAL_INLINE VF32 Min(VF32 a, VF32 b) {
  return {_mm512_min_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Min(VF64 a, VF64 b) {
  return {_mm512_min_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Max(VF32 a, VF32 b) {
  return {_mm512_max_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Max(VF64 a, VF64 b) {
  return {_mm512_max_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm512_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm512_sqrt_pd(v.raw)};
}
ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm512_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm512_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm512_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm512_or_pd(a.raw, b.raw)};
}

// Ordered comparisons: false where either lane is NaN.
ZAL_INLINE MF32 operator<(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF64 operator<(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF32 operator<=(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF64 operator<=(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF32 operator==(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 operator==(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF32 IsNan(VF32 v) {
  return {_mm512_cmp_ps_mask(v.raw, v.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF64 IsNan(VF64 v) {
  return {_mm512_cmp_pd_mask(v.raw, v.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {static_cast<__mmask16>(a.raw & b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {static_cast<__mmask8>(a.raw & b.raw)};
}
// Lane i of the mask in bit i.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return m.raw;
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return m.raw;
}
// yes where the mask is set, no elsewhere.
ZAL_INLINE VF32 Select(MF32 m, VF32 yes, VF32 no) {
  return {_mm512_mask_blend_ps(m.raw, no.raw, yes.raw)};
}
ZAL_INLINE VF64 Select(MF64 m, VF64 yes, VF64 no) {
  return {_mm512_mask_blend_pd(m.raw, no.raw, yes.raw)};
}

// VF64::kLanes floats, each converted exactly.
ZAL_INLINE VF64 LoadWidened(const float* p) {
  return {_mm512_cvtps_pd(_mm256_loadu_ps(p))};
}
// The lanes of lo then hi, each rounded to float.
ZAL_INLINE VF32 Narrow(VF64 lo, VF64 hi) {
  return {_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(lo.raw)),
                             _mm512_cvtpd_ps(hi.raw), 1)};
}

// Whole-register deinterleave and interleave in element order: the even and odd lanes of the
// sequence a, b; and the lanes of a and b alternating, first or second half of the sequence.
ZAL_INLINE VF32 EvenLanes(VF32 a, VF32 b) {
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  return {_mm512_permutex2var_ps(a.raw, even, b.raw)};
}
ZAL_INLINE VF32 OddLanes(VF32 a, VF32 b) {
  const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  return {_mm512_permutex2var_ps(a.raw, odd, b.raw)};
}
ZAL_INLINE VF64 EvenLanes(VF64 a, VF64 b) {
  const __m512i even = _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14);
  return {_mm512_permutex2var_pd(a.raw, even, b.raw)};
}
ZAL_INLINE VF64 OddLanes(VF64 a, VF64 b) {
  const __m512i odd = _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15);
  return {_mm512_permutex2var_pd(a.raw, odd, b.raw)};
}
ZAL_INLINE VF32 ZipFirst(VF32 a, VF32 b) {
  const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  return {_mm512_permutex2var_ps(a.raw, first, b.raw)};
}
ZAL_INLINE VF32 ZipSecond(VF32 a, VF32 b) {
  const __m512i second =
      _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  return {_mm512_permutex2var_ps(a.raw, second, b.raw)};
}

// Lane 0 after folding the upper half of the lanes onto the lower half, again and again: lane j
// gains lane j + L/2, then j + L/4 ... a fixed pairwise order, the same at every width.
ZAL_INLINE float FoldHalves128(__m128 v) {
  v = _mm_add_ps(v, _mm_movehl_ps(v, v));
  return _mm_cvtss_f32(_mm_add_ss(v, _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 1, 1, 1))));
}
ZAL_INLINE double FoldHalves128(__m128d v) {
  return _mm_cvtsd_f64(_mm_add_sd(v, _mm_unpackhi_pd(v, v)));
}
ZAL_INLINE float FoldHalves256(__m256 v) {
  return FoldHalves128(_mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1)));
}
ZAL_INLINE double FoldHalves256(__m256d v) {
  return FoldHalves128(_mm_add_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1)));
}
ZAL_INLINE float FoldHalves512(__m512 v) {
  return FoldHalves256(_mm256_add_ps(_mm512_castps512_ps256(v), _mm512_extractf32x8_ps(v, 1)));
}
ZAL_INLINE double FoldHalves512(__m512d v) {
  return FoldHalves256(_mm256_add_pd(_mm512_castpd512_pd256(v), _mm512_extractf64x4_pd(v, 1)));
}
ZAL_INLINE float FoldHalves(VF32 v) {
  return FoldHalves512(v.raw);
}
ZAL_INLINE double FoldHalves(VF64 v) {
  return FoldHalves512(v.raw);
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
