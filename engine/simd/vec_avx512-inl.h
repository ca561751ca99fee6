// The vector layer of the avx512 level: 512-bit registers, opmask registers for comparisons, and
// masked loads and stores for tails.
#pragma once

#include "engine/simd/vec_common-inl.h"

// GCC 12 takes the undefined pass-through operand inside its own AVX-512 shuffle intrinsics for an
// uninitialised variable (fixed in GCC 13). Scoped to these wrappers, which hold no variables.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

struct MF32 {
  __mmask16 raw = 0;
};
struct MF64 {
  __mmask8 raw = 0;
};

struct VF32 {
  __m512 raw;
  static constexpr int kLanes = 16;
  using Mask = MF32;
};
struct VF64 {
  __m512d raw;
  static constexpr int kLanes = 8;
  using Mask = MF64;
};
struct VS16 {
  __m512i raw;
  static constexpr int kLanes = 32;
};
struct VS32 {
  __m512i raw;
  static constexpr int kLanes = 16;
};
// The two halves of a widened VS16, in the lane order PackSat undoes (within 128-bit lanes).
struct VS32Pair {
  VS32 lo;
  VS32 hi;
};

// The first n lanes, n below the lane count.
ZAL_INLINE __mmask8 FirstLanes8(int n) {
  return static_cast<__mmask8>((1u << n) - 1);
}
ZAL_INLINE __mmask16 FirstLanes16(int n) {
  return static_cast<__mmask16>((1u << n) - 1);
}
ZAL_INLINE __mmask32 FirstLanes32(int n) {
  return static_cast<__mmask32>((1u << n) - 1);
}

ZAL_INLINE VF32 Load(const float* p) {
  return {_mm512_loadu_ps(p)};
}
ZAL_INLINE VF64 Load(const double* p) {
  return {_mm512_loadu_pd(p)};
}
ZAL_INLINE VS16 Load(const short* p) {
  return {_mm512_loadu_si512(p)};
}
ZAL_INLINE void Store(float* p, VF32 v) {
  _mm512_storeu_ps(p, v.raw);
}
ZAL_INLINE void Store(double* p, VF64 v) {
  _mm512_storeu_pd(p, v.raw);
}
ZAL_INLINE void Store(short* p, VS16 v) {
  _mm512_storeu_si512(p, v.raw);
}
// p aligned to the register.
ZAL_INLINE void Stream(float* p, VF32 v) {
  _mm512_stream_ps(p, v.raw);
}
ZAL_INLINE void Stream(double* p, VF64 v) {
  _mm512_stream_pd(p, v.raw);
}
ZAL_INLINE void Stream(short* p, VS16 v) {
  _mm512_stream_si512(reinterpret_cast<__m512i*>(p), v.raw);
}

// Lanes n and above hold 1, which no operation turns into an exception or a zero divisor.
ZAL_INLINE VF32 LoadN(const float* p, int n) {
  return {_mm512_mask_loadu_ps(_mm512_set1_ps(1.0f), FirstLanes16(n), p)};
}
ZAL_INLINE VF64 LoadN(const double* p, int n) {
  return {_mm512_mask_loadu_pd(_mm512_set1_pd(1.0), FirstLanes8(n), p)};
}
// Lanes from n on are clear.
ZAL_INLINE VS16 LoadN(const short* p, int n) {
  return {_mm512_maskz_loadu_epi16(FirstLanes32(n), p)};
}
ZAL_INLINE void StoreN(float* p, VF32 v, int n) {
  _mm512_mask_storeu_ps(p, FirstLanes16(n), v.raw);
}
ZAL_INLINE void StoreN(double* p, VF64 v, int n) {
  _mm512_mask_storeu_pd(p, FirstLanes8(n), v.raw);
}
ZAL_INLINE void StoreN(short* p, VS16 v, int n) {
  _mm512_mask_storeu_epi16(p, FirstLanes32(n), v.raw);
}

