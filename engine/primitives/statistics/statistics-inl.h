// The reductions, written once against the vector layer; every level returns the portable
// variant's bits.
//
// Sums run in one fixed order at every level: element i goes to partial sum i mod K (K = 64
// floats or 32 doubles, 256 bytes of accumulators: sixteen SSE registers, eight AVX ones, four
// AVX-512 ones), each partial adds its elements in index order, and the partials then combine
// pairwise, p[j] += p[j + K/2] for j < K/2, then K/4, down to p[0]. Terms are single IEEE
// operations (a product is rounded before it is added, never fused).
//
// Extremes skip NaN elements and report the first occurrence: the array is scanned in blocks for
// the extreme value (order-independent), the first block holding it is remembered, and the first
// element there comparing equal gives the index; the value returned is that element itself, so
// -0 and +0 resolve to whichever comes first. All NaN: index 0, value src[0].
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr int kAccurateHint = 2;

template <class A>
constexpr int kPartials = 256 / static_cast<int>(sizeof(A));

// The sum over i < n of term(i) in the fixed order; terms(i) is the vector of terms from i on.
template <class A, class Terms, class Term>
ZAL_INLINE A FixedOrderSum(std::ptrdiff_t n, Terms terms, Term term) {
  using V = VectorOf<A>;
  constexpr int kLanes = V::kLanes;
  constexpr int kRegisters = kPartials<A> / kLanes;
  V acc[kRegisters];
  // -0 + x is x for every x, -0 included.
  for (V& a : acc) a = Broadcast(A(-0.0));
  std::ptrdiff_t i = 0;
  for (; i + kPartials<A> <= n; i += kPartials<A>) {
    [&]<std::size_t... r>(std::index_sequence<r...>) {
      ((acc[r] = acc[r] + terms(i + static_cast<std::ptrdiff_t>(r) * kLanes)), ...);
    }
    (std::make_index_sequence<kRegisters>());
  }
  if (i < n) {
    // The last elements join their partials one by one, in index order.
    alignas(64) A partial[kPartials<A>];
    for (int r = 0; r < kRegisters; ++r) Store(partial + r * kLanes, acc[r]);
    for (int j = 0; i + j < n; ++j) partial[j] = partial[j] + term(i + j);
    for (int r = 0; r < kRegisters; ++r) acc[r] = Load(partial + r * kLanes);
  }
  // p[j] += p[j + K/2] while halves span whole registers, then within the last one.
  for (int half = kRegisters / 2; half > 0; half /= 2) {
    for (int r = 0; r < half; ++r) acc[r] = acc[r] + acc[r + half];
  }
  return FoldHalves(acc[0]);
}

// Sum of src[i] (A: float, or double for float data summed in double).
template <class A, class T>
ZAL_INLINE A SumOf(const T* src, std::ptrdiff_t n) {
  if constexpr (sizeof(A) == sizeof(T)) {
    return FixedOrderSum<A>(
        n, [src](std::ptrdiff_t i) { return Load(src + i); },
        [src](std::ptrdiff_t i) { return src[i]; });
  } else {
    return FixedOrderSum<A>(
        n, [src](std::ptrdiff_t i) { return LoadWidened(src + i); },
        [src](std::ptrdiff_t i) { return static_cast<A>(src[i]); });
  }
}

// Sum of (m - src[i])^2.
template <class A, class T>
ZAL_INLINE A SquaredDeviations(const T* src, std::ptrdiff_t n, A m) {
  const auto square = [](auto d) { return d * d; };
  if constexpr (sizeof(A) == sizeof(T)) {
    return FixedOrderSum<A>(
        n, [src, m, square](std::ptrdiff_t i) { return square(Broadcast(m) - Load(src + i)); },
        [src, m, square](std::ptrdiff_t i) { return square(m - src[i]); });
  } else {
    return FixedOrderSum<A>(
        n,
        [src, m, square](std::ptrdiff_t i) { return square(Broadcast(m) - LoadWidened(src + i)); },
        [src, m, square](std::ptrdiff_t i) { return square(m - static_cast<A>(src[i])); });
  }
}

ZAL_INLINE float SquareRoot(float x) {
  return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x)));
}
ZAL_INLINE double SquareRoot(double x) {
  const __m128d v = _mm_set_sd(x);
  return _mm_cvtsd_f64(_mm_sqrt_sd(v, v));
}

// |x| by clearing the sign bit, so that -0 gives +0 and NaN stays NaN.
ZAL_INLINE float Magnitude(float x) {
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & 0x7FFFFFFFu);
}
ZAL_INLINE double Magnitude(double x) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0x7FFFFFFFFFFFFFFFull);
}
// Every bit but the sign, as a value of T.
template <class T>
constexpr T kAllButSign = sizeof(T) == 4 ? T(std::bit_cast<float>(0x7FFFFFFFu))
                                         : T(std::bit_cast<double>(0x7FFFFFFFFFFFFFFFull));

