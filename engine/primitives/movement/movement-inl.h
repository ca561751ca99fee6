// The data-movement kernels: copies, moves, fills and clears as byte streams in the level's widest
// register, reversal by lanes, byte-order swaps by in-lane byte shuffles.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "engine/core/platform.h"
#include "engine/core/primitive_declarations.h"
#include "engine/core/streaming.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/vec_bits-inl.h"
#include "engine/simd/vec_fft-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

using Byte = unsigned char;
constexpr std::size_t kV = VBits::kBytes;

// n < kV bytes as two overlapping pieces of the largest size that fits, both read before either
// is written: safe for any overlap.
ZAL_INLINE void CopyShort(Byte* dst, const Byte* src, std::size_t n) {
  if constexpr (kV > 32) {
    if (n >= 32) {
      const __m256i head = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
      const __m256i tail = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + n - 32));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), head);
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + n - 32), tail);
      return;
    }
  }
  if constexpr (kV > 16) {
    if (n >= 16) {
      const __m128i head = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
      const __m128i tail = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + n - 16));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), head);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + n - 16), tail);
      return;
    }
  }
  const auto pair = [dst, src, n](auto head, auto tail) {
    std::memcpy(&head, src, sizeof head);
    std::memcpy(&tail, src + n - sizeof tail, sizeof tail);
    std::memcpy(dst, &head, sizeof head);
    std::memcpy(dst + n - sizeof tail, &tail, sizeof tail);
  };
  if (n >= 8) {
    pair(std::uint64_t{}, std::uint64_t{});
  } else if (n >= 4) {
    pair(std::uint32_t{}, std::uint32_t{});
  } else if (n >= 2) {
    pair(std::uint16_t{}, std::uint16_t{});
  } else if (n == 1) {
    *dst = *src;
  }
}

// Bytes to store before dst reaches a register boundary.
ZAL_INLINE std::size_t HeadBytes(const void* dst) {
  return (kV - reinterpret_cast<std::uintptr_t>(dst) % kV) % kV;
}

template <bool kStream>
ZAL_INLINE void Put(Byte* p, VBits v) {
  if constexpr (kStream) {
    StreamBits(p, v);
  } else {
    StoreBits(p, v);
  }
}

// Ascending, with aligned stores after a short head. Safe for any overlap with dst below src:
// every store lands below the bytes still to be read, and each piece reads before it writes.
template <bool kStream>
ZAL_INLINE void CopyUp(Byte* dst, const Byte* src, std::size_t n) {
  if (n < kV) return CopyShort(dst, src, n);
  std::size_t i = HeadBytes(dst);
  CopyShort(dst, src, i);
  for (; i + 4 * kV <= n; i += 4 * kV) {
    const VBits a = LoadBits(src + i);
    const VBits b = LoadBits(src + i + kV);
    const VBits c = LoadBits(src + i + 2 * kV);
    const VBits d = LoadBits(src + i + 3 * kV);
    Put<kStream>(dst + i, a);
    Put<kStream>(dst + i + kV, b);
    Put<kStream>(dst + i + 2 * kV, c);
    Put<kStream>(dst + i + 3 * kV, d);
  }
  for (; i + kV <= n; i += kV) Put<kStream>(dst + i, LoadBits(src + i));
  CopyShort(dst + i, src + i, n - i);
  if constexpr (kStream) StreamFence();
}

// Descending, the mirror image: safe for any overlap with dst above src.
ZAL_INLINE void CopyDown(Byte* dst, const Byte* src, std::size_t n) {
  if (n < kV) return CopyShort(dst, src, n);
  std::size_t end = n - reinterpret_cast<std::uintptr_t>(dst + n) % kV;
  CopyShort(dst + end, src + end, n - end);
  for (; end >= 4 * kV; end -= 4 * kV) {
    const VBits d = LoadBits(src + end - kV);
    const VBits c = LoadBits(src + end - 2 * kV);
    const VBits b = LoadBits(src + end - 3 * kV);
    const VBits a = LoadBits(src + end - 4 * kV);
    StoreBits(dst + end - kV, d);
    StoreBits(dst + end - 2 * kV, c);
    StoreBits(dst + end - 3 * kV, b);
    StoreBits(dst + end - 4 * kV, a);
  }
  for (; end >= kV; end -= kV) StoreBits(dst + end - kV, LoadBits(src + end - kV));
  CopyShort(dst, src, end);
}

