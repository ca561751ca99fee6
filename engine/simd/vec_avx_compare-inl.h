// Comparisons, selection, extremes, square roots and float/double conversion of the AVX levels.
#pragma once

#include "engine/simd/vec_avx-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// The lower of a and b, or b where either is NaN (so a NaN in `a` leaves `b`); Max mirrors it.
ZAL_INLINE VF32 Min(VF32 a, VF32 b) {
  return {_mm256_min_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Min(VF64 a, VF64 b) {
  return {_mm256_min_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Max(VF32 a, VF32 b) {
  return {_mm256_max_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Max(VF64 a, VF64 b) {
  return {_mm256_max_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm256_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm256_sqrt_pd(v.raw)};
}
ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm256_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm256_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm256_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm256_or_pd(a.raw, b.raw)};
}

// Ordered comparisons: false where either lane is NaN.
ZAL_INLINE MF32 operator<(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF64 operator<(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF32 operator<=(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF64 operator<=(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF32 operator==(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 operator==(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF32 IsNan(VF32 v) {
  return {_mm256_cmp_ps(v.raw, v.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF64 IsNan(VF64 v) {
  return {_mm256_cmp_pd(v.raw, v.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {_mm256_and_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {_mm256_and_pd(a.raw, b.raw)};
}
// Lane i of the mask in bit i.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return static_cast<unsigned>(_mm256_movemask_ps(m.raw));
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return static_cast<unsigned>(_mm256_movemask_pd(m.raw));
}
// yes where the mask is set, no elsewhere.
ZAL_INLINE VF32 Select(MF32 m, VF32 yes, VF32 no) {
  return {_mm256_blendv_ps(no.raw, yes.raw, m.raw)};
}
ZAL_INLINE VF64 Select(MF64 m, VF64 yes, VF64 no) {
  return {_mm256_blendv_pd(no.raw, yes.raw, m.raw)};
}

// VF64::kLanes floats, each converted exactly.
ZAL_INLINE VF64 LoadWidened(const float* p) {
  return {_mm256_cvtps_pd(_mm_loadu_ps(p))};
}
// The lanes of lo then hi, each rounded to float.
ZAL_INLINE VF32 Narrow(VF64 lo, VF64 hi) {
  return {_mm256_set_m128(_mm256_cvtpd_ps(hi.raw), _mm256_cvtpd_ps(lo.raw))};
}

// Whole-register deinterleave and interleave in element order: the even and odd lanes of the
// sequence a, b; and the lanes of a and b alternating, first or second half of the sequence.
ZAL_INLINE VF32 EvenLanes(VF32 a, VF32 b) {
  const __m256 low = _mm256_permute2f128_ps(a.raw, b.raw, 0x20);
  const __m256 high = _mm256_permute2f128_ps(a.raw, b.raw, 0x31);
  return {_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF32 OddLanes(VF32 a, VF32 b) {
  const __m256 low = _mm256_permute2f128_ps(a.raw, b.raw, 0x20);
  const __m256 high = _mm256_permute2f128_ps(a.raw, b.raw, 0x31);
  return {_mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 EvenLanes(VF64 a, VF64 b) {
  const __m256d low = _mm256_permute2f128_pd(a.raw, b.raw, 0x20);
  const __m256d high = _mm256_permute2f128_pd(a.raw, b.raw, 0x31);
  return {_mm256_unpacklo_pd(low, high)};
}
ZAL_INLINE VF64 OddLanes(VF64 a, VF64 b) {
  const __m256d low = _mm256_permute2f128_pd(a.raw, b.raw, 0x20);
  const __m256d high = _mm256_permute2f128_pd(a.raw, b.raw, 0x31);
  return {_mm256_unpackhi_pd(low, high)};
}
ZAL_INLINE VF32 ZipFirst(VF32 a, VF32 b) {
  return {_mm256_permute2f128_ps(_mm256_unpacklo_ps(a.raw, b.raw), _mm256_unpackhi_ps(a.raw, b.raw),
                                 0x20)};
}
ZAL_INLINE VF32 ZipSecond(VF32 a, VF32 b) {
  return {_mm256_permute2f128_ps(_mm256_unpacklo_ps(a.raw, b.raw), _mm256_unpackhi_ps(a.raw, b.raw),
                                 0x31)};
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
ZAL_INLINE float FoldHalves(VF32 v) {
  return FoldHalves256(v.raw);
}
ZAL_INLINE double FoldHalves(VF64 v) {
  return FoldHalves256(v.raw);
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
