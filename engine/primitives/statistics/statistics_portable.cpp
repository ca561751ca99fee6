// The reference of the reductions: scalar loops in the order every level reproduces. Sums keep
// K partial sums (element i in partial i mod K, K = 256 bytes of accumulators) and combine them
// pairwise; extremes scan left to right, skipping NaN and replacing the candidate only on a strict
// improvement.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"

namespace zal::engine::portable {
namespace {

constexpr int kAccurateHint = 2;

template <class A, class Term>
A FixedOrderSum(std::ptrdiff_t n, Term term) {
  constexpr int kPartials = 256 / static_cast<int>(sizeof(A));
  A partial[kPartials];
  for (A& p : partial) p = A(-0.0);
  for (std::ptrdiff_t i = 0; i < n; ++i) partial[i % kPartials] = partial[i % kPartials] + term(i);
  for (int half = kPartials / 2; half > 0; half /= 2) {
    for (int j = 0; j < half; ++j) partial[j] = partial[j] + partial[j + half];
  }
  return partial[0];
}

template <class A, class T>
A SumOf(const T* src, std::ptrdiff_t n) {
  return FixedOrderSum<A>(n, [src](std::ptrdiff_t i) { return static_cast<A>(src[i]); });
}

template <class A, class T>
T StandardDeviation(const T* src, std::ptrdiff_t n) {
  if (n == 1) return T(0);
  const A m = SumOf<A>(src, n) / static_cast<A>(n);
  const A squares = FixedOrderSum<A>(n, [src, m](std::ptrdiff_t i) {
    const A d = m - static_cast<A>(src[i]);
    return d * d;
  });
  return static_cast<T>(std::sqrt(squares / static_cast<A>(n - 1)));
}

float Magnitude(float x) {
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & 0x7FFFFFFFu);
}
double Magnitude(double x) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0x7FFFFFFFFFFFFFFFull);
}

// The first index of the lowest (kMin) or highest non-NaN element; 0 when every one is NaN.
template <bool kMin, class T>
std::ptrdiff_t ExtremeIndex(const T* src, std::ptrdiff_t n) {
  std::ptrdiff_t best = -1;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    if (std::isnan(src[i])) continue;
    if (best < 0 || (kMin ? src[i] < src[best] : src[i] > src[best])) best = i;
  }
  return best < 0 ? 0 : best;
}

template <bool kMin, class T>
EngStatus ExtremeValue(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = src[ExtremeIndex<kMin>(src, n)];
  return engStsNoErr;
}

template <bool kMin>
EngStatus ExtremeWithIndex(const float* src, int n, float* value, int* index) {
  if (const EngStatus status = Check(n, src, value, index)) return status;
  const std::ptrdiff_t at = ExtremeIndex<kMin>(src, n);
  *value = src[at];
  *index = static_cast<int>(at);
  return engStsNoErr;
}

template <class T>
EngStatus NormL1(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(FixedOrderSum<T>(n, [src](std::ptrdiff_t i) { return Magnitude(src[i]); }));
  return engStsNoErr;
}

template <class T>
EngStatus NormL2(const T* src, int n, T* result) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(
      std::sqrt(FixedOrderSum<T>(n, [src](std::ptrdiff_t i) { return src[i] * src[i]; })));
  return engStsNoErr;
}

template <class T>
EngStatus DotProduct(const T* a, const T* b, int n, T* result) {
  if (const EngStatus status = Check(n, a, b, result)) return status;
  *result = DefaultNaN(FixedOrderSum<T>(n, [a, b](std::ptrdiff_t i) { return a[i] * b[i]; }));
  return engStsNoErr;
}

template <class T>
EngStatus Mean(const T* src, int n, T* result, bool accurate) {
  if (const EngStatus status = Check(n, src, result)) return status;
  *result = DefaultNaN(accurate ? static_cast<T>(SumOf<double>(src, n) / n)
                                : SumOf<T>(src, n) / static_cast<T>(n));
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
  *min = src[ExtremeIndex<true>(src, n)];
  *max = src[ExtremeIndex<false>(src, n)];
  return engStsNoErr;
}
EngStatus MinIndexF32(const float* src, int n, float* value, int* index) {
  return ExtremeWithIndex<true>(src, n, value, index);
}
EngStatus MaxIndexF32(const float* src, int n, float* value, int* index) {
  return ExtremeWithIndex<false>(src, n, value, index);
}
EngStatus MinMaxIndexF32(const float* src, int n, float* min, int* min_index, float* max,
                         int* max_index) {
  if (const EngStatus status = Check(n, src, min, min_index, max, max_index)) return status;
  const std::ptrdiff_t low = ExtremeIndex<true>(src, n);
  const std::ptrdiff_t high = ExtremeIndex<false>(src, n);
  *min = src[low];
  *min_index = static_cast<int>(low);
  *max = src[high];
  *max_index = static_cast<int>(high);
  return engStsNoErr;
}

EngStatus EqualU8(const unsigned char* a, const unsigned char* b, int n, int* equal) {
  if (const EngStatus status = Check(n, a, b, equal)) return status;
  int same = 1;
  for (int i = 0; i < n && same; ++i) same = a[i] == b[i];
  *equal = same;
  return engStsNoErr;
}

}  // namespace zal::engine::portable
