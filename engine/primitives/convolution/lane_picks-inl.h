// Register-wide lane picks for the resamplers: a pick moves chosen lanes of one register (or of a
// pair, for a pair pick) to chosen lanes of the result and clears the others, so that every F-th
// sample is collected, or spread with zeros between, without gathers or scatters. A pick is made
// from a row of 32-bit lane sources (negative: a zero), read from a constant table. One permute
// per register: the full-register permutes at avx512 (two-register for pairs), the 32-bit lane
// permute at avx2 (a double's lanes move as pairs of 32-bit halves), the byte shuffle of 16-byte
// registers from ssse3 to avx (whose 256-bit registers have no lane permute across halves). sse2
// has no variable permute: kPickLanes is 0 there and the resamplers stay scalar. Included inside
// namespace zal::engine::ZAL_LEVEL, in its anonymous namespace.

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

ZAL_INLINE PickF32 MakePick(float, const std::int32_t* source) {
  const __m512i index = _mm512_loadu_si512(source);
  return {index, _mm512_cmpge_epi32_mask(index, _mm512_setzero_si512())};
}
ZAL_INLINE PickF64 MakePick(double, const std::int32_t* source) {
  // The zero-masking form: GCC 12's plain one reads an undefined pass-through operand.
  const __m512i index = _mm512_maskz_cvtepi32_epi64(
      0xFF, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source)));
  return {index, _mm512_cmpge_epi64_mask(index, _mm512_setzero_si512())};
}
// Sources below 2 kLanes: the second register's lanes count on from the first's.
ZAL_INLINE PickF32 MakePairPick(float, const std::int32_t* source) {
  return MakePick(0.0f, source);
}
ZAL_INLINE PickF64 MakePairPick(double, const std::int32_t* source) {
  return MakePick(0.0, source);
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
ZAL_INLINE __m512 PairPicked(const PickF32& pick, __m512 a, __m512 b) {
  return _mm512_maskz_permutex2var_ps(pick.keep, a, pick.index, b);
}
ZAL_INLINE __m512d PairPicked(const PickF64& pick, __m512d a, __m512d b) {
  return _mm512_maskz_permutex2var_pd(pick.keep, a, pick.index, b);
}
// Results of picks with disjoint lanes, joined.
ZAL_INLINE __m512 Joined(__m512 a, __m512 b) {
  return _mm512_castsi512_ps(_mm512_or_si512(_mm512_castps_si512(a), _mm512_castps_si512(b)));
}
ZAL_INLINE __m512d Joined(__m512d a, __m512d b) {
  return _mm512_castsi512_pd(_mm512_or_si512(_mm512_castpd_si512(a), _mm512_castpd_si512(b)));
}

#elif ZAL_LEVEL_INDEX == 4

template <class T>
inline constexpr int kPickLanes = 32 / static_cast<int>(sizeof(T));

// Indices of 32-bit halves (only their low three bits count) and the lanes kept from the first
// and the second register.
struct PickF32 {
  __m256i index;
  __m256 first;
  __m256 second;
};
struct PickF64 {
  __m256i index;
  __m256d first;
  __m256d second;
};

ZAL_INLINE PickF32 MakePairPick(float, const std::int32_t* source) {
  const __m256i index = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
  const __m256i kept = _mm256_cmpgt_epi32(index, _mm256_set1_epi32(-1));
  const __m256i second = _mm256_cmpgt_epi32(index, _mm256_set1_epi32(7));
  return {index, _mm256_castsi256_ps(_mm256_andnot_si256(second, kept)),
          _mm256_castsi256_ps(second)};
}
// A double's lane s is halves 2s and 2s + 1.
ZAL_INLINE PickF64 MakePairPick(double, const std::int32_t* source) {
  const __m256i lane =
      _mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(source)));
  const __m256i even = _mm256_slli_epi64(_mm256_and_si256(lane, _mm256_set1_epi64x(3)), 1);
  const __m256i index = _mm256_add_epi64(_mm256_or_si256(even, _mm256_slli_epi64(even, 32)),
                                         _mm256_set1_epi64x(1LL << 32));
  const __m256i kept = _mm256_cmpgt_epi64(lane, _mm256_set1_epi64x(-1));
  const __m256i second = _mm256_cmpgt_epi64(lane, _mm256_set1_epi64x(3));
  return {index, _mm256_castsi256_pd(_mm256_andnot_si256(second, kept)),
          _mm256_castsi256_pd(second)};
}
template <class T>
ZAL_INLINE auto MakePick(T, const std::int32_t* source) {
  return MakePairPick(T(0), source);
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
ZAL_INLINE __m256 Moved(const __m256i& index, __m256 v) {
  return _mm256_permutevar8x32_ps(v, index);
}
ZAL_INLINE __m256d Moved(const __m256i& index, __m256d v) {
  return _mm256_castps_pd(_mm256_permutevar8x32_ps(_mm256_castpd_ps(v), index));
}
ZAL_INLINE __m256 Joined(__m256 a, __m256 b) {
  return _mm256_or_ps(a, b);
}
ZAL_INLINE __m256d Joined(__m256d a, __m256d b) {
  return _mm256_or_pd(a, b);
}
ZAL_INLINE __m256 Kept(__m256 v, __m256 keep) {
  return _mm256_and_ps(v, keep);
}
ZAL_INLINE __m256d Kept(__m256d v, __m256d keep) {
  return _mm256_and_pd(v, keep);
}
template <class Pick, class V>
ZAL_INLINE V Picked(const Pick& pick, V v) {
  return Kept(Moved(pick.index, v), pick.first);
}
template <class Pick, class V>
ZAL_INLINE V PairPicked(const Pick& pick, V a, V b) {
  return Joined(Kept(Moved(pick.index, a), pick.first), Kept(Moved(pick.index, b), pick.second));
}

#elif ZAL_LEVEL_INDEX >= 1

template <class T>
inline constexpr int kPickLanes = 16 / static_cast<int>(sizeof(T));

// Byte indices; a set top bit clears the byte.
struct PickBytes {
  __m128i first;
  __m128i second;
};

// The bytes of lanes of kBytes bytes from their 32-bit lane numbers, a negative one giving bytes
// with the top bit set.
template <int kBytes>
ZAL_INLINE __m128i ByteIndex(__m128i lane) {
  const __m128i scaled = _mm_slli_epi32(lane, kBytes == 4 ? 2 : 3);
  const __m128i spread = kBytes == 4
                             ? _mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12)
                             : _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 4, 4, 4, 4);
  const __m128i within = kBytes == 4
                             ? _mm_setr_epi8(0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3)
                             : _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7);
  return _mm_add_epi8(_mm_shuffle_epi8(scaled, spread), within);
}

