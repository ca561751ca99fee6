// The lane sums of four accumulators, stored as four consecutive outputs. One transpose for the
// four (shuffles within 128-bit lanes, then one fold of the lanes) costs about what a single
// register's horizontal sum does, which at 32-64 taps per phase is as much as the products.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

// As in the vector layer: GCC 12 warns inside its own extraction and unpacking intrinsics.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

#if ZAL_LEVEL_INDEX >= 5
ZAL_INLINE __m256 FoldToHalf(__m512 v) {
  const __m256 high = _mm256_castpd_ps(_mm512_extractf64x4_pd(_mm512_castps_pd(v), 1));
  return _mm256_add_ps(_mm512_castps512_ps256(v), high);
}
ZAL_INLINE __m256d FoldToHalf(__m512d v) {
  return _mm256_add_pd(_mm512_castpd512_pd256(v), _mm512_extractf64x4_pd(v, 1));
}
#endif
#if ZAL_LEVEL_INDEX >= 3
ZAL_INLINE __m128 FoldToHalf(__m256 v) {
  return _mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1));
}
ZAL_INLINE __m128d FoldToHalf(__m256d v) {
  return _mm_add_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
}
#endif

// Per 128-bit lane: [a0+a2+a1+a3, b.., c.., d..], then the lanes added.
ZAL_INLINE void StoreSums(float* dst, VF32 a, VF32 b, VF32 c, VF32 d) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512 ab =
      _mm512_add_ps(_mm512_unpacklo_ps(a.raw, b.raw), _mm512_unpackhi_ps(a.raw, b.raw));
  const __m512 cd =
      _mm512_add_ps(_mm512_unpacklo_ps(c.raw, d.raw), _mm512_unpackhi_ps(c.raw, d.raw));
  const __m512 sums = _mm512_add_ps(_mm512_shuffle_ps(ab, cd, _MM_SHUFFLE(1, 0, 1, 0)),
                                    _mm512_shuffle_ps(ab, cd, _MM_SHUFFLE(3, 2, 3, 2)));
  _mm_storeu_ps(dst, FoldToHalf(FoldToHalf(sums)));
#elif ZAL_LEVEL_INDEX >= 3
  const __m256 ab =
      _mm256_add_ps(_mm256_unpacklo_ps(a.raw, b.raw), _mm256_unpackhi_ps(a.raw, b.raw));
  const __m256 cd =
      _mm256_add_ps(_mm256_unpacklo_ps(c.raw, d.raw), _mm256_unpackhi_ps(c.raw, d.raw));
  const __m256 sums = _mm256_add_ps(_mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(1, 0, 1, 0)),
                                    _mm256_shuffle_ps(ab, cd, _MM_SHUFFLE(3, 2, 3, 2)));
  _mm_storeu_ps(dst, FoldToHalf(sums));
#else
  const __m128 ab = _mm_add_ps(_mm_unpacklo_ps(a.raw, b.raw), _mm_unpackhi_ps(a.raw, b.raw));
  const __m128 cd = _mm_add_ps(_mm_unpacklo_ps(c.raw, d.raw), _mm_unpackhi_ps(c.raw, d.raw));
  _mm_storeu_ps(dst, _mm_add_ps(_mm_movelh_ps(ab, cd), _mm_movehl_ps(cd, ab)));
#endif
}

ZAL_INLINE void StoreSums(double* dst, VF64 a, VF64 b, VF64 c, VF64 d) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512d ab =
      _mm512_add_pd(_mm512_unpacklo_pd(a.raw, b.raw), _mm512_unpackhi_pd(a.raw, b.raw));
  const __m512d cd =
      _mm512_add_pd(_mm512_unpacklo_pd(c.raw, d.raw), _mm512_unpackhi_pd(c.raw, d.raw));
  _mm_storeu_pd(dst, FoldToHalf(FoldToHalf(ab)));
  _mm_storeu_pd(dst + 2, FoldToHalf(FoldToHalf(cd)));
#elif ZAL_LEVEL_INDEX >= 3
  const __m256d ab =
      _mm256_add_pd(_mm256_unpacklo_pd(a.raw, b.raw), _mm256_unpackhi_pd(a.raw, b.raw));
  const __m256d cd =
      _mm256_add_pd(_mm256_unpacklo_pd(c.raw, d.raw), _mm256_unpackhi_pd(c.raw, d.raw));
  _mm_storeu_pd(dst, FoldToHalf(ab));
  _mm_storeu_pd(dst + 2, FoldToHalf(cd));
#else
  _mm_storeu_pd(dst, _mm_add_pd(_mm_unpacklo_pd(a.raw, b.raw), _mm_unpackhi_pd(a.raw, b.raw)));
  _mm_storeu_pd(dst + 2, _mm_add_pd(_mm_unpacklo_pd(c.raw, d.raw), _mm_unpackhi_pd(c.raw, d.raw)));
#endif
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
