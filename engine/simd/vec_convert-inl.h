// Lanes for format conversion: one register of 32-bit lanes seen as floats (CF) or integers (CI),
// and the doubles of as many lanes (CD, two registers). Loads widen each element type into the
// lanes and stores narrow them back, so that a conversion kernel is its per-lane arithmetic.
// 128-bit registers up to the avx level (which has no 256-bit integer instructions), 256-bit at
// avx2, 512-bit at avx512.
#pragma once

#include <array>

#include "engine/core/shapes.h"
#include "engine/simd/vec_common-inl.h"

// GCC 12 takes the undefined pass-through operand inside its own AVX-512 conversion intrinsics for
// an uninitialised variable (fixed in GCC 13). Scoped to these wrappers.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

#if ZAL_LEVEL_INDEX >= 5
using FloatRegister = __m512;
using IntRegister = __m512i;
using DoubleRegister = __m512d;
#elif ZAL_LEVEL_INDEX >= 4
using FloatRegister = __m256;
using IntRegister = __m256i;
using DoubleRegister = __m256d;
#else
using FloatRegister = __m128;
using IntRegister = __m128i;
using DoubleRegister = __m128d;
#endif

inline constexpr int kConvertLanes = sizeof(FloatRegister) / 4;

struct CF {
  FloatRegister raw;
};
struct CI {
  IntRegister raw;
};
struct CD {
  DoubleRegister lo;
  DoubleRegister hi;
};
// Packed 24-bit samples as loaded: each in the top three bytes of its lane, so the lane is the
// sample times 256. Conversions take the shift down or fold it into their factor.
struct CS24 {
  IntRegister raw;
};

// ---- 128-bit pieces, shared by every width ----------------------------------------------------

// Four packed 24-bit samples (12 bytes, read exactly) in the top three bytes of 32-bit lanes.
ZAL_INLINE __m128i LoadS24Quad(const Int24* p) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(p);
  std::uint64_t low;
  std::uint32_t high;
  std::memcpy(&low, bytes, 8);
  std::memcpy(&high, bytes + 8, 4);
#if ZAL_LEVEL_INDEX >= 1
  const __m128i packed = _mm_unpacklo_epi64(_mm_cvtsi64_si128(static_cast<long long>(low)),
                                            _mm_cvtsi32_si128(static_cast<int>(high)));
  return _mm_shuffle_epi8(packed,
                          _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11));
#else
  const auto lane = [](std::uint64_t bits) { return static_cast<int>(bits << 8); };
  return _mm_setr_epi32(lane(low), lane(low >> 24), lane((low >> 48) | (std::uint64_t{high} << 16)),
                        lane(high >> 8));
#endif
}

// The low three bytes of four lanes, written as 12 bytes exactly.
ZAL_INLINE void StoreS24Quad(Int24* p, __m128i v) {
  auto* bytes = reinterpret_cast<unsigned char*>(p);
#if ZAL_LEVEL_INDEX >= 1
  const __m128i packed =
      _mm_shuffle_epi8(v, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(packed));
  const auto high =
      static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(packed, packed)));
#else
  const auto first = static_cast<std::uint64_t>(_mm_cvtsi128_si64(v));
  const auto second = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v)));
  const std::uint64_t a = first & 0xFFFFFF;
  const std::uint64_t b = (first >> 32) & 0xFFFFFF;
  const std::uint64_t c = second & 0xFFFFFF;
  const std::uint64_t d = (second >> 32) & 0xFFFFFF;
  const std::uint64_t low = a | (b << 24) | (c << 48);
  const auto high = static_cast<std::uint32_t>((c >> 16) | (d << 8));
#endif
  std::memcpy(bytes, &low, 8);
  std::memcpy(bytes + 8, &high, 4);
}

// Four 16-bit values, sign- or zero-extended.
ZAL_INLINE __m128i LoadS16Quad(const short* p) {
  const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
#if ZAL_LEVEL_INDEX >= 2
  return _mm_cvtepi16_epi32(v);
#else
  return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16);
#endif
}
ZAL_INLINE __m128i LoadU16Quad(const unsigned short* p) {
  return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                            _mm_setzero_si128());
}

// ---- Full-width loads and stores ---------------------------------------------------------------