template <class T>
ZAL_INLINE PickBytes MakePairPick(T, const std::int32_t* source) {
  constexpr int kLanes = 16 / static_cast<int>(sizeof(T));
  const __m128i lane = kLanes == 4 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(source))
                                   : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(source));
  const __m128i second = _mm_cmpgt_epi32(lane, _mm_set1_epi32(kLanes - 1));
  return {ByteIndex<sizeof(T)>(_mm_or_si128(lane, second)),
          ByteIndex<sizeof(T)>(_mm_sub_epi32(lane, _mm_set1_epi32(kLanes)))};
}
template <class T>
ZAL_INLINE PickBytes MakePick(T, const std::int32_t* source) {
  return MakePairPick(T(0), source);
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
ZAL_INLINE __m128 Moved(const __m128i& bytes, __m128 v) {
  return _mm_castsi128_ps(_mm_shuffle_epi8(_mm_castps_si128(v), bytes));
}
ZAL_INLINE __m128d Moved(const __m128i& bytes, __m128d v) {
  return _mm_castsi128_pd(_mm_shuffle_epi8(_mm_castpd_si128(v), bytes));
}
ZAL_INLINE __m128 Joined(__m128 a, __m128 b) {
  return _mm_or_ps(a, b);
}
ZAL_INLINE __m128d Joined(__m128d a, __m128d b) {
  return _mm_or_pd(a, b);
}
template <class V>
ZAL_INLINE V Picked(const PickBytes& pick, V v) {
  return Moved(pick.first, v);
}
template <class V>
ZAL_INLINE V PairPicked(const PickBytes& pick, V a, V b) {
  return Joined(Moved(pick.first, a), Moved(pick.second, b));
}

#else

template <class T>
inline constexpr int kPickLanes = 0;

#endif
