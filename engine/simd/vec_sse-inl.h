// The vector layer of the SSE levels (sse2, ssse3, sse42): one 128-bit register per value. SSE3,
// and with it addsub and the lane duplications, is present only from ssse3 on.
#pragma once

#include "engine/simd/vec_common-inl.h"
#include "engine/simd/vec_int128-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

inline constexpr bool kHasSse3 = ZAL_LEVEL_INDEX >= 1;

// Comparison results: every bit of a lane set or clear.
struct MF32 {
  __m128 raw = _mm_setzero_ps();
};
struct MF64 {
  __m128d raw = _mm_setzero_pd();
};

struct VF32 {
  __m128 raw;
  static constexpr int kLanes = 4;
  using Mask = MF32;
};
struct VF64 {
  __m128d raw;
  static constexpr int kLanes = 2;
  using Mask = MF64;
};

ZAL_INLINE VF32 Load(const float* p) {
  return {_mm_loadu_ps(p)};
}
ZAL_INLINE VF64 Load(const double* p) {
  return {_mm_loadu_pd(p)};
}
ZAL_INLINE void Store(float* p, VF32 v) {
  _mm_storeu_ps(p, v.raw);
}
ZAL_INLINE void Store(double* p, VF64 v) {
  _mm_storeu_pd(p, v.raw);
}
// p aligned to the register.
ZAL_INLINE void Stream(float* p, VF32 v) {
  _mm_stream_ps(p, v.raw);
}
ZAL_INLINE void Stream(double* p, VF64 v) {
  _mm_stream_pd(p, v.raw);
}

// Lanes n and above hold 1, which no operation turns into an exception or a zero divisor.
ZAL_INLINE VF32 LoadN(const float* p, int n) {
  const __m128i ones = _mm_castps_si128(_mm_set1_ps(1.0f));
  const __m128i beyond = _mm_andnot_si128(FirstBytes128(n * 4), ones);
  return {_mm_castsi128_ps(_mm_or_si128(LoadPartial128(p, n * 4), beyond))};
}
ZAL_INLINE VF64 LoadN(const double* p, int) {  // n is 1
  return {_mm_loadl_pd(_mm_set1_pd(1.0), p)};
}
ZAL_INLINE void StoreN(float* p, VF32 v, int n) {
  StorePartial128(p, _mm_castps_si128(v.raw), n * 4);
}
ZAL_INLINE void StoreN(double* p, VF64 v, int) {
  _mm_storel_pd(p, v.raw);
}

ZAL_INLINE VF32 Broadcast(float x) {
  return {_mm_set1_ps(x)};
}
ZAL_INLINE VF64 Broadcast(double x) {
  return {_mm_set1_pd(x)};
}
ZAL_INLINE VF32 BroadcastPair(float even, float odd) {
  return {_mm_setr_ps(even, odd, even, odd)};
}
ZAL_INLINE VF64 BroadcastPair(double even, double odd) {
  return {_mm_setr_pd(even, odd)};
}

// The same bits seen as float lanes.
ZAL_INLINE VF32 AsF32(VF64 v) {
  return {_mm_castpd_ps(v.raw)};
}