ZAL_INLINE CF LoadLanes(const float* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_loadu_ps(p)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_loadu_ps(p)};
#else
  return {_mm_loadu_ps(p)};
#endif
}
ZAL_INLINE void StoreLanes(float* p, CF v) {
#if ZAL_LEVEL_INDEX >= 5
  _mm512_storeu_ps(p, v.raw);
#elif ZAL_LEVEL_INDEX >= 4
  _mm256_storeu_ps(p, v.raw);
#else
  _mm_storeu_ps(p, v.raw);
#endif
}

ZAL_INLINE CI LoadLanes(const int* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_loadu_si512(p)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
#else
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
#endif
}
ZAL_INLINE void StoreLanes(int* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  _mm512_storeu_si512(p, v.raw);
#elif ZAL_LEVEL_INDEX >= 4
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v.raw);
#else
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v.raw);
#endif
}

ZAL_INLINE CD LoadLanes(const double* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_loadu_pd(p), _mm512_loadu_pd(p + 8)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_loadu_pd(p), _mm256_loadu_pd(p + 4)};
#else
  return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)};
#endif
}
ZAL_INLINE void StoreLanes(double* p, CD v) {
#if ZAL_LEVEL_INDEX >= 5
  _mm512_storeu_pd(p, v.lo);
  _mm512_storeu_pd(p + 8, v.hi);
#elif ZAL_LEVEL_INDEX >= 4
  _mm256_storeu_pd(p, v.lo);
  _mm256_storeu_pd(p + 4, v.hi);
#else
  _mm_storeu_pd(p, v.lo);
  _mm_storeu_pd(p + 2, v.hi);
#endif
}

ZAL_INLINE CI LoadLanes(const short* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_cvtepi16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)))};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
#else
  return {LoadS16Quad(p)};
#endif
}
// Saturated to 16 bits.
ZAL_INLINE void StoreLanes(short* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtsepi32_epi16(v.raw));
#elif ZAL_LEVEL_INDEX >= 4
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(p),
      _mm_packs_epi32(_mm256_castsi256_si128(v.raw), _mm256_extracti128_si256(v.raw, 1)));
#else
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(v.raw, v.raw));
#endif
}

// Zero-extended: binary16 bit patterns.
ZAL_INLINE CI LoadLanes(const unsigned short* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {
      _mm512_maskz_cvtepu16_epi32(0xFFFF, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)))};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
#else
  return {LoadU16Quad(p)};
#endif
}
// Lanes hold values 0 .. 0xFFFF.
ZAL_INLINE void StoreLanes(unsigned short* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi32_epi16(v.raw));
#elif ZAL_LEVEL_INDEX >= 4
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(p),
      _mm_packus_epi32(_mm256_castsi256_si128(v.raw), _mm256_extracti128_si256(v.raw, 1)));
#elif ZAL_LEVEL_INDEX >= 2
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi32(v.raw, v.raw));
#else
  // Seen as signed 16-bit values, the signed pack keeps them.
  const __m128i low_halves = _mm_srai_epi32(_mm_slli_epi32(v.raw, 16), 16);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(low_halves, low_halves));
#endif
}

ZAL_INLINE CI LoadLanes(const unsigned char* p) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
#else
  std::int32_t word;
  std::memcpy(&word, p, 4);
  const __m128i zero = _mm_setzero_si128();
  const __m128i bytes = _mm_cvtsi32_si128(word);
  return {_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero)};
#endif
}
// Saturated to 0 .. 255.
ZAL_INLINE void StoreLanes(unsigned char* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i non_negative = _mm512_max_epi32(v.raw, _mm512_setzero_si512());
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm512_cvtusepi32_epi8(non_negative));
#elif ZAL_LEVEL_INDEX >= 4
  const __m128i words =
      _mm_packs_epi32(_mm256_castsi256_si128(v.raw), _mm256_extracti128_si256(v.raw, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
#else
  const __m128i words = _mm_packs_epi32(v.raw, v.raw);
  const auto word = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
  std::memcpy(p, &word, 4);
#endif
}

// Packed 24-bit samples. From avx2 on, the samples' 32-bit words are read exactly (masked) and
// permuted so that each 128-bit lane holds its four samples' 12 bytes, which an in-lane byte
// shuffle spreads to the top of the lanes.
ZAL_INLINE CS24 LoadLanes(const Int24* p) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i words = _mm512_maskz_loadu_epi8(0xFFFFFFFFFFFFull, p);
  const __m512i lanes = _mm512_permutexvar_epi32(
      _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), words);
  return {_mm512_shuffle_epi8(lanes, _mm512_broadcast_i32x4(_mm_setr_epi8(
                                         -1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11)))};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256i words = _mm256_maskload_epi32(reinterpret_cast<const int*>(p),
                                              _mm256_setr_epi32(-1, -1, -1, -1, -1, -1, 0, 0));
  const __m256i lanes =
      _mm256_permutevar8x32_epi32(words, _mm256_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6));
  return {_mm256_shuffle_epi8(
      lanes, _mm256_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, 0, 1, 2, -1,
                              3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11))};
