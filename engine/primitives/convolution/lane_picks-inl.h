// Register-wide lane picks for the resamplers: a pick moves chosen lanes of one register to chosen
// lanes of the result and clears the others, so that every F-th sample is collected, or
// spread with zeros between, without gathers or scatters. One permute per register: a
// full-register permute at avx512, the 32-bit lane permute at avx2 (a double's lanes move as pairs
// of 32-bit halves), the byte shuffle of 16-byte registers from ssse3 to avx (whose 256-bit
// registers have no lane permute across halves). sse2 has no variable permute: kPickLanes is 0
// there and the resamplers stay scalar. Included inside namespace zal::engine::ZAL_LEVEL, in its
// anonymous namespace.

#if ZAL_LEVEL_INDEX >= 5

template <class T>
inline constexpr int kPickLanes = 64 / static_cast<int>(sizeof(T));

struct PickF32 {
  __m512i index;
  __mmask16 keep;
};
struct PickF64 {
  __m512i index;
  __mmask8 keep;
};

// source[k] is the lane that lands in lane k, or -1 for a zero.
inline PickF32 MakePick(float, const int* source) {
  alignas(64) std::int32_t index[16];
  unsigned keep = 0;
  for (int k = 0; k < 16; ++k) {
    index[k] = source[k] < 0 ? 0 : source[k];
    if (source[k] >= 0) keep |= 1u << k;
  }
  return {_mm512_load_si512(index), static_cast<__mmask16>(keep)};
}
inline PickF64 MakePick(double, const int* source) {
  alignas(64) std::int64_t index[8];
  unsigned keep = 0;
  for (int k = 0; k < 8; ++k) {
    index[k] = source[k] < 0 ? 0 : source[k];
    if (source[k] >= 0) keep |= 1u << k;
  }
  return {_mm512_load_si512(index), static_cast<__mmask8>(keep)};
}

ZAL_INLINE __m512 LoadPicks(const float* p) {
  return _mm512_loadu_ps(p);
}
ZAL_INLINE __m512d LoadPicks(const double* p) {
  return _mm512_loadu_pd(p);
}
ZAL_INLINE void StorePicks(float* p, __m512 v) {
  _mm512_storeu_ps(p, v);
}
ZAL_INLINE void StorePicks(double* p, __m512d v) {
  _mm512_storeu_pd(p, v);
}
ZAL_INLINE __m512 Picked(const PickF32& pick, __m512 v) {
  return _mm512_maskz_permutexvar_ps(pick.keep, pick.index, v);
}
ZAL_INLINE __m512d Picked(const PickF64& pick, __m512d v) {
  return _mm512_maskz_permutexvar_pd(pick.keep, pick.index, v);
}
// acc with the pick's lanes of v written over its own (the lanes of different picks are disjoint).
ZAL_INLINE __m512 PickInto(__m512 acc, const PickF32& pick, __m512 v) {
  return _mm512_mask_permutexvar_ps(acc, pick.keep, pick.index, v);
}
ZAL_INLINE __m512d PickInto(__m512d acc, const PickF64& pick, __m512d v) {
  return _mm512_mask_permutexvar_pd(acc, pick.keep, pick.index, v);
}

#elif ZAL_LEVEL_INDEX == 4

template <class T>
inline constexpr int kPickLanes = 32 / static_cast<int>(sizeof(T));

struct PickF32 {
  __m256i index;
  __m256 keep;
};
struct PickF64 {
  __m256i index;
  __m256d keep;
};