ZAL_INLINE VF32 Broadcast(float x) {
  return {_mm512_set1_ps(x)};
}
ZAL_INLINE VF64 Broadcast(double x) {
  return {_mm512_set1_pd(x)};
}
ZAL_INLINE VS16 Broadcast(short x) {
  return {_mm512_set1_epi16(x)};
}
ZAL_INLINE VS32 Broadcast(std::int32_t x) {
  return {_mm512_set1_epi32(x)};
}
// Built in registers: the 128-bit broadcast instruction takes only a memory operand, which would
// put the constant through a stack slot the kernel must realign.
ZAL_INLINE VF32 BroadcastPair(float even, float odd) {
  const __m128 pair = _mm_unpacklo_ps(_mm_set_ss(even), _mm_set_ss(odd));
  return {_mm512_castpd_ps(_mm512_broadcastsd_pd(_mm_castps_pd(pair)))};
}
ZAL_INLINE VF64 BroadcastPair(double even, double odd) {
  const __m512d pair = _mm512_castpd128_pd512(_mm_unpacklo_pd(_mm_set_sd(even), _mm_set_sd(odd)));
  return {_mm512_shuffle_f64x2(pair, pair, 0)};
}

// The same bits seen as float lanes.
ZAL_INLINE VF32 AsF32(VF64 v) {
  return {_mm512_castpd_ps(v.raw)};
}