#else
  return {LoadS24Quad(p)};
#endif
}
// Lanes within -2^23 .. 2^23 - 1: each lane's low three bytes packed within its 128-bit lane,
// then the lanes' 12-byte groups joined, and exactly the samples' bytes written.
ZAL_INLINE void StoreLanes(Int24* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i packed =
      _mm512_shuffle_epi8(v.raw, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10,
                                                                      12, 13, 14, -1, -1, -1, -1)));
  const __m512i joined = _mm512_permutexvar_epi32(
      _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15), packed);
  _mm512_mask_storeu_epi8(p, 0xFFFFFFFFFFFFull, joined);
#elif ZAL_LEVEL_INDEX >= 4
  const __m256i packed = _mm256_shuffle_epi8(
      v.raw, _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5,
                              6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const __m256i joined =
      _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  auto* bytes = reinterpret_cast<unsigned char*>(p);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm256_castsi256_si128(joined));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes + 16), _mm256_extracti128_si256(joined, 1));
#else
  StoreS24Quad(p, v.raw);
#endif
}

// The samples of LoadLanes, read with one whole-register load whose bytes past the samples are
// ignored: only where the source goes on at least that far.
template <class From>
ZAL_INLINE auto LoadLanesFollowed(const From* p) {
  return LoadLanes(p);
}
// At avx2, loads that transpose: 128-bit loads from p and p + 12 put each lane's 12 bytes in
// place, so that only an in-lane shuffle follows.
ZAL_INLINE CS24 LoadLanesFollowed(const Int24* p) {
#if ZAL_LEVEL_INDEX >= 4
  const auto* bytes = reinterpret_cast<const unsigned char*>(p);
#endif
#if ZAL_LEVEL_INDEX >= 5
  const __m512i words = _mm512_loadu_si512(bytes);
  const __m512i lanes = _mm512_permutexvar_epi32(
      _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), words);
  return {_mm512_shuffle_epi8(lanes, _mm512_broadcast_i32x4(_mm_setr_epi8(
                                         -1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11)))};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256i lanes = _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 12)), 1);
  return {_mm256_shuffle_epi8(
      lanes, _mm256_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, 0, 1, 2, -1,
                              3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11))};
#elif ZAL_LEVEL_INDEX >= 1
  const __m128i packed = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  return {_mm_shuffle_epi8(packed,
                           _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11))};
#else
  return LoadLanes(p);
#endif
}

// The samples of four registers from p, for unrolled loops; the fourth read exactly unless
// kFollowed.
template <bool kFollowed, class From>
ZAL_INLINE auto LoadFourLanes(const From* p) {
  using V = decltype(LoadLanes(p));
  return std::array<V, 4>{
      LoadLanesFollowed(p), LoadLanesFollowed(p + kConvertLanes),
      LoadLanesFollowed(p + 2 * kConvertLanes),
      kFollowed ? LoadLanesFollowed(p + 3 * kConvertLanes) : LoadLanes(p + 3 * kConvertLanes)};
}
#if ZAL_LEVEL_INDEX >= 5
// Four registers of 24-bit samples are exactly three registers of bytes: three whole loads, split
// across cache lines at most once each (one load per register would split three times in four),
// and a one- or two-source word permute per register to its lanes.
template <bool kFollowed>
ZAL_INLINE std::array<CS24, 4> LoadFourLanes(const Int24* p) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(p);
  const __m512i a = _mm512_loadu_si512(bytes);
  const __m512i b = _mm512_loadu_si512(bytes + 64);
  const __m512i c = _mm512_loadu_si512(bytes + 128);
  const auto spread = [](__m512i lanes) {
    const __m512i order =
        _mm512_broadcast_i32x4(_mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11));
    return CS24{_mm512_shuffle_epi8(lanes, order)};
  };
  // Lane k of a register takes words 3k .. 3k + 3 of its 48 bytes; the last word is never used.
  return {
      spread(_mm512_permutexvar_epi32(
          _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), a)),
      spread(_mm512_permutex2var_epi32(
          a, _mm512_setr_epi32(12, 13, 14, 15, 15, 16, 17, 18, 18, 19, 20, 21, 21, 22, 23, 24), b)),
      spread(_mm512_permutex2var_epi32(
          b, _mm512_setr_epi32(8, 9, 10, 11, 11, 12, 13, 14, 14, 15, 16, 17, 17, 18, 19, 20), c)),
      spread(_mm512_permutexvar_epi32(
          _mm512_setr_epi32(4, 5, 6, 7, 7, 8, 9, 10, 10, 11, 12, 13, 13, 14, 15, 15), c))};
}
#endif

