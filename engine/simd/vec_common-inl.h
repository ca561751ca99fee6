// What every level's vector layer shares: the inlining contract, and the partial loads and stores
// that keep tails inside the caller's arrays (SSE2 only, so usable at every level).
// Included only inside level translation units, where ZAL_LEVEL names the level.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

// Everything in the vector layer is inlined into its kernel: a vector never crosses a call, and
// no helper is left for the linker to share between levels.
// ZAL_NOINLINE keeps a rarely taken path out of its caller.
#if defined(_MSC_VER) && !defined(__clang__)
#define ZAL_INLINE __forceinline
#define ZAL_NOINLINE __declspec(noinline)
#else
#define ZAL_INLINE inline __attribute__((always_inline))
#define ZAL_NOINLINE __attribute__((noinline))
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

// 64 set bytes, then 64 clear ones: a register loaded from kLaneMask.bytes + 64 - k has its
// first k bytes set.
struct LaneMaskBytes {
  unsigned char bytes[128];
};
constexpr LaneMaskBytes kLaneMask = [] {
  LaneMaskBytes mask{};
  for (int i = 0; i < 64; ++i) mask.bytes[i] = 0xFF;
  return mask;
}();

ZAL_INLINE __m128i FirstBytes128(int bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kLaneMask.bytes + 64 - bytes));
}

// The first `bytes` bytes at p (an even count below 16), the rest of the register clear. Reads
// nothing past them: the pieces are assembled from the last one down.
ZAL_INLINE __m128i LoadPartial128(const void* p, int bytes) {
  const char* c = static_cast<const char*>(p);
  __m128i v = _mm_setzero_si128();
  if (bytes & 2) {
    std::uint16_t word;
    std::memcpy(&word, c + (bytes & ~3), 2);
    v = _mm_cvtsi32_si128(word);
  }
  if (bytes & 4) {
    std::int32_t dword;
    std::memcpy(&dword, c + (bytes & 8), 4);
    v = _mm_or_si128(_mm_slli_si128(v, 4), _mm_cvtsi32_si128(dword));
  }
  if (bytes & 8) {
    v = _mm_or_si128(_mm_slli_si128(v, 8), _mm_loadl_epi64(reinterpret_cast<const __m128i*>(c)));
  }
  return v;
}

// Writes the first `bytes` bytes of v (an even count below 16) and nothing else.
ZAL_INLINE void StorePartial128(void* p, __m128i v, int bytes) {
  char* c = static_cast<char*>(p);
  if (bytes & 8) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(c), v);
    v = _mm_srli_si128(v, 8);
    c += 8;
  }
  if (bytes & 4) {
    const std::int32_t dword = _mm_cvtsi128_si32(v);
    std::memcpy(c, &dword, 4);
    v = _mm_srli_si128(v, 4);
    c += 4;
  }
  if (bytes & 2) {
    const auto word = static_cast<std::uint16_t>(_mm_cvtsi128_si32(v));
    std::memcpy(c, &word, 2);
  }
}

// Non-temporal stores are weakly ordered: fence them before anything the caller stores next.
ZAL_INLINE void StreamFence() {
  _mm_sfence();
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