template <class T>
ZAL_INLINE EngStatus Mean(const T* src, int n, T* result, bool accurate) {
  if (const EngStatus status = Check(n, src, result)) return status;
  if (accurate) {
    *result = DefaultNaN(static_cast<T>(SumOf<double>(src, n) / n));
  } else {
    *result = DefaultNaN(SumOf<T>(src, n) / static_cast<T>(n));
  }
  return engStsNoErr;
}

// Sample deviation, divisor n - 1; a single element has none (0).
template <class A, class T>
ZAL_INLINE T StandardDeviation(const T* src, std::ptrdiff_t n) {
  if (n == 1) return T(0);
  const A m = SumOf<A>(src, n) / static_cast<A>(n);
  return static_cast<T>(SquareRoot(SquaredDeviations<A>(src, n, m) / static_cast<A>(n - 1)));
}

// Runs once per search: a loop, since the compilers' bit-scan builtins may emit tzcnt, which
// levels below avx2 must not contain.
ZAL_INLINE int LowestSetBit(unsigned bits) {
  int index = 0;
  for (; !(bits & 1u); bits >>= 1) ++index;
  return index;
}

// The first i from `from` on with src[i] == value, or -1.
template <class T>
ZAL_INLINE std::ptrdiff_t FirstEqual(const T* src, std::ptrdiff_t from, std::ptrdiff_t n, T value) {
  using V = VectorOf<T>;
  const V wanted = Broadcast(value);
  std::ptrdiff_t i = from;
  for (; i + V::kLanes <= n; i += V::kLanes) {
    if (const unsigned bits = LaneBits(Load(src + i) == wanted)) return i + LowestSetBit(bits);
  }
  for (; i < n; ++i) {
    if (src[i] == value) return i;
  }
  return -1;
}

template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();

template <class T>
struct ExtremeIndices {
  std::ptrdiff_t min = 0;
  std::ptrdiff_t max = 0;
};

// Blocks of 4 KiB: small enough that locating the first occurrence costs little, large enough
// that the per-block check does too.
template <class T>
constexpr std::ptrdiff_t kBlock = 4096 / static_cast<std::ptrdiff_t>(sizeof(T));

template <bool kWantMin, bool kWantMax, class T>
ZAL_INLINE ExtremeIndices<T> FindExtremes(const T* src, std::ptrdiff_t n) {
  using V = VectorOf<T>;
  constexpr std::ptrdiff_t kLanes = V::kLanes;
  constexpr T kInf = kInfinity<T>;
  T low = kInf;
  T high = -kInf;
  std::ptrdiff_t low_block = 0;
  std::ptrdiff_t high_block = 0;
  // Folds a scalar candidate, found from `start` on, into the running extremes.
  const auto fold = [&](T lo, T hi, std::ptrdiff_t start) {
    if (kWantMin && lo < low) {
      low = lo;
      low_block = start;
    }
    if (kWantMax && hi > high) {
      high = hi;
      high_block = start;
    }
  };
  std::ptrdiff_t i = 0;
  while (i + 4 * kLanes <= n) {
    const std::ptrdiff_t end = i + kBlock<T> <= n ? i + kBlock<T> : n;
    V lo[4] = {Broadcast(kInf), Broadcast(kInf), Broadcast(kInf), Broadcast(kInf)};
    V hi[4] = {Broadcast(-kInf), Broadcast(-kInf), Broadcast(-kInf), Broadcast(-kInf)};
    const std::ptrdiff_t start = i;
    for (; i + 4 * kLanes <= end; i += 4 * kLanes) {
      for (int r = 0; r < 4; ++r) {
        const V x = Load(src + i + r * kLanes);
        if constexpr (kWantMin) lo[r] = Min(x, lo[r]);
        if constexpr (kWantMax) hi[r] = Max(x, hi[r]);
      }
    }
    const V block_low = Min(Min(lo[0], lo[1]), Min(lo[2], lo[3]));
    const V block_high = Max(Max(hi[0], hi[1]), Max(hi[2], hi[3]));
    // Lanes are NaN-free here, so only a strict improvement leaves the scalar path.
    const bool lower = kWantMin && LaneBits(block_low < Broadcast(low)) != 0;
    const bool higher = kWantMax && LaneBits(Broadcast(high) < block_high) != 0;
    if (lower || higher) {
      alignas(64) T lows[kLanes];
      alignas(64) T highs[kLanes];
      Store(lows, block_low);
      Store(highs, block_high);
      T lo_value = lows[0];
      T hi_value = highs[0];
      for (std::ptrdiff_t l = 1; l < kLanes; ++l) {
        if (lows[l] < lo_value) lo_value = lows[l];
        if (highs[l] > hi_value) hi_value = highs[l];
      }
      fold(lo_value, hi_value, start);
    }
  }
  const std::ptrdiff_t tail = i;
  for (; i < n; ++i) fold(src[i], src[i], tail);
  ExtremeIndices<T> found;
  if constexpr (kWantMin) {
    const std::ptrdiff_t at = FirstEqual(src, low_block, n, low);
    found.min = at < 0 ? 0 : at;
  }
  if constexpr (kWantMax) {
    const std::ptrdiff_t at = FirstEqual(src, high_block, n, high);
    found.max = at < 0 ? 0 : at;
  }
  return found;
}