// Whether n bytes are many enough to stream: compared with a constant first, so that small calls
// never look the threshold up.
ZAL_INLINE bool WorthStreaming(std::size_t n) {
  return static_cast<std::int64_t>(n) >= kStreamingStoreMinBytes &&
         static_cast<std::int64_t>(n) >= StreamingStoreThresholdBytes();
}

// Large copies stream their destination past the caller's caches.
ZAL_NOINLINE void CopyLarge(Byte* dst, const Byte* src, std::size_t n) {
  if (WorthStreaming(n)) return CopyUp<true>(dst, src, n);
  CopyUp<false>(dst, src, n);
}

ZAL_INLINE void CopyBytes(Byte* dst, const Byte* src, std::size_t n) {
  if (static_cast<std::int64_t>(n) >= kStreamingStoreMinBytes) return CopyLarge(dst, src, n);
  CopyUp<false>(dst, src, n);
}

ZAL_INLINE void MoveBytes(Byte* dst, const Byte* src, std::size_t n) {
  const std::uintptr_t above =
      reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
  const std::uintptr_t below =
      reinterpret_cast<std::uintptr_t>(src) - reinterpret_cast<std::uintptr_t>(dst);
  if (above >= n && below >= n) return CopyBytes(dst, src, n);
  if (above == 0) return;
  if (above < n) return CopyDown(dst, src, n);
  CopyUp<false>(dst, src, n);
}

// n < kV bytes of the pattern, taken from its start: the pattern starts at dst, as it does at
// every offset the loops store a register at (whole elements from dst).
ZAL_INLINE void FillShort(Byte* dst, VBits pattern, std::size_t n) {
  alignas(64) Byte bytes[kV];
  StoreBits(bytes, pattern);
  CopyShort(dst, bytes, n);
}

// Aligned stores after a short head, where dst is element-aligned and so the head is whole
// elements; unaligned ones otherwise, never streamed.
template <bool kStream>
ZAL_INLINE void FillUp(Byte* dst, VBits pattern, std::size_t n, std::size_t element) {
  if (n < kV) return FillShort(dst, pattern, n);
  std::size_t i = 0;
  if (reinterpret_cast<std::uintptr_t>(dst) % element == 0) {
    i = HeadBytes(dst);
    FillShort(dst, pattern, i);
  }
  if (kStream && i == 0 && HeadBytes(dst) != 0) return FillUp<false>(dst, pattern, n, element);
  for (; i + 4 * kV <= n; i += 4 * kV) {
    Put<kStream>(dst + i, pattern);
    Put<kStream>(dst + i + kV, pattern);
    Put<kStream>(dst + i + 2 * kV, pattern);
    Put<kStream>(dst + i + 3 * kV, pattern);
  }
  for (; i + kV <= n; i += kV) Put<kStream>(dst + i, pattern);
  FillShort(dst + i, pattern, n - i);
  if constexpr (kStream) StreamFence();
}

// Large fills that the last-level cache keeps go to the string store: register stores read each
// line before writing it, which costs half the speed there. The pattern repeats every 8 bytes from
// dst, so the quadwords and the tail after them stay in phase.
ZAL_NOINLINE void FillLarge(Byte* dst, VBits pattern, std::size_t n, std::size_t element,
                            std::uint64_t pattern_bits) {
  if (static_cast<std::int64_t>(n) >= FillStreamingThresholdBytes()) {
    return FillUp<true>(dst, pattern, n, element);
  }
  const std::size_t quadwords = n / 8;
  platform::StoreRepeatedQwords(dst, pattern_bits, quadwords);
  FillShort(dst + 8 * quadwords, pattern, n % 8);
}

