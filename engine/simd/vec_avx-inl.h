// The vector layer of the AVX levels (avx, avx2): 256-bit floating-point registers. Integer
// vectors are 256-bit only from avx2 on; the avx level keeps the 128-bit ones.
#pragma once

#include "engine/simd/vec_common-inl.h"

#if ZAL_LEVEL_INDEX < 4
#include "engine/simd/vec_int128-inl.h"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

struct MF32 {
  __m256 raw = _mm256_setzero_ps();
};
struct MF64 {
  __m256d raw = _mm256_setzero_pd();
};

struct VF32 {
  __m256 raw;
  static constexpr int kLanes = 8;
  using Mask = MF32;
};
struct VF64 {
  __m256d raw;
  static constexpr int kLanes = 4;
  using Mask = MF64;
};

ZAL_INLINE __m256i FirstBytes256(int bytes) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kLaneMask.bytes + 64 - bytes));
}

// The first `bytes` bytes of v (an even count below 32) and nothing else.
ZAL_INLINE void StorePartial256(void* p, __m256i v, int bytes) {
  char* c = static_cast<char*>(p);
  __m128i part = _mm256_castsi256_si128(v);
  if (bytes >= 16) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(c), part);
    part = _mm256_extractf128_si256(v, 1);
    c += 16;
    bytes -= 16;
  }
  StorePartial128(c, part, bytes);
}

ZAL_INLINE VF32 Load(const float* p) {
  return {_mm256_loadu_ps(p)};
}
ZAL_INLINE VF64 Load(const double* p) {
  return {_mm256_loadu_pd(p)};
}
ZAL_INLINE void Store(float* p, VF32 v) {
  _mm256_storeu_ps(p, v.raw);
}
ZAL_INLINE void Store(double* p, VF64 v) {
  _mm256_storeu_pd(p, v.raw);
}
// p aligned to the register.
ZAL_INLINE void Stream(float* p, VF32 v) {
  _mm256_stream_ps(p, v.raw);
}
ZAL_INLINE void Stream(double* p, VF64 v) {
  _mm256_stream_pd(p, v.raw);
}

// Lanes n and above hold 1, which no operation turns into an exception or a zero divisor. The
// masked load does not touch them.
ZAL_INLINE VF32 LoadN(const float* p, int n) {
  const __m256i first = FirstBytes256(n * 4);
  return {_mm256_blendv_ps(_mm256_set1_ps(1.0f), _mm256_maskload_ps(p, first),
                           _mm256_castsi256_ps(first))};
}
ZAL_INLINE VF64 LoadN(const double* p, int n) {
  const __m256i first = FirstBytes256(n * 8);
  return {_mm256_blendv_pd(_mm256_set1_pd(1.0), _mm256_maskload_pd(p, first),
                           _mm256_castsi256_pd(first))};
}
ZAL_INLINE void StoreN(float* p, VF32 v, int n) {
  StorePartial256(p, _mm256_castps_si256(v.raw), n * 4);
}
ZAL_INLINE void StoreN(double* p, VF64 v, int n) {
  StorePartial256(p, _mm256_castpd_si256(v.raw), n * 8);
}

ZAL_INLINE VF32 Broadcast(float x) {
  return {_mm256_set1_ps(x)};
}
ZAL_INLINE VF64 Broadcast(double x) {
  return {_mm256_set1_pd(x)};
}
ZAL_INLINE VF32 BroadcastPair(float even, float odd) {
  return {_mm256_setr_ps(even, odd, even, odd, even, odd, even, odd)};
}
ZAL_INLINE VF64 BroadcastPair(double even, double odd) {
  return {_mm256_setr_pd(even, odd, even, odd)};
}

// The same bits seen as float lanes.
ZAL_INLINE VF32 AsF32(VF64 v) {
  return {_mm256_castpd_ps(v.raw)};
}

