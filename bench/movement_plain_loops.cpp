// Built with -O3 -march=native: the compiler's best at vectorising each loop for this machine.
#include "bench/movement_contenders.h"

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace zal::bench {

void PlainCopy(unsigned n, const float* src, float* dst) {
  for (unsigned i = 0; i < n; ++i) dst[i] = src[i];
}
void PlainSet(unsigned n, float* dst, float value) {
  for (unsigned i = 0; i < n; ++i) dst[i] = value;
}
void PlainSwapBytes(unsigned n, const std::uint16_t* src, std::uint16_t* dst) {
  for (unsigned i = 0; i < n; ++i) dst[i] = __builtin_bswap16(src[i]);
}
void PlainSwapBytes(unsigned n, const std::uint32_t* src, std::uint32_t* dst) {
  for (unsigned i = 0; i < n; ++i) dst[i] = __builtin_bswap32(src[i]);
}
void PlainSwapBytes(unsigned n, const std::uint64_t* src, std::uint64_t* dst) {
  for (unsigned i = 0; i < n; ++i) dst[i] = __builtin_bswap64(src[i]);
}
void PlainSwapBytes(unsigned n, const Sample24* src, Sample24* dst) {
  for (unsigned i = 0; i < n; ++i) {
    dst[i].bytes[0] = src[i].bytes[2];
    dst[i].bytes[1] = src[i].bytes[1];
    dst[i].bytes[2] = src[i].bytes[0];
  }
}
void PlainInterleave(unsigned n, const float* a, const float* b, float* dst) {
  for (unsigned i = 0; i < n; ++i) {
    dst[2 * i] = a[i];
    dst[2 * i + 1] = b[i];
  }
}
void PlainDeinterleave(unsigned n, const float* src, float* a, float* b) {
  for (unsigned i = 0; i < n; ++i) {
    a[i] = src[2 * i];
    b[i] = src[2 * i + 1];
  }
}
void PlainInterleave(unsigned channels, unsigned frames, const float* const* src, float* dst) {
  for (unsigned f = 0; f < frames; ++f) {
    for (unsigned c = 0; c < channels; ++c) dst[f * channels + c] = src[c][f];
  }
}
void PlainDeinterleave(unsigned channels, unsigned frames, const float* src, float* const* dst) {
  for (unsigned f = 0; f < frames; ++f) {
    for (unsigned c = 0; c < channels; ++c) dst[c][f] = src[f * channels + c];
  }
}

void StreamedSet(unsigned n, float* dst, float value) {
  unsigned i = 0;
  for (; i < n && reinterpret_cast<std::uintptr_t>(dst + i) % 64 != 0; ++i) dst[i] = value;
#if defined(__AVX512F__)
  const __m512 v = _mm512_set1_ps(value);
  for (; i + 16 <= n; i += 16) _mm512_stream_ps(dst + i, v);
#elif defined(__AVX__)
  const __m256 v = _mm256_set1_ps(value);
  for (; i + 8 <= n; i += 8) _mm256_stream_ps(dst + i, v);
#else
  const __m128 v = _mm_set1_ps(value);
  for (; i + 4 <= n; i += 4) _mm_stream_ps(dst + i, v);
#endif
  _mm_sfence();
  for (; i < n; ++i) dst[i] = value;
}
void StringSet(unsigned n, float* dst, float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, 4);
  std::size_t count = n;
  asm volatile("rep stosl" : "+D"(dst), "+c"(count) : "a"(bits) : "memory");
}

}  // namespace zal::bench