template <class T>
ZAL_INLINE EngStatus FillElements(T* dst, int n, std::uint64_t pattern) {
  if (const EngStatus status = Check(n, dst)) return status;
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(T);
  Byte* p = reinterpret_cast<Byte*>(dst);
  if (static_cast<std::int64_t>(bytes) >= kStreamingStoreMinBytes) {
    FillLarge(p, RepeatBits(pattern), bytes, sizeof(T), pattern);
  } else {
    FillUp<false>(p, RepeatBits(pattern), bytes, sizeof(T));
  }
  return engStsNoErr;
}

// The element's bits repeated over 64 bits.
template <class T>
ZAL_INLINE std::uint64_t Pattern(T value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof value);
  for (std::size_t width = sizeof value; width < 8; width *= 2) bits |= bits << (8 * width);
  return bits;
}

template <class T>
ZAL_INLINE EngStatus CopyElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  CopyBytes(reinterpret_cast<Byte*>(dst), reinterpret_cast<const Byte*>(src),
            static_cast<std::size_t>(n) * sizeof(T));
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus MoveElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  MoveBytes(reinterpret_cast<Byte*>(dst), reinterpret_cast<const Byte*>(src),
            static_cast<std::size_t>(n) * sizeof(T));
  return engStsNoErr;
}

// Blocks from both ends swap places, each read before either is written, so that dst == src
// works; the middle, under two registers, element by element from both ends.
template <class T>
ZAL_INLINE EngStatus ReverseElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  constexpr std::ptrdiff_t kLanes = VectorOf<T>::kLanes;
  std::ptrdiff_t low = 0;
  std::ptrdiff_t high = n;
  for (; high - low >= 2 * kLanes; low += kLanes, high -= kLanes) {
    const auto front = Load(src + low);
    const auto back = Load(src + high - kLanes);
    Store(dst + low, Reverse(back));
    Store(dst + high - kLanes, Reverse(front));
  }
  for (; high - low >= 2; ++low, --high) {
    const T front = src[low];
    const T back = src[high - 1];
    dst[low] = back;
    dst[high - 1] = front;
  }
  if (high > low) dst[low] = src[low];
  return engStsNoErr;
}

template <class T>
ZAL_INLINE T SwapScalar(T x) {
  Byte b[sizeof(T)];
  std::memcpy(b, &x, sizeof b);
  for (std::size_t i = 0; i < sizeof b / 2; ++i) {
    const Byte t = b[i];
    b[i] = b[sizeof b - 1 - i];
    b[sizeof b - 1 - i] = t;
  }
  std::memcpy(&x, b, sizeof b);
  return x;
}

// dst may be src exactly: each register is read before it is written.
template <class T>
ZAL_INLINE EngStatus SwapElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  constexpr std::ptrdiff_t kLanes = VBytes::kBytes / sizeof(T);
  std::ptrdiff_t i = 0;
  // One register a step: the processor runs the steps side by side, and the loop is one compare
  // and branch, where an unrolled one nests a second loop and adds its exit.
  for (; i + kLanes <= n; i += kLanes) {
    StoreBytes(dst + i, ReverseBytesIn<sizeof(T)>(LoadBytes(src + i)));
  }
  // Elements may sit off their natural alignment: copied as bytes.
  for (; i < n; ++i) {
    T x;
    std::memcpy(&x, src + i, sizeof x);
    x = SwapScalar(x);
    std::memcpy(dst + i, &x, sizeof x);
  }
  return engStsNoErr;
}

#if ZAL_LEVEL_INDEX < 5
// 0xFF at every third byte from 0: a register loaded from kThirds + k selects the bytes whose
// position is k short of a multiple of three.
struct ThirdBytes {
  Byte bytes[VBytes::kBytes + 2];
};
constexpr ThirdBytes kThirds = [] {
  ThirdBytes t{};
  for (std::size_t i = 0; i < sizeof t.bytes; i += 3) t.bytes[i] = 0xFF;
  return t;
}();
#endif