ZAL_INLINE VF32 operator+(VF32 a, VF32 b) {
  return {_mm256_add_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator+(VF64 a, VF64 b) {
  return {_mm256_add_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator-(VF32 a, VF32 b) {
  return {_mm256_sub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator-(VF64 a, VF64 b) {
  return {_mm256_sub_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator*(VF32 a, VF32 b) {
  return {_mm256_mul_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator*(VF64 a, VF64 b) {
  return {_mm256_mul_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator/(VF32 a, VF32 b) {
  return {_mm256_div_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator/(VF64 a, VF64 b) {
  return {_mm256_div_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Xor(VF32 a, VF32 b) {
  return {_mm256_xor_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Xor(VF64 a, VF64 b) {
  return {_mm256_xor_pd(a.raw, b.raw)};
}

ZAL_INLINE MF32 IsZero(VF32 v) {
  return {_mm256_cmp_ps(v.raw, _mm256_setzero_ps(), _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 IsZero(VF64 v) {
  return {_mm256_cmp_pd(v.raw, _mm256_setzero_pd(), _CMP_EQ_OQ)};
}
ZAL_INLINE MF32 operator|(MF32 a, MF32 b) {
  return {_mm256_or_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator|(MF64 a, MF64 b) {
  return {_mm256_or_pd(a.raw, b.raw)};
}
// A sign-bit test and its branch, without moving the mask to a general register.
ZAL_INLINE bool AnyLane(MF32 m) {
  return !_mm256_testz_ps(m.raw, m.raw);
}
ZAL_INLINE bool AnyLane(MF64 m) {
  return !_mm256_testz_pd(m.raw, m.raw);
}

// Pairs of lanes (0, 1), (2, 3) ... hold interleaved complex values.
ZAL_INLINE VF32 DupEven(VF32 v) {
  return {_mm256_moveldup_ps(v.raw)};
}
ZAL_INLINE VF64 DupEven(VF64 v) {
  return {_mm256_movedup_pd(v.raw)};
}
ZAL_INLINE VF32 DupOdd(VF32 v) {
  return {_mm256_movehdup_ps(v.raw)};
}
ZAL_INLINE VF64 DupOdd(VF64 v) {
  return {_mm256_permute_pd(v.raw, 0xF)};
}
ZAL_INLINE VF32 SwapPairs(VF32 v) {
  return {_mm256_permute_ps(v.raw, _MM_SHUFFLE(2, 3, 0, 1))};
}
ZAL_INLINE VF64 SwapPairs(VF64 v) {
  return {_mm256_permute_pd(v.raw, 0x5)};
}
// The first (or second) lane of every pair of a and b, a's before b's within each 128-bit block:
// two registers of pairs split by lane. InterleaveLow and InterleaveHigh put them back.
ZAL_INLINE VF32 FirstOfPairs(VF32 a, VF32 b) {
  return {_mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF64 FirstOfPairs(VF64 a, VF64 b) {
  return {_mm256_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 SecondOfPairs(VF32 a, VF32 b) {
  return {_mm256_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 SecondOfPairs(VF64 a, VF64 b) {
  return {_mm256_unpackhi_pd(a.raw, b.raw)};
}
// Lanes of a and b alternating, from the low or the high half of each 128-bit block.
ZAL_INLINE VF32 InterleaveLow(VF32 a, VF32 b) {
  return {_mm256_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveLow(VF64 a, VF64 b) {
  return {_mm256_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 InterleaveHigh(VF32 a, VF32 b) {
  return {_mm256_unpackhi_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveHigh(VF64 a, VF64 b) {
  return {_mm256_unpackhi_pd(a.raw, b.raw)};
}
// Set where both lanes of the pair are set.
ZAL_INLINE MF32 BothOfPair(MF32 m) {
  return {_mm256_and_ps(m.raw, SwapPairs(VF32{m.raw}).raw)};
}
ZAL_INLINE MF64 BothOfPair(MF64 m) {
  return {_mm256_and_pd(m.raw, SwapPairs(VF64{m.raw}).raw)};
}

// a - b in even lanes, a + b in odd ones.
ZAL_INLINE VF32 AddSub(VF32 a, VF32 b) {
  return {_mm256_addsub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 AddSub(VF64 a, VF64 b) {
  return {_mm256_addsub_pd(a.raw, b.raw)};
}
// a + b in even lanes, a - b in odd ones: adding the negation is subtracting, bit for bit.
ZAL_INLINE VF32 SubAdd(VF32 a, VF32 b) {
  return a + Xor(b, BroadcastPair(0.0f, -0.0f));
}
ZAL_INLINE VF64 SubAdd(VF64 a, VF64 b) {
  return a + Xor(b, BroadcastPair(0.0, -0.0));
}

// ---- Math-function operations ------------------------------------------------------------------
// Bit operations, comparisons, selection, rounding, exponent fields and table lookups that the
// math kernels build on (engine/simd/vec_math-inl.h). The avx level has no 256-bit integer
// instructions: its exponent work runs on the two 128-bit halves.

inline constexpr bool kHasFma = ZAL_LEVEL_INDEX >= 4;
// Correct bits of ApproxReciprocal.
inline constexpr int kApproxReciprocalBits = 11;

ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm256_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm256_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm256_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm256_or_pd(a.raw, b.raw)};
}
// ~a & b.
ZAL_INLINE VF32 AndNot(VF32 a, VF32 b) {
  return {_mm256_andnot_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 AndNot(VF64 a, VF64 b) {
  return {_mm256_andnot_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm256_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm256_sqrt_pd(v.raw)};
}
// a * b + c, rounded once where the level has fused multiply-add.
ZAL_INLINE VF32 MulAdd(VF32 a, VF32 b, VF32 c) {
#if ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmadd_ps(a.raw, b.raw, c.raw)};
#else
  return a * b + c;
#endif
}
ZAL_INLINE VF64 MulAdd(VF64 a, VF64 b, VF64 c) {
#if ZAL_LEVEL_INDEX >= 4
  return {_mm256_fmadd_pd(a.raw, b.raw, c.raw)};
#else
  return a * b + c;
#endif
}

ZAL_INLINE MF32 Less(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF64 Less(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF32 LessEqual(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF64 LessEqual(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF32 Equal(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 Equal(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_EQ_OQ)};
}
// Set where either lane is a NaN.
ZAL_INLINE MF32 Unordered(VF32 a, VF32 b) {
  return {_mm256_cmp_ps(a.raw, b.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF64 Unordered(VF64 a, VF64 b) {
  return {_mm256_cmp_pd(a.raw, b.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {_mm256_and_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {_mm256_and_pd(a.raw, b.raw)};
}
// ~a & b.
ZAL_INLINE MF32 AndNot(MF32 a, MF32 b) {
  return {_mm256_andnot_ps(a.raw, b.raw)};
}
ZAL_INLINE MF64 AndNot(MF64 a, MF64 b) {
  return {_mm256_andnot_pd(a.raw, b.raw)};
}
// Bit i set where lane i is.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return static_cast<unsigned>(_mm256_movemask_ps(m.raw));
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return static_cast<unsigned>(_mm256_movemask_pd(m.raw));
}
// m ? a : b, lane by lane.
ZAL_INLINE VF32 Select(MF32 m, VF32 a, VF32 b) {
  return {_mm256_blendv_ps(b.raw, a.raw, m.raw)};
}
ZAL_INLINE VF64 Select(MF64 m, VF64 a, VF64 b) {
  return {_mm256_blendv_pd(b.raw, a.raw, m.raw)};
}

// The nearest integral value, ties to even (a NaN stays a NaN, and the sign of zero survives).
ZAL_INLINE VF32 RoundNearestEven(VF32 v) {
  return {_mm256_round_ps(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}
ZAL_INLINE VF64 RoundNearestEven(VF64 v) {
  return {_mm256_round_pd(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}

// The largest integral value not above v.
ZAL_INLINE VF32 Floor(VF32 v) {
  return {_mm256_floor_ps(v.raw)};
}
ZAL_INLINE VF64 Floor(VF64 v) {
  return {_mm256_floor_pd(v.raw)};
}

// 2^k for integral k of the normal exponent range.
ZAL_INLINE VF32 Pow2I(VF32 k) {
  // (k + 127) * 2^23 converts exactly to the bits of 2^k.
  const __m256 bits =
      _mm256_mul_ps(_mm256_add_ps(k.raw, _mm256_set1_ps(127.0f)), _mm256_set1_ps(8388608.0f));
  return {_mm256_castsi256_ps(_mm256_cvtps_epi32(bits))};
}
ZAL_INLINE VF64 Pow2I(VF64 k) {
  const __m128i k32 = _mm_add_epi32(_mm256_cvtpd_epi32(k.raw), _mm_set1_epi32(1023));
#if ZAL_LEVEL_INDEX >= 4
  return {_mm256_castsi256_pd(_mm256_slli_epi64(_mm256_cvtepu32_epi64(k32), 52))};
#else
  const __m128i lower = _mm_slli_epi64(_mm_cvtepu32_epi64(k32), 52);
  const __m128i upper = _mm_slli_epi64(_mm_cvtepu32_epi64(_mm_srli_si128(k32, 8)), 52);
  return {_mm256_castsi256_pd(_mm256_set_m128i(upper, lower))};
#endif
}
// The level lacks GetExponent and GetMantissa.
inline constexpr bool kHasExponentOps = false;
// The biased exponent field of a value with a clear sign bit, as a value: the field becomes the
// low bits of 2^23 (2^52), which is then subtracted.
ZAL_INLINE VF32 ExponentField(VF32 v) {
  // The field times 2^23 converts exactly.
  const __m256 field = _mm256_and_ps(v.raw, _mm256_castsi256_ps(_mm256_set1_epi32(0x7F800000)));
  return {_mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_castps_si256(field)),
                        _mm256_set1_ps(1.0f / 8388608.0f))};
}
ZAL_INLINE VF64 ExponentField(VF64 v) {
  const __m256d magic = _mm256_set1_pd(4503599627370496.0);
#if ZAL_LEVEL_INDEX >= 4
  const __m256i field = _mm256_srli_epi64(_mm256_castpd_si256(v.raw), 52);
#else
  const __m256i bits = _mm256_castpd_si256(v.raw);
  const __m256i field = _mm256_set_m128i(_mm_srli_epi64(_mm256_extractf128_si256(bits, 1), 52),
                                         _mm_srli_epi64(_mm256_castsi256_si128(bits), 52));
#endif
  return {_mm256_sub_pd(_mm256_or_pd(_mm256_castsi256_pd(field), magic), magic)};
}

// table[j] for the 16-entry table, j the low four bits of each lane's bit pattern (where a value
// offset by 1.5 * 2^52 holds its integer).
ZAL_INLINE VF64 LookupLowBits16(const double* table, VF64 v) {
#if ZAL_LEVEL_INDEX >= 4
  // No gather (microcoded on some processors): each quarter of the table is one register that a
  // permutation of 32-bit pairs reads at j mod 4; bits 2 and 3 of j, moved to the sign, choose.
  const __m256i bits = _mm256_castpd_si256(v.raw);
  const __m256i quarter = _mm256_and_si256(bits, _mm256_set1_epi64x(3));
  const __m256i pairs =
      _mm256_or_si256(_mm256_slli_epi32(_mm256_shuffle_epi32(quarter, _MM_SHUFFLE(2, 2, 0, 0)), 1),
                      _mm256_set1_epi64x(std::int64_t{1} << 32));
  const auto read = [&](int q) {
    return _mm256_castps_pd(_mm256_permutevar8x32_ps(
        _mm256_load_ps(reinterpret_cast<const float*>(table + 4 * q)), pairs));
  };
  const __m256d bit2 = _mm256_castsi256_pd(_mm256_slli_epi64(bits, 61));
  const __m256d low = _mm256_blendv_pd(read(0), read(1), bit2);
  const __m256d high = _mm256_blendv_pd(read(2), read(3), bit2);
  return {_mm256_blendv_pd(low, high, _mm256_castsi256_pd(_mm256_slli_epi64(bits, 60)))};
#else
  alignas(32) std::int64_t lanes[4];
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), _mm256_castpd_si256(v.raw));
  return {_mm256_setr_pd(table[lanes[0] & 15], table[lanes[1] & 15], table[lanes[2] & 15],
                         table[lanes[3] & 15])};
#endif
}
// The bits of v plus those of u shifted left by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 AddShiftedBits(VF64 v, VF64 u) {
  const __m256i a = _mm256_castpd_si256(v.raw);
  const __m256i b = _mm256_castpd_si256(u.raw);
#if ZAL_LEVEL_INDEX >= 4
  return {_mm256_castsi256_pd(_mm256_add_epi64(a, _mm256_slli_epi64(b, kShift)))};
#else
  const __m128i lower =
      _mm_add_epi64(_mm256_castsi256_si128(a), _mm_slli_epi64(_mm256_castsi256_si128(b), kShift));
  const __m128i upper = _mm_add_epi64(_mm256_extractf128_si256(a, 1),
                                      _mm_slli_epi64(_mm256_extractf128_si256(b, 1), kShift));
  return {_mm256_castsi256_pd(_mm256_set_m128i(upper, lower))};
#endif
}

// Float lanes widened: the lower and the upper half of v.
ZAL_INLINE VF64 LowerToF64(VF32 v) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(v.raw))};
}
ZAL_INLINE VF64 UpperToF64(VF32 v) {
  return {_mm256_cvtps_pd(_mm256_extractf128_ps(v.raw, 1))};
}
// Rounded to float and joined: lower's lanes first.
ZAL_INLINE VF32 JoinToF32(VF64 lower, VF64 upper) {
  return {_mm256_set_m128(_mm256_cvtpd_ps(upper.raw), _mm256_cvtpd_ps(lower.raw))};
}

// About 1/v to kApproxReciprocalBits bits, for |v| within the normal float range.
ZAL_INLINE VF64 ApproxReciprocal(VF64 v) {
  return {_mm256_cvtps_pd(_mm_rcp_ps(_mm256_cvtpd_ps(v.raw)))};
}

#if ZAL_LEVEL_INDEX >= 4
struct VS16 {
  __m256i raw;
  static constexpr int kLanes = 16;
};
struct VS32 {
  __m256i raw;
  static constexpr int kLanes = 8;
};
// The two halves of a widened VS16, in the lane order PackSat undoes (within 128-bit lanes).
struct VS32Pair {
  VS32 lo;
  VS32 hi;
};

ZAL_INLINE VS16 Load(const short* p) {
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
}
ZAL_INLINE void Store(short* p, VS16 v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v.raw);
}
ZAL_INLINE void Stream(short* p, VS16 v) {
  _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v.raw);
}
// Lanes from n on are clear.
ZAL_INLINE VS16 LoadN(const short* p, int n) {
  const int bytes = n * 2;
  if (bytes < 16) return {_mm256_zextsi128_si256(LoadPartial128(p, bytes))};
  return {_mm256_set_m128i(LoadPartial128(p + 8, bytes - 16),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
ZAL_INLINE void StoreN(short* p, VS16 v, int n) {
  StorePartial256(p, v.raw, n * 2);
}

ZAL_INLINE VS16 Broadcast(short x) {
  return {_mm256_set1_epi16(x)};
}
ZAL_INLINE VS32 Broadcast(std::int32_t x) {
  return {_mm256_set1_epi32(x)};
}

// Exact 32-bit products.
ZAL_INLINE VS32Pair MulWide(VS16 a, VS16 b) {
  const __m256i low = _mm256_mullo_epi16(a.raw, b.raw);
  const __m256i high = _mm256_mulhi_epi16(a.raw, b.raw);
  return {{_mm256_unpacklo_epi16(low, high)}, {_mm256_unpackhi_epi16(low, high)}};
}
ZAL_INLINE VS32Pair Widen(VS16 v) {
  return {{_mm256_srai_epi32(_mm256_unpacklo_epi16(v.raw, v.raw), 16)},
          {_mm256_srai_epi32(_mm256_unpackhi_epi16(v.raw, v.raw), 16)}};
}
// Saturates to 16 bits.
ZAL_INLINE VS16 PackSat(VS32Pair v) {
  return {_mm256_packs_epi32(v.lo.raw, v.hi.raw)};
}

ZAL_INLINE VS32 operator+(VS32 a, VS32 b) {
  return {_mm256_add_epi32(a.raw, b.raw)};
}
ZAL_INLINE VS32 operator&(VS32 a, VS32 b) {
  return {_mm256_and_si256(a.raw, b.raw)};
}
// Shift counts from 0 to 31, the same for every lane.
ZAL_INLINE VS32 ShiftRightArithmetic(VS32 v, int count) {
  return {_mm256_sra_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
ZAL_INLINE VS32 ShiftLeft(VS32 v, int count) {
  return {_mm256_sll_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
#endif

// Rows of a table read by loads that transpose, where a gather would be microcoded: the columns
// of rows of w = 2 doubles (16-byte aligned; row i for integral, in-range values i) or w = 4
// doubles (32-byte aligned, the fourth column padding; at in-range byte offsets). Rows 0 and 2, 1
// and 3 share a register, so that in-lane unpacks finish the transposition.
struct Columns2 {
  VF64 c0;
  VF64 c1;
};
struct Columns3 {
  VF64 c0;
  VF64 c1;
  VF64 c2;
};
ZAL_INLINE __m256d LoadTwoHalves(const double* lower, const double* upper) {
  return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(lower)), _mm_load_pd(upper), 1);
}
// Byte offsets of the rows, read back from memory: four loads cost less than four lane
// extractions, which compilers would otherwise make of a store and loads.
struct RowAddresses {
  alignas(32) std::int64_t offset[4];
  const double* Row(const double* table, int lane) const {
    const volatile std::int64_t* lanes = offset;
    return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + lanes[lane]);
  }
};
ZAL_INLINE Columns2 LookupRowsOf2(const double* table, VF64 index) {
  alignas(16) std::int32_t offset[4];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(offset),
                  _mm_slli_epi32(_mm256_cvttpd_epi32(index.raw), 4));
  const volatile std::int32_t* lanes = offset;
  const auto row = [&](int lane) {
    return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + lanes[lane]);
  };
  const __m256d a = LoadTwoHalves(row(0), row(2));
  const __m256d b = LoadTwoHalves(row(1), row(3));
  return {{_mm256_unpacklo_pd(a, b)}, {_mm256_unpackhi_pd(a, b)}};
}
// Rows of four at byte offsets given as the lanes' bit patterns (computed from a value's bits).
ZAL_INLINE Columns3 LookupRowsOf4(const double* table, VF64 offset_bits) {
  RowAddresses rows;
  _mm256_storeu_pd(reinterpret_cast<double*>(rows.offset), offset_bits.raw);
  const double* row0 = rows.Row(table, 0);
  const double* row1 = rows.Row(table, 1);
  const double* row2 = rows.Row(table, 2);
  const double* row3 = rows.Row(table, 3);
  const __m256d front02 = LoadTwoHalves(row0, row2);
  const __m256d front13 = LoadTwoHalves(row1, row3);
  const __m256d back02 = LoadTwoHalves(row0 + 2, row2 + 2);
  const __m256d back13 = LoadTwoHalves(row1 + 2, row3 + 2);
  return {{_mm256_unpacklo_pd(front02, front13)},
          {_mm256_unpackhi_pd(front02, front13)},
          {_mm256_unpacklo_pd(back02, back13)}};
}

// The lanes' bit patterns shifted right by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 ShiftRightBits(VF64 v) {
  const __m256i bits = _mm256_castpd_si256(v.raw);
#if ZAL_LEVEL_INDEX >= 4
  return {_mm256_castsi256_pd(_mm256_srli_epi64(bits, kShift))};
#else
  return {_mm256_castsi256_pd(
      _mm256_set_m128i(_mm_srli_epi64(_mm256_extractf128_si256(bits, 1), kShift),
                       _mm_srli_epi64(_mm256_castsi256_si128(bits), kShift)))};
#endif
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