ZAL_INLINE VF32 operator+(VF32 a, VF32 b) {
  return {_mm_add_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator+(VF64 a, VF64 b) {
  return {_mm_add_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator-(VF32 a, VF32 b) {
  return {_mm_sub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator-(VF64 a, VF64 b) {
  return {_mm_sub_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator*(VF32 a, VF32 b) {
  return {_mm_mul_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator*(VF64 a, VF64 b) {
  return {_mm_mul_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator/(VF32 a, VF32 b) {
  return {_mm_div_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator/(VF64 a, VF64 b) {
  return {_mm_div_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Xor(VF32 a, VF32 b) {
  return {_mm_xor_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Xor(VF64 a, VF64 b) {
  return {_mm_xor_pd(a.raw, b.raw)};
}

ZAL_INLINE MF32 IsZero(VF32 v) {
  return {_mm_cmpeq_ps(v.raw, _mm_setzero_ps())};
}
ZAL_INLINE MF64 IsZero(VF64 v) {
  return {_mm_cmpeq_pd(v.raw, _mm_setzero_pd())};
}
ZAL_INLINE MF32 operator|(MF32 a, MF32 b) {
  return {_mm_or_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator|(MF64 a, MF64 b) {
  return {_mm_or_pd(a.raw, b.raw)};
}
ZAL_INLINE bool AnyLane(MF32 m) {
  return _mm_movemask_ps(m.raw) != 0;
}
ZAL_INLINE bool AnyLane(MF64 m) {
  return _mm_movemask_pd(m.raw) != 0;
}

// Pairs of lanes (0, 1), (2, 3) ... hold interleaved complex values.
ZAL_INLINE VF32 DupEven(VF32 v) {
  if constexpr (kHasSse3) return {_mm_moveldup_ps(v.raw)};
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(2, 2, 0, 0))};
}
ZAL_INLINE VF64 DupEven(VF64 v) {
  return {_mm_unpacklo_pd(v.raw, v.raw)};
}
ZAL_INLINE VF32 DupOdd(VF32 v) {
  if constexpr (kHasSse3) return {_mm_movehdup_ps(v.raw)};
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(3, 3, 1, 1))};
}
ZAL_INLINE VF64 DupOdd(VF64 v) {
  return {_mm_unpackhi_pd(v.raw, v.raw)};
}
ZAL_INLINE VF32 SwapPairs(VF32 v) {
  return {_mm_shuffle_ps(v.raw, v.raw, _MM_SHUFFLE(2, 3, 0, 1))};
}
ZAL_INLINE VF64 SwapPairs(VF64 v) {
  return {_mm_shuffle_pd(v.raw, v.raw, 1)};
}
// The first (or second) lane of every pair of a and b, a's before b's within each 128-bit block:
// two registers of pairs split by lane. InterleaveLow and InterleaveHigh put them back.
ZAL_INLINE VF32 FirstOfPairs(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF64 FirstOfPairs(VF64 a, VF64 b) {
  return {_mm_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 SecondOfPairs(VF32 a, VF32 b) {
  return {_mm_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 SecondOfPairs(VF64 a, VF64 b) {
  return {_mm_unpackhi_pd(a.raw, b.raw)};
}
// Lanes of a and b alternating, from the low or the high half of each 128-bit block.
ZAL_INLINE VF32 InterleaveLow(VF32 a, VF32 b) {
  return {_mm_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveLow(VF64 a, VF64 b) {
  return {_mm_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 InterleaveHigh(VF32 a, VF32 b) {
  return {_mm_unpackhi_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveHigh(VF64 a, VF64 b) {
  return {_mm_unpackhi_pd(a.raw, b.raw)};
}
// Set where both lanes of the pair are set.
ZAL_INLINE MF32 BothOfPair(MF32 m) {
  return {_mm_and_ps(m.raw, SwapPairs(VF32{m.raw}).raw)};
}
ZAL_INLINE MF64 BothOfPair(MF64 m) {
  return {_mm_and_pd(m.raw, SwapPairs(VF64{m.raw}).raw)};
}

// a - b in even lanes, a + b in odd ones. Adding the negation is the same operation as
// subtracting, bit for bit, where SSE3 is missing.
ZAL_INLINE VF32 AddSub(VF32 a, VF32 b) {
  if constexpr (kHasSse3) return {_mm_addsub_ps(a.raw, b.raw)};
  return a + Xor(b, BroadcastPair(-0.0f, 0.0f));
}
ZAL_INLINE VF64 AddSub(VF64 a, VF64 b) {
  if constexpr (kHasSse3) return {_mm_addsub_pd(a.raw, b.raw)};
  return a + Xor(b, BroadcastPair(-0.0, 0.0));
}
// a + b in even lanes, a - b in odd ones.
ZAL_INLINE VF32 SubAdd(VF32 a, VF32 b) {
  return a + Xor(b, BroadcastPair(0.0f, -0.0f));
}
ZAL_INLINE VF64 SubAdd(VF64 a, VF64 b) {
  return a + Xor(b, BroadcastPair(0.0, -0.0));
}

// ---- Math-function operations ------------------------------------------------------------------
// Bit operations, comparisons, selection, rounding, exponent fields and table lookups that the
// math kernels build on (engine/simd/vec_math-inl.h). SSE4.1, from sse42 on, rounds and blends in
// one instruction; below it the same results come from sequences of SSE2 operations.

inline constexpr bool kHasFma = false;
// Correct bits of ApproxReciprocal.
inline constexpr int kApproxReciprocalBits = 11;

ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm_or_pd(a.raw, b.raw)};
}
// ~a & b.
ZAL_INLINE VF32 AndNot(VF32 a, VF32 b) {
  return {_mm_andnot_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 AndNot(VF64 a, VF64 b) {
  return {_mm_andnot_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm_sqrt_pd(v.raw)};
}
// a * b + c, rounded once where the level has fused multiply-add.
ZAL_INLINE VF32 MulAdd(VF32 a, VF32 b, VF32 c) {
  return a * b + c;
}
ZAL_INLINE VF64 MulAdd(VF64 a, VF64 b, VF64 c) {
  return a * b + c;
}

ZAL_INLINE MF32 Less(VF32 a, VF32 b) {
  return {_mm_cmplt_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 Less(VF64 a, VF64 b) {
  return {_mm_cmplt_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 LessEqual(VF32 a, VF32 b) {
  return {_mm_cmple_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 LessEqual(VF64 a, VF64 b) {
  return {_mm_cmple_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 Equal(VF32 a, VF32 b) {
  return {_mm_cmpeq_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 Equal(VF64 a, VF64 b) {
  return {_mm_cmpeq_pd(a.raw, b.raw)};
}
// Set where either lane is a NaN.
ZAL_INLINE MF32 Unordered(VF32 a, VF32 b) {
  return {_mm_cmpunord_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 Unordered(VF64 a, VF64 b) {
  return {_mm_cmpunord_pd(a.raw, b.raw)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {_mm_and_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {_mm_and_pd(a.raw, b.raw)};
}
// ~a & b.
ZAL_INLINE MF32 AndNot(MF32 a, MF32 b) {
  return {_mm_andnot_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 AndNot(MF64 a, MF64 b) {
  return {_mm_andnot_pd(a.raw, b.raw)};
}
// Bit i set where lane i is.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return static_cast<unsigned>(_mm_movemask_ps(m.raw));
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return static_cast<unsigned>(_mm_movemask_pd(m.raw));
}
// m ? a : b, lane by lane.
ZAL_INLINE VF32 Select(MF32 m, VF32 a, VF32 b) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_blendv_ps(b.raw, a.raw, m.raw)};
#else
  return {_mm_or_ps(_mm_and_ps(m.raw, a.raw), _mm_andnot_ps(m.raw, b.raw))};
#endif
}
ZAL_INLINE VF64 Select(MF64 m, VF64 a, VF64 b) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_blendv_pd(b.raw, a.raw, m.raw)};
#else
  return {_mm_or_pd(_mm_and_pd(m.raw, a.raw), _mm_andnot_pd(m.raw, b.raw))};
#endif
}

#if ZAL_LEVEL_INDEX < 2
// Below SSE4.1 every integral value comes from exact operations only, so that none depends on the
// caller's rounding mode. An integral neighbour (floor or ceiling, by that mode) of v, for |v|
// below 2^23 (2^52): adding and subtracting that power rounds |v| one way or the other. Rounding
// down makes an exact zero difference -0, so signs are set from v alone.
ZAL_INLINE __m128 IntegralNeighbour(__m128 v) {
  const __m128 sign = _mm_set1_ps(-0.0f);
  const __m128 shift = _mm_set1_ps(8388608.0f);
  const __m128 magnitude = _mm_andnot_ps(sign, v);
  const __m128 neighbour = _mm_sub_ps(_mm_add_ps(magnitude, shift), shift);
  return _mm_or_ps(_mm_andnot_ps(sign, neighbour), _mm_and_ps(sign, v));
}
ZAL_INLINE __m128d IntegralNeighbour(__m128d v) {
  const __m128d sign = _mm_set1_pd(-0.0);
  const __m128d shift = _mm_set1_pd(4503599627370496.0);
  const __m128d magnitude = _mm_andnot_pd(sign, v);
  const __m128d neighbour = _mm_sub_pd(_mm_add_pd(magnitude, shift), shift);
  return _mm_or_pd(_mm_andnot_pd(sign, neighbour), _mm_and_pd(sign, v));
}
// The largest integral value not above v, |v| below 2^52: the comparison is exact.
ZAL_INLINE __m128d FloorBelow2To52(__m128d v) {
  const __m128d neighbour = IntegralNeighbour(v);
  return _mm_sub_pd(neighbour, _mm_and_pd(_mm_cmplt_pd(v, neighbour), _mm_set1_pd(1.0)));
}
// Every bit set in the lanes where the integral value t (below 2^52) is odd: t + 2^52 is exact,
// and its last mantissa bit is t's.
ZAL_INLINE __m128d OddIntegralLanes(__m128d t) {
  const __m128i bits = _mm_castpd_si128(_mm_add_pd(t, _mm_set1_pd(4503599627370496.0)));
  const __m128i parity_high = _mm_srai_epi32(_mm_slli_epi64(bits, 63), 31);
  return _mm_castsi128_pd(_mm_shuffle_epi32(parity_high, _MM_SHUFFLE(3, 3, 1, 1)));
}
// t + 1 where the fraction f = magnitude - t is above a half, or exactly a half and t odd.
ZAL_INLINE __m128 RoundUpToEven(__m128 t, __m128 f, __m128 odd) {
  const __m128 half = _mm_set1_ps(0.5f);
  const __m128 up = _mm_or_ps(_mm_cmpgt_ps(f, half), _mm_and_ps(_mm_cmpeq_ps(f, half), odd));
  return _mm_add_ps(t, _mm_and_ps(up, _mm_set1_ps(1.0f)));
}
ZAL_INLINE __m128d RoundUpToEven(__m128d t, __m128d f, __m128d odd) {
  const __m128d half = _mm_set1_pd(0.5);
  const __m128d up = _mm_or_pd(_mm_cmpgt_pd(f, half), _mm_and_pd(_mm_cmpeq_pd(f, half), odd));
  return _mm_add_pd(t, _mm_and_pd(up, _mm_set1_pd(1.0)));
}
#endif

// The nearest integral value, ties to even, of every value (a NaN stays a NaN, and the sign of
// zero survives), whatever the rounding mode. Below SSE4.1 magnitudes from 2^23 (2^52) on are
// integral already; smaller ones split exactly into an integral part and a fraction.
ZAL_INLINE VF32 RoundNearestEven(VF32 v) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_round_ps(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
#else
  const __m128 sign = _mm_set1_ps(-0.0f);
  const __m128 magnitude = _mm_andnot_ps(sign, v.raw);
  const __m128i truncated = _mm_cvttps_epi32(magnitude);
  const __m128 t = _mm_cvtepi32_ps(truncated);
  const __m128 odd = _mm_castsi128_ps(
      _mm_cmpeq_epi32(_mm_and_si128(truncated, _mm_set1_epi32(1)), _mm_set1_epi32(1)));
  // Zero results are -0 when rounding down; the sign comes from v alone.
  const __m128 rounded = _mm_andnot_ps(sign, RoundUpToEven(t, _mm_sub_ps(magnitude, t), odd));
  const __m128 small = _mm_cmplt_ps(magnitude, _mm_set1_ps(8388608.0f));
  const __m128 result = _mm_or_ps(_mm_and_ps(small, rounded), _mm_andnot_ps(small, magnitude));
  return {_mm_or_ps(result, _mm_and_ps(sign, v.raw))};
#endif
}
ZAL_INLINE VF64 RoundNearestEven(VF64 v) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_round_pd(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
#else
  const __m128d sign = _mm_set1_pd(-0.0);
  const __m128d magnitude = _mm_andnot_pd(sign, v.raw);
  const __m128d t = FloorBelow2To52(magnitude);
  const __m128d rounded =
      _mm_andnot_pd(sign, RoundUpToEven(t, _mm_sub_pd(magnitude, t), OddIntegralLanes(t)));
  const __m128d small = _mm_cmplt_pd(magnitude, _mm_set1_pd(4503599627370496.0));
  const __m128d result = _mm_or_pd(_mm_and_pd(small, rounded), _mm_andnot_pd(small, magnitude));
  return {_mm_or_pd(result, _mm_and_pd(sign, v.raw))};
#endif
}

// The largest integral value not above v, for |v| below 2^22 (2^51) where SSE4.1 is missing: an
// integral neighbour of v, less one where it lies above v.
ZAL_INLINE VF32 Floor(VF32 v) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_floor_ps(v.raw)};
#else
  const VF32 neighbour = {IntegralNeighbour(v.raw)};
  return neighbour - And(VF32{_mm_cmplt_ps(v.raw, neighbour.raw)}, Broadcast(1.0f));
#endif
}
ZAL_INLINE VF64 Floor(VF64 v) {
#if ZAL_LEVEL_INDEX >= 2
  return {_mm_floor_pd(v.raw)};
#else
  return {FloorBelow2To52(v.raw)};
#endif
}

// 2^k for integral k of the normal exponent range.
ZAL_INLINE VF32 Pow2I(VF32 k) {
  const __m128i biased = _mm_add_epi32(_mm_cvtps_epi32(k.raw), _mm_set1_epi32(127));
  return {_mm_castsi128_ps(_mm_slli_epi32(biased, 23))};
}
ZAL_INLINE VF64 Pow2I(VF64 k) {
  const __m128i k32 = _mm_shuffle_epi32(_mm_cvtpd_epi32(k.raw), _MM_SHUFFLE(3, 1, 2, 0));
  const __m128i biased = _mm_add_epi64(k32, _mm_set1_epi64x(1023));
  return {_mm_castsi128_pd(_mm_slli_epi64(biased, 52))};
}
// The level lacks GetExponent and GetMantissa.
inline constexpr bool kHasExponentOps = false;
// The biased exponent field of a value with a clear sign bit, as a value: the field becomes the
// low bits of 2^23 (2^52), which is then subtracted.
ZAL_INLINE VF32 ExponentField(VF32 v) {
  const __m128i field = _mm_srli_epi32(_mm_castps_si128(v.raw), 23);
  const __m128 magic = _mm_set1_ps(8388608.0f);
  return {_mm_sub_ps(_mm_or_ps(_mm_castsi128_ps(field), magic), magic)};
}
ZAL_INLINE VF64 ExponentField(VF64 v) {
  const __m128i field = _mm_srli_epi64(_mm_castpd_si128(v.raw), 52);
  const __m128d magic = _mm_set1_pd(4503599627370496.0);
  return {_mm_sub_pd(_mm_or_pd(_mm_castsi128_pd(field), magic), magic)};
}

// table[j] for the 16-entry table, j the low four bits of each lane's bit pattern (where a value
// offset by 1.5 * 2^52 holds its integer).
ZAL_INLINE VF64 LookupLowBits16(const double* table, VF64 v) {
  const __m128i bits = _mm_castpd_si128(v.raw);
  const int i0 = _mm_cvtsi128_si32(bits) & 15;
  const int i1 = _mm_cvtsi128_si32(_mm_srli_si128(bits, 8)) & 15;
  return {_mm_loadh_pd(_mm_load_sd(table + i0), table + i1)};
}
// The bits of v plus those of u shifted left by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 AddShiftedBits(VF64 v, VF64 u) {
  return {_mm_castsi128_pd(
      _mm_add_epi64(_mm_castpd_si128(v.raw), _mm_slli_epi64(_mm_castpd_si128(u.raw), kShift)))};
}

// Float lanes widened: the lower and the upper half of v.
ZAL_INLINE VF64 LowerToF64(VF32 v) {
  return {_mm_cvtps_pd(v.raw)};
}
ZAL_INLINE VF64 UpperToF64(VF32 v) {
  return {_mm_cvtps_pd(_mm_movehl_ps(v.raw, v.raw))};
}
// Rounded to float and joined: lower's lanes first.
ZAL_INLINE VF32 JoinToF32(VF64 lower, VF64 upper) {
  return {_mm_movelh_ps(_mm_cvtpd_ps(lower.raw), _mm_cvtpd_ps(upper.raw))};
}

// About 1/v to kApproxReciprocalBits bits, for |v| within the normal float range.
ZAL_INLINE VF64 ApproxReciprocal(VF64 v) {
  return {_mm_cvtps_pd(_mm_rcp_ps(_mm_cvtpd_ps(v.raw)))};
}

// Rows of a table read by loads that transpose, where a gather would be microcoded: the columns
// of rows of w = 2 doubles (16-byte aligned; row i for integral, in-range values i) or w = 4
// doubles (32-byte aligned, the fourth column padding; at in-range byte offsets).
struct Columns2 {
  VF64 c0;
  VF64 c1;
};
struct Columns3 {
  VF64 c0;
  VF64 c1;
  VF64 c2;
};
ZAL_INLINE Columns2 LookupRowsOf2(const double* table, VF64 index) {
  const __m128i i = _mm_cvttpd_epi32(index.raw);
  const __m128d a = _mm_load_pd(table + 2 * _mm_cvtsi128_si32(i));
  const __m128d b = _mm_load_pd(table + 2 * _mm_cvtsi128_si32(_mm_srli_si128(i, 4)));
  return {{_mm_unpacklo_pd(a, b)}, {_mm_unpackhi_pd(a, b)}};
}
// Rows of four at byte offsets given as the lanes' bit patterns (computed from a value's bits).
ZAL_INLINE Columns3 LookupRowsOf4(const double* table, VF64 offset_bits) {
  const __m128i offsets = _mm_castpd_si128(offset_bits.raw);
  const char* base = reinterpret_cast<const char*>(table);
  const auto* row0 = reinterpret_cast<const double*>(base + _mm_cvtsi128_si64(offsets));
  const auto* row1 = reinterpret_cast<const double*>(
      base + _mm_cvtsi128_si64(_mm_unpackhi_epi64(offsets, offsets)));
  const __m128d a = _mm_load_pd(row0);
  const __m128d b = _mm_load_pd(row1);
  return {{_mm_unpacklo_pd(a, b)},
          {_mm_unpackhi_pd(a, b)},
          {_mm_unpacklo_pd(_mm_load_sd(row0 + 2), _mm_load_sd(row1 + 2))}};
}

// The lanes' bit patterns shifted right by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 ShiftRightBits(VF64 v) {
  return {_mm_castsi128_pd(_mm_srli_epi64(_mm_castpd_si128(v.raw), kShift))};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