// 24-bit elements exchange bytes 0 and 2: a byte at position p of the stream takes the byte two
// further on where p % 3 == 0, two back where p % 3 == 2, and stays where p % 3 == 1. Three loads,
// two bytes apart, supply the three, and two selections pick. A block of three registers
// starts at a multiple of three bytes; its registers start at phases 0, kBytes % 3 and
// 2 kBytes % 3. The first element is swapped alone, so that the load two bytes back stays inside.
// At avx512, permutes across the register do better.
ZAL_INLINE EngStatus SwapInt24(const Int24* src, Int24* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  const Byte* s = src->bytes;
  Byte* d = dst->bytes;
  const std::size_t bytes = static_cast<std::size_t>(n) * 3;
#if ZAL_LEVEL_INDEX >= 5
  // Cross-lane permutes make this a load, three shuffles and a store per sixteen elements.
  constexpr __mmask64 kSixteen = (__mmask64{1} << 48) - 1;
  std::size_t q = 0;
  // Whole-register loads while the source goes on past them (masked ones whose masked-off bytes
  // cross a page cost an assist), both read before either is written. The first store spills into
  // the second's bytes; the second spills only where it cannot be the next block's unread source.
  const bool in_place = s == d;
  for (; q + 112 <= bytes; q += 96) {
    const __m512i first = SwappedInt24(_mm512_loadu_si512(s + q));
    const __m512i second = SwappedInt24(_mm512_loadu_si512(s + q + 48));
    _mm512_storeu_si512(d + q, first);
    if (in_place) {
      _mm512_mask_storeu_epi8(d + q + 48, kSixteen, second);
    } else {
      _mm512_storeu_si512(d + q + 48, second);
    }
  }
  for (; q + 96 <= bytes; q += 96) {
    SwapInt24Bytes(s + q, d + q, kSixteen);
    SwapInt24Bytes(s + q + 48, d + q + 48, kSixteen);
  }
  for (; q < bytes; q += 48) {
    const std::size_t rest = bytes - q < 48 ? bytes - q : 48;
    SwapInt24Bytes(s + q, d + q, (__mmask64{1} << rest) - 1);
  }
#else
  constexpr std::size_t kW = VBytes::kBytes;
  const auto mask = [](std::size_t k, std::size_t shift) {
    return LoadBytes(kThirds.bytes + (k * kW + shift) % 3);
  };
  // Per register of the block: the bytes that take the one two further on, and two back.
  const VBytes next0 = mask(0, 0);
  const VBytes next1 = mask(1, 0);
  const VBytes next2 = mask(2, 0);
  const VBytes previous0 = mask(0, 1);
  const VBytes previous1 = mask(1, 1);
  const VBytes previous2 = mask(2, 1);
  const auto swapped = [](const Byte* at, VBytes next, VBytes previous) {
    return Select(next, LoadBytes(at + 2), Select(previous, LoadBytes(at - 2), LoadBytes(at)));
  };
  std::size_t p = 3;
  for (; p + 3 * kW + 2 <= bytes; p += 3 * kW) {
    const VBytes out0 = swapped(s + p, next0, previous0);
    const VBytes out1 = swapped(s + p + kW, next1, previous1);
    const VBytes out2 = swapped(s + p + 2 * kW, next2, previous2);
    StoreBytes(d + p, out0);
    StoreBytes(d + p + kW, out1);
    StoreBytes(d + p + 2 * kW, out2);
  }
  for (std::size_t q = p == 3 ? 0 : p; q < bytes; q += 3) {
    const Byte low = s[q];
    const Byte middle = s[q + 1];
    const Byte high = s[q + 2];
    d[q] = high;
    d[q + 1] = middle;
    d[q + 2] = low;
  }
  if (p > 3) {
    const Byte low = s[0];
    const Byte high = s[2];
    d[0] = high;
    d[1] = s[1];
    d[2] = low;
  }
#endif
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus SetElements(T value, T* dst, int n) {
  return FillElements(dst, n, Pattern(value));
}

template <class T>
ZAL_INLINE EngStatus ClearElements(T* dst, int n) {
  return FillElements(dst, n, 0);
}

ZAL_INLINE EngStatus SwapElements(const Int24* src, Int24* dst, int n) {
  return SwapInt24(src, dst, n);
}

}  // namespace

#include "engine/primitives/movement/movement_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL

ZAL_MOVEMENT_PRIMITIVES(ZAL_CHECK_SHAPE)