#if ZAL_LEVEL_INDEX >= 5
// The byte permutes of AVX512-VBMI lie beyond the level's own set: they run only inside functions
// marked with this, called where the feature word in force has them.
#if defined(_MSC_VER) && !defined(__clang__)
#define ZAL_BYTE_PERMUTES
#else
#define ZAL_BYTE_PERMUTES __attribute__((target("avx512vbmi")))
#endif

struct ByteIndex {
  alignas(64) unsigned char bytes[64];
};
// Sample k of the 48 bytes from `first` to the top three bytes of lane k; byte 0 of every lane is
// masked off.
constexpr ByteIndex SpreadSamplesFrom(int first) {
  ByteIndex index{};
  for (int lane = 0; lane < 16; ++lane) {
    for (int byte = 1; byte < 4; ++byte) {
      index.bytes[4 * lane + byte] = static_cast<unsigned char>(first + 3 * lane + byte - 1);
    }
  }
  return index;
}
inline constexpr ByteIndex kSpreadFrom0 = SpreadSamplesFrom(0);
inline constexpr ByteIndex kSpreadFrom16 = SpreadSamplesFrom(16);
inline constexpr ByteIndex kSpreadFrom32 = SpreadSamplesFrom(32);
inline constexpr ByteIndex kSpreadFrom48 = SpreadSamplesFrom(48);

// LoadFourLanes with one byte permute per register in place of a word permute and a byte
// shuffle: the three loads are exactly the four registers' 192 bytes.
ZAL_BYTE_PERMUTES ZAL_INLINE std::array<CS24, 4> LoadFourLanesByBytePermutes(const Int24* p) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(p);
  const __m512i a = _mm512_loadu_si512(bytes);
  const __m512i b = _mm512_loadu_si512(bytes + 64);
  const __m512i c = _mm512_loadu_si512(bytes + 128);
  const auto index = [](const ByteIndex& i) { return _mm512_load_si512(i.bytes); };
  constexpr __mmask64 kTopBytes = 0xEEEEEEEEEEEEEEEEull;
  return {CS24{_mm512_maskz_permutexvar_epi8(kTopBytes, index(kSpreadFrom0), a)},
          CS24{_mm512_maskz_permutex2var_epi8(kTopBytes, a, index(kSpreadFrom48), b)},
          CS24{_mm512_maskz_permutex2var_epi8(kTopBytes, b, index(kSpreadFrom32), c)},
          CS24{_mm512_maskz_permutexvar_epi8(kTopBytes, index(kSpreadFrom16), c)}};
}
#endif

// The samples of StoreLanes, written with one whole-register store whose bytes past the samples
// hold anything: only for a store that the next one, at the samples' end, overwrites.
template <class To, class V>
ZAL_INLINE void StoreLanesFollowed(To* p, V v) {
  StoreLanes(p, v);
}
ZAL_INLINE void StoreLanesFollowed(Int24* p, CI v) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i packed =
      _mm512_shuffle_epi8(v.raw, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10,
                                                                      12, 13, 14, -1, -1, -1, -1)));
  const __m512i joined = _mm512_permutexvar_epi32(
      _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15), packed);
  _mm512_storeu_si512(p, joined);