// Lanes of 4-byte halves: a double's lane d is halves 2d and 2d + 1.
template <int kHalves>
ZAL_INLINE void HalfLanes(const int* source, int lanes, __m256i* index, __m256i* keep) {
  alignas(32) std::int32_t halves[8];
  alignas(32) std::int32_t kept[8];
  for (int k = 0; k < lanes; ++k) {
    for (int h = 0; h < kHalves; ++h) {
      halves[k * kHalves + h] = source[k] < 0 ? 0 : source[k] * kHalves + h;
      kept[k * kHalves + h] = source[k] < 0 ? 0 : -1;
    }
  }
  *index = _mm256_load_si256(reinterpret_cast<const __m256i*>(halves));
  *keep = _mm256_load_si256(reinterpret_cast<const __m256i*>(kept));
}
inline PickF32 MakePick(float, const int* source) {
  __m256i index;
  __m256i keep;
  HalfLanes<1>(source, 8, &index, &keep);
  return {index, _mm256_castsi256_ps(keep)};
}
inline PickF64 MakePick(double, const int* source) {
  __m256i index;
  __m256i keep;
  HalfLanes<2>(source, 4, &index, &keep);
  return {index, _mm256_castsi256_pd(keep)};
}

ZAL_INLINE __m256 LoadPicks(const float* p) {
  return _mm256_loadu_ps(p);
}
ZAL_INLINE __m256d LoadPicks(const double* p) {
  return _mm256_loadu_pd(p);
}
ZAL_INLINE void StorePicks(float* p, __m256 v) {
  _mm256_storeu_ps(p, v);
}
ZAL_INLINE void StorePicks(double* p, __m256d v) {
  _mm256_storeu_pd(p, v);
}
ZAL_INLINE __m256 Picked(const PickF32& pick, __m256 v) {
  return _mm256_and_ps(_mm256_permutevar8x32_ps(v, pick.index), pick.keep);
}
ZAL_INLINE __m256d Picked(const PickF64& pick, __m256d v) {
  const __m256 moved = _mm256_permutevar8x32_ps(_mm256_castpd_ps(v), pick.index);
  return _mm256_and_pd(_mm256_castps_pd(moved), pick.keep);
}
ZAL_INLINE __m256 PickInto(__m256 acc, const PickF32& pick, __m256 v) {
  return _mm256_or_ps(acc, Picked(pick, v));
}
ZAL_INLINE __m256d PickInto(__m256d acc, const PickF64& pick, __m256d v) {
  return _mm256_or_pd(acc, Picked(pick, v));
}

#elif ZAL_LEVEL_INDEX >= 1

template <class T>
inline constexpr int kPickLanes = 16 / static_cast<int>(sizeof(T));

// Byte indices; a set top bit clears the byte.
struct PickBytes {
  __m128i index;
};

template <class T>
inline PickBytes MakePick(T, const int* source) {
  constexpr int kBytes = static_cast<int>(sizeof(T));
  alignas(16) std::int8_t bytes[16];
  for (int k = 0; k < 16 / kBytes; ++k) {
    for (int b = 0; b < kBytes; ++b) {
      bytes[k * kBytes + b] =
          static_cast<std::int8_t>(source[k] < 0 ? -128 : source[k] * kBytes + b);
    }
  }
  return {_mm_load_si128(reinterpret_cast<const __m128i*>(bytes))};
}

ZAL_INLINE __m128 LoadPicks(const float* p) {
  return _mm_loadu_ps(p);
}
ZAL_INLINE __m128d LoadPicks(const double* p) {
  return _mm_loadu_pd(p);
}
ZAL_INLINE void StorePicks(float* p, __m128 v) {
  _mm_storeu_ps(p, v);
}
ZAL_INLINE void StorePicks(double* p, __m128d v) {
  _mm_storeu_pd(p, v);
}
ZAL_INLINE __m128 Picked(const PickBytes& pick, __m128 v) {
  return _mm_castsi128_ps(_mm_shuffle_epi8(_mm_castps_si128(v), pick.index));
}
ZAL_INLINE __m128d Picked(const PickBytes& pick, __m128d v) {
  return _mm_castsi128_pd(_mm_shuffle_epi8(_mm_castpd_si128(v), pick.index));
}
ZAL_INLINE __m128 PickInto(__m128 acc, const PickBytes& pick, __m128 v) {
  return _mm_or_ps(acc, Picked(pick, v));
}
ZAL_INLINE __m128d PickInto(__m128d acc, const PickBytes& pick, __m128d v) {
  return _mm_or_pd(acc, Picked(pick, v));
}

#else

template <class T>
inline constexpr int kPickLanes = 0;

#endif
