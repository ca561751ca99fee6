// Registers as plain bits, for kernels that move data without computing on it: copies, fills and
// byte swaps. VBits is the widest register the level loads and stores (256 bits
// already at avx, whose moves need no integer instructions); VBytes the widest one it shuffles
// bytes in (128 bits below avx2).
#pragma once

#include "engine/simd/vec-inl.h"

// GCC 12 takes the undefined pass-through operand inside its own AVX-512 intrinsics for an
// uninitialised variable (fixed in GCC 13). Scoped to these wrappers.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

#if ZAL_LEVEL_INDEX >= 5
struct VBits {
  __m512i raw;
  static constexpr int kBytes = 64;
};
ZAL_INLINE VBits LoadBits(const void* p) {
  return {_mm512_loadu_si512(p)};
}
ZAL_INLINE void StoreBits(void* p, VBits v) {
  _mm512_storeu_si512(p, v.raw);
}
ZAL_INLINE void StreamBits(void* p, VBits v) {
  _mm512_stream_si512(static_cast<__m512i*>(p), v.raw);
}
ZAL_INLINE VBits RepeatBits(std::uint64_t pattern) {
  return {_mm512_set1_epi64(static_cast<long long>(pattern))};
}
#elif ZAL_LEVEL_INDEX >= 3
struct VBits {
  __m256i raw;
  static constexpr int kBytes = 32;
};
ZAL_INLINE VBits LoadBits(const void* p) {
  return {_mm256_loadu_si256(static_cast<const __m256i*>(p))};
}
ZAL_INLINE void StoreBits(void* p, VBits v) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), v.raw);
}
ZAL_INLINE void StreamBits(void* p, VBits v) {
  _mm256_stream_si256(static_cast<__m256i*>(p), v.raw);
}
ZAL_INLINE VBits RepeatBits(std::uint64_t pattern) {
  return {_mm256_set1_epi64x(static_cast<long long>(pattern))};
}
#else
struct VBits {
  __m128i raw;
  static constexpr int kBytes = 16;
};
ZAL_INLINE VBits LoadBits(const void* p) {
  return {_mm_loadu_si128(static_cast<const __m128i*>(p))};
}
ZAL_INLINE void StoreBits(void* p, VBits v) {
  _mm_storeu_si128(static_cast<__m128i*>(p), v.raw);
}
ZAL_INLINE void StreamBits(void* p, VBits v) {
  _mm_stream_si128(static_cast<__m128i*>(p), v.raw);
}
ZAL_INLINE VBits RepeatBits(std::uint64_t pattern) {
  return {_mm_set1_epi64x(static_cast<long long>(pattern))};
}
#endif

// ---- Byte shuffles
// -------------------------------------------------------------------------------

#if ZAL_LEVEL_INDEX >= 5
struct VBytes {
  __m512i raw;
  static constexpr int kBytes = 64;
};
ZAL_INLINE VBytes LoadBytes(const void* p) {
  return {_mm512_loadu_si512(p)};
}
ZAL_INLINE void StoreBytes(void* p, VBytes v) {
  _mm512_storeu_si512(p, v.raw);
}
// Where the mask's byte is set, a's byte; elsewhere b's.
ZAL_INLINE VBytes Select(VBytes mask, VBytes a, VBytes b) {
  return {_mm512_ternarylogic_epi64(mask.raw, a.raw, b.raw, 0xCA)};
}
ZAL_INLINE VBytes ShuffleInLanes(VBytes v, __m128i order) {
  return {_mm512_shuffle_epi8(v.raw, _mm512_broadcast_i32x4(order))};
}
// Packed 24-bit elements with bytes 0 and 2 exchanged, for the bytes of `bytes` (at most 48:
// sixteen elements): spread four elements to a 128-bit lane, swapped in lanes, packed back. The
// masked load and store touch no other byte, so dst may be src.
// The sixteen packed 24-bit samples in the low 48 bytes of x with bytes 0 and 2 exchanged; the
// top 16 bytes of the result hold anything.
ZAL_INLINE __m512i SwappedInt24(__m512i x) {
  const __m512i spread = _mm512_setr_epi32(0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0);
  const __m128i exchange = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, -1, -1, -1, -1);
  const __m512i pack = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
  const __m512i lanes = _mm512_permutexvar_epi32(spread, x);
  const __m512i swapped = _mm512_shuffle_epi8(lanes, _mm512_broadcast_i32x4(exchange));
  return _mm512_permutexvar_epi32(pack, swapped);
}
ZAL_INLINE void SwapInt24Bytes(const void* src, void* dst, __mmask64 bytes) {
  _mm512_mask_storeu_epi8(dst, bytes, SwappedInt24(_mm512_maskz_loadu_epi8(bytes, src)));
}
#elif ZAL_LEVEL_INDEX >= 4
struct VBytes {
  __m256i raw;
  static constexpr int kBytes = 32;
};
ZAL_INLINE VBytes LoadBytes(const void* p) {
  return {_mm256_loadu_si256(static_cast<const __m256i*>(p))};
}
ZAL_INLINE void StoreBytes(void* p, VBytes v) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), v.raw);
}
ZAL_INLINE VBytes Select(VBytes mask, VBytes a, VBytes b) {
  return {_mm256_blendv_epi8(b.raw, a.raw, mask.raw)};
}
ZAL_INLINE VBytes ShuffleInLanes(VBytes v, __m128i order) {
  return {_mm256_shuffle_epi8(v.raw, _mm256_broadcastsi128_si256(order))};
}
#else
struct VBytes {
  __m128i raw;
  static constexpr int kBytes = 16;
};
ZAL_INLINE VBytes LoadBytes(const void* p) {
  return {_mm_loadu_si128(static_cast<const __m128i*>(p))};
}
ZAL_INLINE void StoreBytes(void* p, VBytes v) {
  _mm_storeu_si128(static_cast<__m128i*>(p), v.raw);
}
ZAL_INLINE VBytes Select(VBytes mask, VBytes a, VBytes b) {
  return {_mm_or_si128(_mm_and_si128(mask.raw, a.raw), _mm_andnot_si128(mask.raw, b.raw))};
}
#if ZAL_LEVEL_INDEX >= 1
ZAL_INLINE VBytes ShuffleInLanes(VBytes v, __m128i order) {
  return {_mm_shuffle_epi8(v.raw, order)};
}
#endif
#endif

// Every kWidth-byte element with its bytes in reverse order (kWidth 2, 4 or 8). SSE2 has no byte
// shuffle: 16-bit words are reversed first, then the bytes within each word.
template <int kWidth>
ZAL_INLINE VBytes ReverseBytesIn(VBytes v) {
#if ZAL_LEVEL_INDEX >= 1
  if constexpr (kWidth == 2) {
    return ShuffleInLanes(v, _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
  } else if constexpr (kWidth == 4) {
    return ShuffleInLanes(v, _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12));
  } else {
    return ShuffleInLanes(v, _mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
  }
#else
  __m128i x = v.raw;
  if constexpr (kWidth == 4) {
    x = _mm_shufflehi_epi16(_mm_shufflelo_epi16(x, _MM_SHUFFLE(2, 3, 0, 1)),
                            _MM_SHUFFLE(2, 3, 0, 1));
  } else if constexpr (kWidth == 8) {
    x = _mm_shufflehi_epi16(_mm_shufflelo_epi16(x, _MM_SHUFFLE(0, 1, 2, 3)),
                            _MM_SHUFFLE(0, 1, 2, 3));
  }
  return {_mm_or_si128(_mm_slli_epi16(x, 8), _mm_srli_epi16(x, 8))};
#endif
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