template <bool kMin, class T>
ZAL_INLINE EngStatus ExtremeValue(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  const ExtremeIndices<T> found = FindExtremes<kMin, !kMin>(src, n);
  *result = src[kMin ? found.min : found.max];
  return engStsNoErr;
}

template <bool kMin>
ZAL_INLINE EngStatus ExtremeIndex(const float* src, int n, float* value, int* index) {
  if (const EngStatus status = Check(n, src, value, index)) return status;
  const ExtremeIndices<float> found = FindExtremes<kMin, !kMin>(src, n);
  const std::ptrdiff_t at = kMin ? found.min : found.max;
  *value = src[at];
  *index = static_cast<int>(at);
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus NormL1(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(FixedOrderSum<T>(
      n, [src](std::ptrdiff_t i) { return And(Load(src + i), Broadcast(kAllButSign<T>)); },
      [src](std::ptrdiff_t i) { return Magnitude(src[i]); }));
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus NormL2(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(SquareRoot(FixedOrderSum<T>(
      n,
      [src](std::ptrdiff_t i) {
        const auto x = Load(src + i);
        return x * x;
      },
      [src](std::ptrdiff_t i) { return src[i] * src[i]; })));
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus DotProduct(const T* a, const T* b, int n, T* result) {
  if (const EngStatus status = Check(n, a, b, result)) return status;
  *result = DefaultNaN(FixedOrderSum<T>(
      n, [a, b](std::ptrdiff_t i) { return Load(a + i) * Load(b + i); },
      [a, b](std::ptrdiff_t i) { return a[i] * b[i]; }));
  return engStsNoErr;
}

}  // namespace

#include "engine/primitives/statistics/statistics_entries-inl.h"

EngStatus SumF32(const float* src, int n, float* result, int hint) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(hint == kAccurateHint ? static_cast<float>(SumOf<double>(src, n))
                                             : SumOf<float>(src, n));
  return engStsNoErr;
}
EngStatus SumF64(const double* src, int n, double* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(SumOf<double>(src, n));
  return engStsNoErr;
}
EngStatus MeanF32(const float* src, int n, float* result, int hint) {
  return Mean(src, n, result, hint == kAccurateHint);
}
EngStatus MeanF64(const double* src, int n, double* result) {
  return Mean(src, n, result, false);
}
EngStatus StdDevF32(const float* src, int n, float* result, int hint) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(hint == kAccurateHint ? StandardDeviation<double>(src, n)
                                             : StandardDeviation<float>(src, n));
  return engStsNoErr;
}
EngStatus StdDevF64(const double* src, int n, double* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(StandardDeviation<double>(src, n));
  return engStsNoErr;
}

EngStatus MinMaxF32(const float* src, int n, float* min, float* max) {
  if (const EngStatus status = Check(n, src, min, max)) return status;
  const ExtremeIndices<float> found = FindExtremes<true, true>(src, n);
  *min = src[found.min];
  *max = src[found.max];
  return engStsNoErr;
}
EngStatus MinIndexF32(const float* src, int n, float* value, int* index) {
  return ExtremeIndex<true>(src, n, value, index);
}
EngStatus MaxIndexF32(const float* src, int n, float* value, int* index) {
  return ExtremeIndex<false>(src, n, value, index);
}
EngStatus MinMaxIndexF32(const float* src, int n, float* min, int* min_index, float* max,
                         int* max_index) {
  if (const EngStatus status = Check(n, src, min, min_index, max, max_index)) return status;
  const ExtremeIndices<float> found = FindExtremes<true, true>(src, n);
  *min = src[found.min];
  *min_index = static_cast<int>(found.min);
  *max = src[found.max];
  *max_index = static_cast<int>(found.max);
  return engStsNoErr;
}

// Eight bytes at a time: the comparison has no arithmetic to vectorise, and the loads dominate.
EngStatus EqualU8(const unsigned char* a, const unsigned char* b, int n, int* equal) {
  if (const EngStatus status = Check(n, a, b, equal)) return status;
  std::ptrdiff_t i = 0;
  int same = 1;
  for (; i + 8 <= n && same; i += 8) {
    std::uint64_t x;
    std::uint64_t y;
    std::memcpy(&x, a + i, 8);
    std::memcpy(&y, b + i, 8);
    same = x == y;
  }
  for (; i < n && same; ++i) same = a[i] == b[i];
  *equal = same;
  return engStsNoErr;
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_STATISTICS_PRIMITIVES(ZAL_CHECK_SHAPE)