#elif ZAL_LEVEL_INDEX >= 4
  const __m256i packed = _mm256_shuffle_epi8(
      v.raw, _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5,
                              6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const __m256i joined =
      _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), joined);
#elif ZAL_LEVEL_INDEX >= 1
  const __m128i packed = _mm_shuffle_epi8(
      v.raw, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), packed);
#else
  StoreLanes(p, v);
#endif
}

// ---- Lane arithmetic ----------------------------------------------------------------------------

#if ZAL_LEVEL_INDEX >= 5
#define ZAL_LANES(op) _mm512_##op
#define ZAL_INT_LANES(op) _mm512_##op##_si512
#elif ZAL_LEVEL_INDEX >= 4
#define ZAL_LANES(op) _mm256_##op
#define ZAL_INT_LANES(op) _mm256_##op##_si256
#else
#define ZAL_LANES(op) _mm_##op
#define ZAL_INT_LANES(op) _mm_##op##_si128
#endif

ZAL_INLINE CF BroadcastLanes(float x) {
  return {ZAL_LANES(set1_ps)(x)};
}
ZAL_INLINE CD BroadcastLanes(double x) {
  return {ZAL_LANES(set1_pd)(x), ZAL_LANES(set1_pd)(x)};
}
ZAL_INLINE CI BroadcastLanes(std::int32_t x) {
  return {ZAL_LANES(set1_epi32)(x)};
}

ZAL_INLINE CF operator*(CF a, CF b) {
  return {ZAL_LANES(mul_ps)(a.raw, b.raw)};
}
ZAL_INLINE CF operator+(CF a, CF b) {
  return {ZAL_LANES(add_ps)(a.raw, b.raw)};
}
ZAL_INLINE CF operator-(CF a, CF b) {
  return {ZAL_LANES(sub_ps)(a.raw, b.raw)};
}
ZAL_INLINE CD operator*(CD a, CD b) {
  return {ZAL_LANES(mul_pd)(a.lo, b.lo), ZAL_LANES(mul_pd)(a.hi, b.hi)};
}
// limit where x is above it; a NaN x stays.
ZAL_INLINE CF LimitAbove(CF x, CF limit) {
  return {ZAL_LANES(min_ps)(limit.raw, x.raw)};
}
ZAL_INLINE CD LimitAbove(CD x, CD limit) {
  return {ZAL_LANES(min_pd)(limit.lo, x.lo), ZAL_LANES(min_pd)(limit.hi, x.hi)};
}
// limit where x is below it; a NaN x stays.
ZAL_INLINE CF LimitBelowKeepingNaN(CF x, CF limit) {
  return {ZAL_LANES(max_ps)(limit.raw, x.raw)};
}
// limit where x is below it or a NaN.
ZAL_INLINE CF LimitBelow(CF x, CF limit) {
  return {ZAL_LANES(max_ps)(x.raw, limit.raw)};
}
ZAL_INLINE CD LimitBelow(CD x, CD limit) {
  return {ZAL_LANES(max_pd)(x.lo, limit.lo), ZAL_LANES(max_pd)(x.hi, limit.hi)};
}

ZAL_INLINE CI operator+(CI a, CI b) {
  return {ZAL_LANES(add_epi32)(a.raw, b.raw)};
}
ZAL_INLINE CI operator-(CI a, CI b) {
  return {ZAL_LANES(sub_epi32)(a.raw, b.raw)};
}
ZAL_INLINE CI operator&(CI a, CI b) {
  return {ZAL_INT_LANES(and)(a.raw, b.raw)};
}
ZAL_INLINE CI operator|(CI a, CI b) {
  return {ZAL_INT_LANES(or)(a.raw, b.raw)};
}
ZAL_INLINE CI operator^(CI a, CI b) {
  return {ZAL_INT_LANES(xor)(a.raw, b.raw)};
}
template <int kCount>
ZAL_INLINE CI ShiftLeft(CI v) {
  return {ZAL_LANES(slli_epi32)(v.raw, kCount)};
}
template <int kCount>
ZAL_INLINE CI ShiftRightLogical(CI v) {
  return {ZAL_LANES(srli_epi32)(v.raw, kCount)};
}

// Comparisons: every bit of a lane set where they hold.
ZAL_INLINE CI Equal(CI a, CI b) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_movm_epi32(_mm512_cmpeq_epi32_mask(a.raw, b.raw))};
#else
  return {ZAL_LANES(cmpeq_epi32)(a.raw, b.raw)};