ZAL_INLINE VF32 operator+(VF32 a, VF32 b) {
  return {_mm512_add_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator+(VF64 a, VF64 b) {
  return {_mm512_add_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator-(VF32 a, VF32 b) {
  return {_mm512_sub_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator-(VF64 a, VF64 b) {
  return {_mm512_sub_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator*(VF32 a, VF32 b) {
  return {_mm512_mul_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator*(VF64 a, VF64 b) {
  return {_mm512_mul_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 operator/(VF32 a, VF32 b) {
  return {_mm512_div_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 operator/(VF64 a, VF64 b) {
  return {_mm512_div_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Xor(VF32 a, VF32 b) {
  return {_mm512_xor_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Xor(VF64 a, VF64 b) {
  return {_mm512_xor_pd(a.raw, b.raw)};
}

ZAL_INLINE MF32 IsZero(VF32 v) {
  return {_mm512_cmp_ps_mask(v.raw, _mm512_setzero_ps(), _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 IsZero(VF64 v) {
  return {_mm512_cmp_pd_mask(v.raw, _mm512_setzero_pd(), _CMP_EQ_OQ)};
}
// Mask operations stay in the mask registers: a test of two masks is one kortest, where moving
// them to general registers first costs two transfers and an or.
ZAL_INLINE MF32 operator|(MF32 a, MF32 b) {
  return {_kor_mask16(a.raw, b.raw)};
}
ZAL_INLINE MF64 operator|(MF64 a, MF64 b) {
  return {_kor_mask8(a.raw, b.raw)};
}
ZAL_INLINE bool AnyLane(MF32 m) {
  return !_kortestz_mask16_u8(m.raw, m.raw);
}
ZAL_INLINE bool AnyLane(MF64 m) {
  return !_kortestz_mask8_u8(m.raw, m.raw);
}

// Pairs of lanes (0, 1), (2, 3) ... hold interleaved complex values.
ZAL_INLINE VF32 DupEven(VF32 v) {
  return {_mm512_moveldup_ps(v.raw)};
}
ZAL_INLINE VF64 DupEven(VF64 v) {
  return {_mm512_movedup_pd(v.raw)};
}
ZAL_INLINE VF32 DupOdd(VF32 v) {
  return {_mm512_movehdup_ps(v.raw)};
}
ZAL_INLINE VF64 DupOdd(VF64 v) {
  return {_mm512_permute_pd(v.raw, 0xFF)};
}
ZAL_INLINE VF32 SwapPairs(VF32 v) {
  return {_mm512_permute_ps(v.raw, _MM_SHUFFLE(2, 3, 0, 1))};
}
ZAL_INLINE VF64 SwapPairs(VF64 v) {
  return {_mm512_permute_pd(v.raw, 0x55)};
}
// The first (or second) lane of every pair of a and b, a's before b's within each 128-bit block:
// two registers of pairs split by lane. InterleaveLow and InterleaveHigh put them back.
ZAL_INLINE VF32 FirstOfPairs(VF32 a, VF32 b) {
  return {_mm512_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(2, 0, 2, 0))};
}
ZAL_INLINE VF64 FirstOfPairs(VF64 a, VF64 b) {
  return {_mm512_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 SecondOfPairs(VF32 a, VF32 b) {
  return {_mm512_shuffle_ps(a.raw, b.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ZAL_INLINE VF64 SecondOfPairs(VF64 a, VF64 b) {
  return {_mm512_unpackhi_pd(a.raw, b.raw)};
}
// Lanes of a and b alternating, from the low or the high half of each 128-bit block.
ZAL_INLINE VF32 InterleaveLow(VF32 a, VF32 b) {
  return {_mm512_unpacklo_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveLow(VF64 a, VF64 b) {
  return {_mm512_unpacklo_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 InterleaveHigh(VF32 a, VF32 b) {
  return {_mm512_unpackhi_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 InterleaveHigh(VF64 a, VF64 b) {
  return {_mm512_unpackhi_pd(a.raw, b.raw)};
}
// Set in the even lane of every pair whose two lanes are set.
ZAL_INLINE MF32 BothOfPair(MF32 m) {
  return {static_cast<__mmask16>(m.raw & (m.raw >> 1) & 0x5555)};
}
ZAL_INLINE MF64 BothOfPair(MF64 m) {
  return {static_cast<__mmask8>(m.raw & (m.raw >> 1) & 0x55)};
}

// a - b in even lanes, a + b in odd ones. There is no 512-bit addsub: the fused form with a
// factor of 1 rounds once, exactly as the plain addition or subtraction does.
ZAL_INLINE VF32 AddSub(VF32 a, VF32 b) {
  return {_mm512_fmaddsub_ps(a.raw, _mm512_set1_ps(1.0f), b.raw)};
}
ZAL_INLINE VF64 AddSub(VF64 a, VF64 b) {
  return {_mm512_fmaddsub_pd(a.raw, _mm512_set1_pd(1.0), b.raw)};
}
// a + b in even lanes, a - b in odd ones.
ZAL_INLINE VF32 SubAdd(VF32 a, VF32 b) {
  return {_mm512_fmsubadd_ps(a.raw, _mm512_set1_ps(1.0f), b.raw)};
}
ZAL_INLINE VF64 SubAdd(VF64 a, VF64 b) {
  return {_mm512_fmsubadd_pd(a.raw, _mm512_set1_pd(1.0), b.raw)};
}

// Exact 32-bit products.
ZAL_INLINE VS32Pair MulWide(VS16 a, VS16 b) {
  const __m512i low = _mm512_mullo_epi16(a.raw, b.raw);
  const __m512i high = _mm512_mulhi_epi16(a.raw, b.raw);
  return {{_mm512_unpacklo_epi16(low, high)}, {_mm512_unpackhi_epi16(low, high)}};
}
ZAL_INLINE VS32Pair Widen(VS16 v) {
  return {{_mm512_srai_epi32(_mm512_unpacklo_epi16(v.raw, v.raw), 16)},
          {_mm512_srai_epi32(_mm512_unpackhi_epi16(v.raw, v.raw), 16)}};
}
// Saturates to 16 bits.
ZAL_INLINE VS16 PackSat(VS32Pair v) {
  return {_mm512_packs_epi32(v.lo.raw, v.hi.raw)};
}

ZAL_INLINE VS32 operator+(VS32 a, VS32 b) {
  return {_mm512_add_epi32(a.raw, b.raw)};
}
ZAL_INLINE VS32 operator&(VS32 a, VS32 b) {
  return {_mm512_and_si512(a.raw, b.raw)};
}
// Shift counts from 0 to 31, the same for every lane.
ZAL_INLINE VS32 ShiftRightArithmetic(VS32 v, int count) {
  return {_mm512_sra_epi32(v.raw, _mm_cvtsi32_si128(count))};
}
ZAL_INLINE VS32 ShiftLeft(VS32 v, int count) {
  return {_mm512_sll_epi32(v.raw, _mm_cvtsi32_si128(count))};
}

// ---- Math-function operations ------------------------------------------------------------------
// Bit operations, comparisons, selection, rounding, exponent fields and table lookups that the
// math kernels build on (engine/simd/vec_math-inl.h).

inline constexpr bool kHasFma = true;
// Correct bits of ApproxReciprocal.
inline constexpr int kApproxReciprocalBits = 14;

ZAL_INLINE VF32 And(VF32 a, VF32 b) {
  return {_mm512_and_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 And(VF64 a, VF64 b) {
  return {_mm512_and_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Or(VF32 a, VF32 b) {
  return {_mm512_or_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 Or(VF64 a, VF64 b) {
  return {_mm512_or_pd(a.raw, b.raw)};
}
// ~a & b.
ZAL_INLINE VF32 AndNot(VF32 a, VF32 b) {
  return {_mm512_andnot_ps(a.raw, b.raw)};
}
ZAL_INLINE VF64 AndNot(VF64 a, VF64 b) {
  return {_mm512_andnot_pd(a.raw, b.raw)};
}
ZAL_INLINE VF32 Sqrt(VF32 v) {
  return {_mm512_sqrt_ps(v.raw)};
}
ZAL_INLINE VF64 Sqrt(VF64 v) {
  return {_mm512_sqrt_pd(v.raw)};
}
// a * b + c, rounded once.
ZAL_INLINE VF32 MulAdd(VF32 a, VF32 b, VF32 c) {
  return {_mm512_fmadd_ps(a.raw, b.raw, c.raw)};
}
ZAL_INLINE VF64 MulAdd(VF64 a, VF64 b, VF64 c) {
  return {_mm512_fmadd_pd(a.raw, b.raw, c.raw)};
}

ZAL_INLINE MF32 Less(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF64 Less(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_LT_OQ)};
}
ZAL_INLINE MF32 LessEqual(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF64 LessEqual(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_LE_OQ)};
}
ZAL_INLINE MF32 Equal(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_EQ_OQ)};
}
ZAL_INLINE MF64 Equal(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_EQ_OQ)};
}
// Set where either lane is a NaN.
ZAL_INLINE MF32 Unordered(VF32 a, VF32 b) {
  return {_mm512_cmp_ps_mask(a.raw, b.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF64 Unordered(VF64 a, VF64 b) {
  return {_mm512_cmp_pd_mask(a.raw, b.raw, _CMP_UNORD_Q)};
}
ZAL_INLINE MF32 operator&(MF32 a, MF32 b) {
  return {static_cast<__mmask16>(a.raw & b.raw)};
}
ZAL_INLINE MF64 operator&(MF64 a, MF64 b) {
  return {static_cast<__mmask8>(a.raw & b.raw)};
}
// ~a & b.
ZAL_INLINE MF32 AndNot(MF32 a, MF32 b) {
  return {static_cast<__mmask16>(~a.raw & b.raw)};
}
ZAL_INLINE MF64 AndNot(MF64 a, MF64 b) {
  return {static_cast<__mmask8>(~a.raw & b.raw)};
}
// Bit i set where lane i is.
ZAL_INLINE unsigned LaneBits(MF32 m) {
  return m.raw;
}
ZAL_INLINE unsigned LaneBits(MF64 m) {
  return m.raw;
}
// m ? a : b, lane by lane.
ZAL_INLINE VF32 Select(MF32 m, VF32 a, VF32 b) {
  return {_mm512_mask_blend_ps(m.raw, b.raw, a.raw)};
}
ZAL_INLINE VF64 Select(MF64 m, VF64 a, VF64 b) {
  return {_mm512_mask_blend_pd(m.raw, b.raw, a.raw)};
}

// The nearest integral value, ties to even (a NaN stays a NaN, and the sign of zero survives).
ZAL_INLINE VF32 RoundNearestEven(VF32 v) {
  return {_mm512_roundscale_ps(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}
ZAL_INLINE VF64 RoundNearestEven(VF64 v) {
  return {_mm512_roundscale_pd(v.raw, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}

// The largest integral value not above v.
ZAL_INLINE VF32 Floor(VF32 v) {
  return {_mm512_roundscale_ps(v.raw, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)};
}
ZAL_INLINE VF64 Floor(VF64 v) {
  return {_mm512_roundscale_pd(v.raw, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)};
}

// 2^k for integral k of the normal exponent range.
ZAL_INLINE VF32 Pow2I(VF32 k) {
  const __m512i biased = _mm512_add_epi32(_mm512_cvtps_epi32(k.raw), _mm512_set1_epi32(127));
  return {_mm512_castsi512_ps(_mm512_slli_epi32(biased, 23))};
}
ZAL_INLINE VF64 Pow2I(VF64 k) {
  const __m512i biased = _mm512_add_epi64(_mm512_cvtpd_epi64(k.raw), _mm512_set1_epi64(1023));
  return {_mm512_castsi512_pd(_mm512_slli_epi64(biased, 52))};
}
// The level has GetExponent and GetMantissa.
inline constexpr bool kHasExponentOps = true;
// floor(log2 |v|) as a value, subnormals included.
ZAL_INLINE VF32 GetExponent(VF32 v) {
  return {_mm512_getexp_ps(v.raw)};
}
ZAL_INLINE VF64 GetExponent(VF64 v) {
  return {_mm512_getexp_pd(v.raw)};
}
// |v| 2^-floor(log2 |v|), in [1, 2).
ZAL_INLINE VF32 GetMantissa(VF32 v) {
  return {_mm512_getmant_ps(v.raw, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_zero)};
}
ZAL_INLINE VF64 GetMantissa(VF64 v) {
  return {_mm512_getmant_pd(v.raw, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_zero)};
}
// |v| 2^-k in [3/4, 3/2), for the k that puts it there.
ZAL_INLINE VF32 GetMantissaNearOne(VF32 v) {
  return {_mm512_getmant_ps(v.raw, _MM_MANT_NORM_p75_1p5, _MM_MANT_SIGN_zero)};
}
// The biased exponent field of a value with a clear sign bit, as a value.
ZAL_INLINE VF32 ExponentField(VF32 v) {
  return {_mm512_cvtepi32_ps(_mm512_srli_epi32(_mm512_castps_si512(v.raw), 23))};
}
ZAL_INLINE VF64 ExponentField(VF64 v) {
  return {_mm512_cvtepi64_pd(_mm512_srli_epi64(_mm512_castpd_si512(v.raw), 52))};
}

// table[j] for the 16-entry table, j the low four bits of each lane's bit pattern (where a value
// offset by 1.5 * 2^52 holds its integer): two registers and one permutation.
ZAL_INLINE VF64 LookupLowBits16(const double* table, VF64 v) {
  return {_mm512_permutex2var_pd(_mm512_loadu_pd(table), _mm512_castpd_si512(v.raw),
                                 _mm512_loadu_pd(table + 8))};
}
// The bits of v plus those of u shifted left by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 AddShiftedBits(VF64 v, VF64 u) {
  return {_mm512_castsi512_pd(_mm512_add_epi64(
      _mm512_castpd_si512(v.raw), _mm512_slli_epi64(_mm512_castpd_si512(u.raw), kShift)))};
}

// Float lanes widened: the lower and the upper half of v.
ZAL_INLINE VF64 LowerToF64(VF32 v) {
  return {_mm512_cvtps_pd(_mm512_castps512_ps256(v.raw))};
}
ZAL_INLINE VF64 UpperToF64(VF32 v) {
  return {_mm512_cvtps_pd(_mm512_extractf32x8_ps(v.raw, 1))};
}
// Rounded to float and joined: lower's lanes first.
ZAL_INLINE VF32 JoinToF32(VF64 lower, VF64 upper) {
  return {_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(lower.raw)),
                             _mm512_cvtpd_ps(upper.raw), 1)};
}

// About 1/v to kApproxReciprocalBits bits, for |v| within the normal float range.
ZAL_INLINE VF64 ApproxReciprocal(VF64 v) {
  return {_mm512_rcp14_pd(v.raw)};
}

// Rows of a table read by loads that transpose, where a gather would be microcoded: the columns
// of rows of w = 2 doubles (16-byte aligned; row i for integral, in-range values i) or w = 4
// doubles (32-byte aligned, the fourth column padding; at in-range byte offsets). Rows of two: even
// rows in one register, odd in another, one unpack each column. Rows of four: rows 0 and 2, 1 and
// 3, 4 and 6, 5 and 7 share registers; unpacks and one 128-bit block shuffle per column finish.
struct Columns2 {
  VF64 c0;
  VF64 c1;
};
struct Columns3 {
  VF64 c0;
  VF64 c1;
  VF64 c2;
};
ZAL_INLINE __m512d LoadFourQuarters(const double* a, const double* b, const double* c,
                                    const double* d) {
  const __m256d low =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(a)), _mm_load_pd(b), 1);
  const __m256d high =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(c)), _mm_load_pd(d), 1);
  return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
}
ZAL_INLINE __m512d LoadTwoHalves(const double* lower, const double* upper) {
  return _mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_load_pd(lower)), _mm256_load_pd(upper),
                            1);
}
// Byte offsets of the rows, read back from memory: eight loads cost less than eight
// lane extractions, which compilers would otherwise make of a store and loads.
struct RowAddresses {
  alignas(64) std::int64_t offset[8];
  const double* Row(const double* table, int lane) const {
    const volatile std::int64_t* lanes = offset;
    return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + lanes[lane]);
  }
};
ZAL_INLINE Columns2 LookupRowsOf2(const double* table, VF64 index) {
  RowAddresses rows;
  _mm512_storeu_si512(rows.offset, _mm512_slli_epi64(_mm512_cvttpd_epi64(index.raw), 4));
  const __m512d even = LoadFourQuarters(rows.Row(table, 0), rows.Row(table, 2), rows.Row(table, 4),
                                        rows.Row(table, 6));
  const __m512d odd = LoadFourQuarters(rows.Row(table, 1), rows.Row(table, 3), rows.Row(table, 5),
                                       rows.Row(table, 7));
  return {{_mm512_unpacklo_pd(even, odd)}, {_mm512_unpackhi_pd(even, odd)}};
}
// Rows of four at byte offsets given as the lanes' bit patterns (computed from a value's bits).
ZAL_INLINE Columns3 LookupRowsOf4(const double* table, VF64 offset_bits) {
  RowAddresses rows;
  _mm512_storeu_pd(reinterpret_cast<double*>(rows.offset), offset_bits.raw);
  const __m512d rows02 = LoadTwoHalves(rows.Row(table, 0), rows.Row(table, 2));
  const __m512d rows13 = LoadTwoHalves(rows.Row(table, 1), rows.Row(table, 3));
  const __m512d rows46 = LoadTwoHalves(rows.Row(table, 4), rows.Row(table, 6));
  const __m512d rows57 = LoadTwoHalves(rows.Row(table, 5), rows.Row(table, 7));
  // Columns 0 and 2 interleaved, then 1 and 3, for rows 0 to 3 and 4 to 7.
  const __m512d even_low = _mm512_unpacklo_pd(rows02, rows13);
  const __m512d even_high = _mm512_unpacklo_pd(rows46, rows57);
  const __m512d odd_low = _mm512_unpackhi_pd(rows02, rows13);
  const __m512d odd_high = _mm512_unpackhi_pd(rows46, rows57);
  return {{_mm512_shuffle_f64x2(even_low, even_high, _MM_SHUFFLE(2, 0, 2, 0))},
          {_mm512_shuffle_f64x2(odd_low, odd_high, _MM_SHUFFLE(2, 0, 2, 0))},
          {_mm512_shuffle_f64x2(even_low, even_high, _MM_SHUFFLE(3, 1, 3, 1))}};
}

// The lanes' bit patterns shifted right by kShift, as 64-bit integers.
template <int kShift>
ZAL_INLINE VF64 ShiftRightBits(VF64 v) {
  return {_mm512_castsi512_pd(_mm512_srli_epi64(_mm512_castpd_si512(v.raw), kShift))};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
