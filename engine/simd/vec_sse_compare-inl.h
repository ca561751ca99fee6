// Comparisons, selection, extremes, square roots and float/double conversion of the SSE levels.
#pragma once

#include "engine/simd/vec_sse-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// The lower of a and b, or b where either is NaN (so a NaN in `a` leaves `b`); Max mirrors it.
ZAL_INLINE VF32 Min(VF32 a, VF32 b) {
  return {_mm_min_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Min(VF64 a, VF64 b) {
  return {_mm_min_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Max(VF32 a, VF32 b) {
  return {_mm_max_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Max(VF64 a, VF64 b) {
  return {_mm_max_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm_sqrt_pd(v.raw)};
}
ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm_or_pd(a.raw, b.raw)};
}

// Ordered comparisons: false where either lane is NaN.
ZAL_INLINE MF32 operator<(VF32 a, VF32 b) {
  return {_mm_cmplt_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator<(VF64 a, VF64 b) {
  return {_mm_cmplt_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 operator<=(VF32 a, VF32 b) {
  return {_mm_cmple_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator<=(VF64 a, VF64 b) {
  return {_mm_cmple_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 operator==(VF32 a, VF32 b) {
  return {_mm_cmpeq_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator==(VF64 a, VF64 b) {
  return {_mm_cmpeq_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 IsNan(VF32 v) {
  return {_mm_cmpunord_ps(v.raw, v.raw)};
}
ZAL_INLINE MF64 IsNan(VF64 v) {
  return {_mm_cmpunord_pd(v.raw, v.raw)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {_mm_and_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {_mm_and_pd(a.raw, b.raw)};
}
// Lane i of the mask in bit i.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return static_cast<unsigned>(_mm_movemask_ps(m.raw));
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return static_cast<unsigned>(_mm_movemask_pd(m.raw));
}
// yes where the mask is set, no elsewhere.
ZAL_INLINE VF32 Select(MF32 m, VF32 yes, VF32 no) {
  return {_mm_or_ps(_mm_and_ps(m.raw, yes.raw), _mm_andnot_ps(m.raw, no.raw))};
}
ZAL_INLINE VF64 Select(MF64 m, VF64 yes, VF64 no) {
  return {_mm_or_pd(_mm_and_pd(m.raw, yes.raw), _mm_andnot_pd(m.raw, no.raw))};
}

// VF64::kLanes floats, each converted exactly.
ZAL_INLINE VF64 LoadWidened(const float* p) {
  return {_mm_cvtps_pd(_mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p))))};
}
// The lanes of lo then hi, each rounded to float.
ZAL_INLINE VF32 Narrow(VF64 lo, VF64 hi) {
  return {_mm_movelh_ps(_mm_cvtpd_ps(lo.raw), _mm_cvtpd_ps(hi.raw))};
}

// Whole-register deinterleave and interleave in element order: the even and odd lanes of the
// sequence a, b; and the lanes of a and b alternating, first or second half of the sequence.
ZAL_INLINE VF32 EvenLanes(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF32 OddLanes(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 EvenLanes(VF64 a, VF64 b) {
  return {_mm_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF64 OddLanes(VF64 a, VF64 b) {
  return {_mm_unpackhi_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 ZipFirst(VF32 a, VF32 b) {
  return {_mm_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF32 ZipSecond(VF32 a, VF32 b) {
  return {_mm_unpackhi_ps(a.raw, b.raw)};
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
ZAL_INLINE float FoldHalves(VF32 v) {
  return FoldHalves128(v.raw);
}
ZAL_INLINE double FoldHalves(VF64 v) {
  return FoldHalves128(v.raw);
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