#endif
}
ZAL_INLINE CI Greater(CI a, CI b) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_movm_epi32(_mm512_cmpgt_epi32_mask(a.raw, b.raw))};
#else
  return {ZAL_LANES(cmpgt_epi32)(a.raw, b.raw)};
#endif
}
// False for NaN.
ZAL_INLINE CI GreaterEqual(CF a, CF b) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_movm_epi32(_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_GE_OQ))};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_castps_si256(_mm256_cmp_ps(a.raw, b.raw, _CMP_GE_OQ))};
#else
  return {_mm_castps_si128(_mm_cmpge_ps(a.raw, b.raw))};
#endif
}
// mask ? a : b, for masks from the comparisons.
ZAL_INLINE CI Select(CI mask, CI a, CI b) {
  return {ZAL_INT_LANES(or)(ZAL_INT_LANES(and)(mask.raw, a.raw),
                            ZAL_INT_LANES(andnot)(mask.raw, b.raw))};
}

ZAL_INLINE CF AsFloat(CI v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_castsi512_ps(v.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_castsi256_ps(v.raw)};
#else
  return {_mm_castsi128_ps(v.raw)};
#endif
}
ZAL_INLINE CI AsInt(CF v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_castps_si512(v.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_castps_si256(v.raw)};
#else
  return {_mm_castps_si128(v.raw)};
#endif
}
ZAL_INLINE CF And(CF a, CF b) {
  return {ZAL_LANES(and_ps)(a.raw, b.raw)};
}
ZAL_INLINE CF Or(CF a, CF b) {
  return {ZAL_LANES(or_ps)(a.raw, b.raw)};
}
ZAL_INLINE CD And(CD a, CD b) {
  return {ZAL_LANES(and_pd)(a.lo, b.lo), ZAL_LANES(and_pd)(a.hi, b.hi)};
}
ZAL_INLINE CD Or(CD a, CD b) {
  return {ZAL_LANES(or_pd)(a.lo, b.lo), ZAL_LANES(or_pd)(a.hi, b.hi)};
}
ZAL_INLINE CD operator+(CD a, CD b) {
  return {ZAL_LANES(add_pd)(a.lo, b.lo), ZAL_LANES(add_pd)(a.hi, b.hi)};
}

// ---- Between element types ---------------------------------------------------------------------

// The samples themselves: the arithmetic shift brings the sign down.
ZAL_INLINE CI Samples(CS24 v) {
  return {ZAL_LANES(srai_epi32)(v.raw, 8)};
}
// 256 times the samples' floats, exact: a 24-bit integer times 256 is a float.
ZAL_INLINE CF ToFloatTimes256(CS24 v) {
  return {ZAL_LANES(cvtepi32_ps)(v.raw)};
}

ZAL_INLINE CF ToFloat(CI v) {
  return {ZAL_LANES(cvtepi32_ps)(v.raw)};
}
// Toward zero; NaN and values outside the 32-bit range give -2^31.
ZAL_INLINE CI Truncate(CF v) {
  return {ZAL_LANES(cvttps_epi32)(v.raw)};
}
// In the current rounding mode; otherwise as Truncate.
ZAL_INLINE CI RoundInCurrentMode(CF v) {
  return {ZAL_LANES(cvtps_epi32)(v.raw)};
}

ZAL_INLINE CD ToDouble(CF v) {
#if ZAL_LEVEL_INDEX >= 5
  const __m256 high = _mm256_castpd_ps(_mm512_extractf64x4_pd(_mm512_castps_pd(v.raw), 1));
  return {_mm512_cvtps_pd(_mm512_castps512_ps256(v.raw)), _mm512_cvtps_pd(high)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(v.raw)),
          _mm256_cvtps_pd(_mm256_extractf128_ps(v.raw, 1))};
#else
  return {_mm_cvtps_pd(v.raw), _mm_cvtps_pd(_mm_movehl_ps(v.raw, v.raw))};
#endif
}
ZAL_INLINE CD ToDouble(CI v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_cvtepi32_pd(_mm512_castsi512_si256(v.raw)),
          _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(v.raw, 1))};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(v.raw)),
          _mm256_cvtepi32_pd(_mm256_extracti128_si256(v.raw, 1))};
#else
  return {_mm_cvtepi32_pd(v.raw), _mm_cvtepi32_pd(_mm_unpackhi_epi64(v.raw, v.raw))};
#endif
}
// In the current rounding mode.
ZAL_INLINE CF ToFloat(CD v) {
#if ZAL_LEVEL_INDEX >= 5
  return {
      _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(v.lo)), _mm512_cvtpd_ps(v.hi), 1)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(v.lo)), _mm256_cvtpd_ps(v.hi),
                               1)};
#else
  return {_mm_movelh_ps(_mm_cvtpd_ps(v.lo), _mm_cvtpd_ps(v.hi))};
#endif
}
// Toward zero; as Truncate(CF) outside the range.
ZAL_INLINE CI Truncate(CD v) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvttpd_epi32(v.lo)),
                             _mm512_cvttpd_epi32(v.hi), 1)};
#elif ZAL_LEVEL_INDEX >= 4
  return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm256_cvttpd_epi32(v.lo)),
                                  _mm256_cvttpd_epi32(v.hi), 1)};
#else
  return {_mm_unpacklo_epi64(_mm_cvttpd_epi32(v.lo), _mm_cvttpd_epi32(v.hi))};
#endif
}

// The two channels of interleaved pairs: the even lanes of a then b, and the odd ones.
ZAL_INLINE CF EvenLanes(CF a, CF b) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i index =
      _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  return {_mm512_permutex2var_ps(a.raw, index, b.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256 within = _mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0));
  return {
      _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(within), _MM_SHUFFLE(3, 1, 2, 0)))};
#else
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
#endif
}
ZAL_INLINE CF OddLanes(CF a, CF b) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i index =
      _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  return {_mm512_permutex2var_ps(a.raw, index, b.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256 within = _mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1));
  return {
      _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(within), _MM_SHUFFLE(3, 1, 2, 0)))};
#else
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
#endif
}
// Lanes of a and b alternating: the first half of the pairs, then the second.
ZAL_INLINE CF ZipLow(CF a, CF b) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i index = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  return {_mm512_permutex2var_ps(a.raw, index, b.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256 low = _mm256_unpacklo_ps(a.raw, b.raw);
  const __m256 high = _mm256_unpackhi_ps(a.raw, b.raw);
  return {_mm256_permute2f128_ps(low, high, 0x20)};
#else
  return {_mm_unpacklo_ps(a.raw, b.raw)};
#endif
}
ZAL_INLINE CF ZipHigh(CF a, CF b) {
#if ZAL_LEVEL_INDEX >= 5
  const __m512i index =
      _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  return {_mm512_permutex2var_ps(a.raw, index, b.raw)};
#elif ZAL_LEVEL_INDEX >= 4
  const __m256 low = _mm256_unpacklo_ps(a.raw, b.raw);
  const __m256 high = _mm256_unpackhi_ps(a.raw, b.raw);
  return {_mm256_permute2f128_ps(low, high, 0x31)};
#else
  return {_mm_unpackhi_ps(a.raw, b.raw)};
#endif
}

#if ZAL_LEVEL_INDEX >= 5
// Binary16 through the level's conversion instructions; lanes hold the bit patterns. The
// rounding is the instruction's own, whatever the control register says.
ZAL_INLINE CF HalfToFloatInstruction(CI h) {
  return {_mm512_maskz_cvtph_ps(0xFFFF, _mm512_maskz_cvtepi32_epi16(0xFFFF, h.raw))};
}
// The zero-masking forms: GCC 12 warns on the undefined pass-through of the plain ones even here,
// where the warning surfaces in the caller.
ZAL_INLINE CI FloatToHalfTowardZeroInstruction(CF x) {
  const __m256i halves =
      _mm512_maskz_cvtps_ph(0xFFFF, x.raw, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
  return {_mm512_maskz_cvtepu16_epi32(0xFFFF, halves)};
}
ZAL_INLINE CI FloatToHalfNearestInstruction(CF x) {
  const __m256i halves =
      _mm512_maskz_cvtps_ph(0xFFFF, x.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  return {_mm512_maskz_cvtepu16_epi32(0xFFFF, halves)};
}
#endif

#undef ZAL_LANES
#undef ZAL_INT_LANES

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
