// The math kernels, written once against the vector layer.
//
// Bit-identical at every level: Abs, Sqr, Sqrt, Inverse, Round (single IEEE operations, or exact
// ones). The others use fused multiply-adds where the level has them (avx2, avx512), so their
// results may differ between levels within the function's accuracy class; sse2 to avx give the same
// bits, and so do avx2 and avx512, except InverseF64Prec26 whose first approximation differs.
//
// Each transcendental kernel checks a whole vector for arguments outside its plain range with one
// comparison; only vectors holding such lanes take the full path, which also calls the error hook.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>
#include <limits>

#include "engine/core/error_hook.h"
#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/primitives/math/math_constants-inl.h"
#include "engine/simd/vec_math-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// Vectors large enough to stream run out of line (see the arithmetic kernels).
template <class T, class Op, class... Sources>
ZAL_NOINLINE EngStatus MapLarge(Op op, T* dst, int n, Sources... src) {
  Map<true>(op, dst, n, src...);
  return engStsNoErr;
}

// What a kernel does with NaNs: every NaN it computes is the default NaN, except where a NaN is
// only moved (Abs) or passed on quietened by contract (the double Ln).
enum class NaNs { kDefault, kPassedOn };

template <NaNs kNaNs = NaNs::kDefault, class T, class Op, class... Sources>
ZAL_INLINE EngStatus Each(Op op, T* dst, int n, Sources... src) {
  if (const EngStatus status = Check(n, src..., dst)) return status;
  if constexpr (kNaNs == NaNs::kDefault) {
    if (MayStream<T>(n)) return MapLarge(WithDefaultNaN{op}, dst, n, src...);
    Map<false>(WithDefaultNaN{op}, dst, n, src...);
  } else {
    if (MayStream<T>(n)) return MapLarge(op, dst, n, src...);
    Map<false>(op, dst, n, src...);
  }
  return engStsNoErr;
}

// Reports the lanes set in `lanes` of the vector starting at element `first`.
ZAL_NOINLINE void Report(unsigned lanes, std::ptrdiff_t first, EngStatus code, const char* tag) {
  for (int lane = 0; lanes; ++lane, lanes >>= 1) {
    if (lanes & 1) ReportMathError(static_cast<int>(first + lane), code, tag);
  }
}

// ---- Exact functions ----------------------------------------------------------------------------

constexpr auto kAbs = [](auto x) { return Abs(x); };
constexpr auto kSqr = [](auto x) { return x * x; };
constexpr auto kSqrt = [](auto x) { return Sqrt(x); };
constexpr auto kInverse = [](auto x) { return Constant<decltype(x)>(1.0) / x; };

// Halves away from zero: the nearest-even neighbour of |x| is one too small exactly when |x| is
// half past it. The sign goes back on last, so -0.4 gives -0.
constexpr auto kRound = [](auto x) {
  using V = decltype(x);
  const V magnitude = Abs(x);
  const V even = RoundNearestEven(magnitude);
  const V up =
      Select(Equal(magnitude - even, Constant<V>(0.5)), Constant<V>(1.0), Constant<V>(0.0));
  return Or(even + up, SignOf(x));
};

// ---- Exponential --------------------------------------------------------------------------------

// Float: e^x = 2^k e^r, r = x - k ln2 (Cody and Waite), e^r = 1 + r + r^2 q(r). x - k ln2_high
// is exact; the low part joins the small terms, so that r itself is never rounded into the sum.
ZAL_INLINE VF32 ExpF32Reduced(VF32 x, VF32& k) {
  k = RoundNearestEven(x * Constant<VF32>(1.4426950408889634));
  const VF32 r_high = MulAdd(k, Constant<VF32>(-kLn2HighF32), x);
  const VF32 r_low = k * Constant<VF32>(-kLn2LowF32);
  const VF32 r = r_high + r_low;
  return (r_high + MulAdd(r * r, Polynomial(r, kExpF32), r_low)) + Constant<VF32>(1.0);
}

constexpr auto kExpF32Op = [](VF32 x) {
  // Results normal: one power of two.
  if (AllLanes<VF32>(LessEqual(Abs(x), Constant<VF32>(87.0)))) {
    VF32 k;
    const VF32 p = ExpF32Reduced(x, k);
    return p * Pow2I(k);
  }
  // Overflow to +inf, underflow through the subnormals to +0, NaN kept.
  VF32 clamped = Select(Less(x, Constant<VF32>(-104.0)), Constant<VF32>(-104.0), x);
  clamped = Select(Less(Constant<VF32>(89.0), clamped), Constant<VF32>(89.0), clamped);
  VF32 k;
  const VF32 p = ExpF32Reduced(clamped, k);
  return Select(Unordered(x, x), x + x, ScaleWide(p, k));
};

// Double, the power function's: e^x = 2^e 2^(j/128) e^r, r = x - (128 e + j) ln2/128,
// |r| <= ln2/256, with the table entry's tail folded into the polynomial. `extra` is a small
// correction to x (the low part of a double-double argument, or 0).
template <std::size_t N>
ZAL_INLINE VF64 ExpF64Core(VF64 x, VF64 extra, const double (&tail)[N], bool wide) {
  const VF64 kd = RoundNearestEven(x * Constant<VF64>(kExpSteps));
  VF64 r = MulAdd(kd, Constant<VF64>(-kExpStepHigh), x);
  r = MulAdd(kd, Constant<VF64>(-kExpStepLow), r) + extra;
  const VF64 e = Floor(kd * Constant<VF64>(1.0 / 128));
  const Columns2 entry =
      LookupRowsOf2(reinterpret_cast<const double*>(kExpTable), kd - e * Constant<VF64>(128.0));
  const VF64 power = entry.c0;
  const VF64 q = MulAdd(r * r, Polynomial(r, tail), r) + entry.c1;
  // Scaled last: the small product power q must not fall below the normal range first.
  const VF64 value = MulAdd(power, q, power);
  return wide ? ScaleWide(value, e) : value * Pow2I(e);
}

// e^x for every x: overflow, subnormal results, NaN.
template <std::size_t N>
ZAL_INLINE VF64 ExpF64Wide(VF64 x, VF64 extra, const double (&tail)[N]) {
  // NaN lanes compute e^0: their table index must stay in range.
  VF64 clamped = Select(Unordered(x, x), Constant<VF64>(0.0), x);
  clamped = Select(Less(clamped, Constant<VF64>(-746.0)), Constant<VF64>(-746.0), clamped);
  clamped = Select(Less(Constant<VF64>(710.0), clamped), Constant<VF64>(710.0), clamped);
  // Beyond the range the correction is meaningless, and may be an overflowed product's NaN.
  const VF64 correction =
      Select(LessEqual(Abs(x), Constant<VF64>(746.0)), extra, Constant<VF64>(0.0));
  return Select(Unordered(x, x), x + x, ExpF64Core(clamped, correction, tail, true));
}

// Double, 16 steps: e^x = 2^e 2^(j/16) e^r, r = x - (16 e + j) ln2/16, |r| <= ln2/32. Adding
// 1.5 2^52 to x 16/ln2 rounds it and leaves 16 e + j in the low bits of z, which index the table
// (one permutation of two registers at avx512) and, shifted into the exponent field, scale the
// entry by 2^e.
struct ExpF64Reduction {
  VF64 z;
  VF64 r;
};
ZAL_INLINE ExpF64Reduction ReduceExpF64(VF64 x) {
  const VF64 shift = Constant<VF64>(0x1.8p52);
  const VF64 z = MulAdd(x, Constant<VF64>(kExp16Steps), shift);
  const VF64 kd = z - shift;
  const VF64 r_high = MulAdd(kd, Constant<VF64>(-kExp16StepHigh), x);
  return {z, MulAdd(kd, Constant<VF64>(-kExp16StepLow), r_high)};
}

// e^r - 1 plus the table entry's tail.
ZAL_INLINE VF64 ExpF64Minus1(ExpF64Reduction a) {
  const VF64 r = a.r;
  return MulAdd(r * r, Polynomial(r, kExp16Tail7), r + LookupLowBits16(kExp16Tails, a.z));
}

constexpr auto kExpF64Op = [](VF64 x) {
  // Scaled first: within +-700 the product power q stays normal (without fused multiply-adds it
  // is rounded on its own).
  if (AllLanes<VF64>(LessEqual(Abs(x), Constant<VF64>(700.0)))) {
    const ExpF64Reduction a = ReduceExpF64(x);
    const VF64 power = AddShiftedBits<48>(LookupLowBits16(kExp16Powers, a.z), a.z);
    return MulAdd(power, ExpF64Minus1(a), power);
  }
  // Overflow, subnormal results, NaN (whose lanes compute e^0): 2^(j/16) alone, then scaled in
  // two steps.
  VF64 clamped = Select(Unordered(x, x), Constant<VF64>(0.0), x);
  clamped = Select(Less(clamped, Constant<VF64>(-746.0)), Constant<VF64>(-746.0), clamped);
  clamped = Select(Less(Constant<VF64>(710.0), clamped), Constant<VF64>(710.0), clamped);
  const ExpF64Reduction a = ReduceExpF64(clamped);
  const VF64 shift = Constant<VF64>(0x1.8p52);
  const VF64 e = Floor((a.z - shift) * Constant<VF64>(1.0 / 16));
  const VF64 power =
      AddShiftedBits<48>(LookupLowBits16(kExp16Powers, a.z), a.z - e * Constant<VF64>(16.0));
  return Select(Unordered(x, x), x + x, ScaleWide(MulAdd(power, ExpF64Minus1(a), power), e));
};

// ---- Float logarithm
// ------------------------------------------------------------------------------

// ln x = k ln2 + ln(1 + f) for positive normal x, x = 2^k (1 + f). The class picks the form: for
// full accuracy, |f| <= sqrt(2) - 1 and a cubic tail f^3 p(f) after f - f^2/2; the reduced
// classes take f in [-1/4, 1/2) from a cheaper split (x up to 2^127) and f + f^2 q(f) for 24
// bits, f p(f) for 21 and 11.
enum class LnF32Class { kFull, kBits24, kBits21, kBits11 };

template <LnF32Class kClass>
inline constexpr bool kLnF32NearOne = kClass != LnF32Class::kFull;

template <LnF32Class kClass>
ZAL_INLINE ExponentSplit<VF32> LnF32Split(VF32 x) {
  if constexpr (kLnF32NearOne<kClass>) {
    return SplitExponentNearOne(x);
  } else {
    return SplitExponent(x);
  }
}

template <LnF32Class kClass>
ZAL_INLINE VF32 LnF32FromSplit(VF32 k, VF32 m) {
  const VF32 f = m - Constant<VF32>(1.0);
  const VF32 ln2 = Constant<VF32>(0.6931471805599453);
  if constexpr (kClass == LnF32Class::kFull) {
    const VF32 f2 = f * f;
    const VF32 tail = MulAdd(f2 * f, Polynomial(f, kLnF32Cubic), Constant<VF32>(-0.5) * f2);
    // The small terms first, then f, then the exact k ln2_high.
    return MulAdd(k, Constant<VF32>(kLn2HighF32), f + MulAdd(k, Constant<VF32>(kLn2LowF32), tail));
  } else if constexpr (kClass == LnF32Class::kBits24) {
    // f itself stays exact; only the smaller f^2 q(f) rounds before it joins.
    return MulAdd(k, ln2, MulAdd(f * f, Polynomial(f, kLnF32Square24), f));
  } else {
    const VF32 p =
        kClass == LnF32Class::kBits21 ? Polynomial(f, kLnF32Over21) : Polynomial(f, kLnF32Over11);
    return MulAdd(k, ln2, f * p);
  }
}

template <LnF32Class kClass>
struct LnF32Op {
  ZAL_INLINE VF32 operator()(VF32 x) const {
    const VF32 min_normal = Constant<VF32>(std::numeric_limits<float>::min());
    const VF32 max_finite = Constant<VF32>(std::numeric_limits<float>::max());
    // The reduced classes' split takes x up to 2^127; larger x are halved below.
    const VF32 top = kLnF32NearOne<kClass> ? Constant<VF32>(0x1p127) : max_finite;
    const auto plain = LessEqual(min_normal, x) & LessEqual(x, top);
    if (AllLanes<VF32>(plain)) {
      const ExponentSplit<VF32> split = LnF32Split<kClass>(x);
      return LnF32FromSplit<kClass>(split.k, split.m);
    }
    // Subnormals scaled by 2^24 into the normal range; every other lane computes ln 1.
    const VF32 zero = Constant<VF32>(0.0);
    const auto subnormal = AndNot(LessEqual(x, zero), Less(x, min_normal));
    const auto large = AndNot(LessEqual(x, top), LessEqual(x, max_finite));
    const auto finite = plain | subnormal | large;
    VF32 scaled = Select(subnormal, x * Constant<VF32>(16777216.0), x);
    scaled = Select(large, x * Constant<VF32>(0.5), scaled);
    const VF32 offset =
        Select(subnormal, Constant<VF32>(-24.0), Select(large, Constant<VF32>(1.0), zero));
    const ExponentSplit<VF32> split =
        LnF32Split<kClass>(Select(finite, scaled, Constant<VF32>(1.0)));
    VF32 y = LnF32FromSplit<kClass>(split.k + offset, split.m);
    const VF32 nan = FromBits<VF32>(0xFFC00000u);
    y = Select(Less(x, zero), nan, y);
    y = Select(Equal(x, zero), Constant<VF32>(-std::numeric_limits<float>::infinity()), y);
    y = Select(Less(max_finite, x), x, y);
    return Select(Unordered(x, x), x + x, y);
  }
};

// ---- Double logarithm
// -----------------------------------------------------------------------------

// ln x = e ln2 - ln c + ln(1 + r), r = m c - 1 exact, as hi + lo: hi = e ln2_high - ln c_high + r
// (whose first sum is exact and whose second Fast2Sum captures), lo the rest. For positive normal
// x, with `offset` added to the exponent. The tail polynomial is ln(1+r) - r over r^2, or, for the
// double-double result, (ln(1+r) - r + r^2/2) over r^3.
template <bool kDoubleDouble = false, std::size_t N>
ZAL_INLINE Sum<VF64> LnF64Parts(VF64 x, VF64 offset, const double (&tail)[N]) {
  const VF64 one = Constant<VF64>(1.0);
  const VF64 m = Or(And(x, FromBits<VF64>(0x000FFFFFFFFFFFFFu)), one);
  // The offset joins the bias: a constant zero folds away.
  const VF64 e = ExponentField(x) - (Constant<VF64>(1023.0) - offset);
  // The index rounds the top ten fraction bits t to an even number of 1024ths: i = (t + 1) >> 1,
  // m_i = 1 + i/512. Worked on the bits, as the row's byte offset 32 i = ((16 t + 16) & ~31);
  // shifted into the fraction it makes m_i (i = 512 carries into the exponent: m_i = 2).
  const VF64 t16 = And(ShiftRightBits<38>(x), FromBits<VF64>(0x3FF0u));
  const VF64 row = And(AddShiftedBits<0>(t16, FromBits<VF64>(16u)), FromBits<VF64>(~31ull));
  const VF64 m_i = AddShiftedBits<38>(one, row);
  const Columns3 entry = LookupRowsOf4(reinterpret_cast<const double*>(kLnTable), row);
  const VF64 c = entry.c0;
  const VF64 r = MulAdd(m - m_i, c, MulAdd(m_i, c, Negate(one)));
  const VF64 w = MulAdd(e, Constant<VF64>(kLn2High), entry.c1);
  const Sum<VF64> head = FastTwoSum(w, r);
  const VF64 low = MulAdd(e, Constant<VF64>(kLn2Low), entry.c2);
  const VF64 r2 = r * r;
  if constexpr (kDoubleDouble) {
    // -r^2/2 may be 2^-9 of the result where hi cancels: it joins hi exactly, its rounding
    // error the low part.
    const Sum<VF64> sum = FastTwoSum(head.hi, Constant<VF64>(-0.5) * r2);
    const VF64 r2_error = ProductError(r, r, r2);
    return {sum.hi, head.lo + sum.lo + low +
                        MulAdd(Constant<VF64>(-0.5), r2_error, r2 * r * Polynomial(r, tail))};
  } else {
    return {head.hi, head.lo + low + r2 * Polynomial(r, tail)};
  }
}

// The double logarithm's special lanes, in order: ±0 gives -inf (pole, reported), +inf itself,
// NaN quietened, negative the default NaN (domain, reported), subnormal scaled by 2^52. Out of
// line, so that the plain path keeps its constants in registers.
ZAL_NOINLINE void LnF64Special(const double* xs, double* out, std::ptrdiff_t first) {
  const VF64 x = Load(xs);
  const VF64 min_normal = Constant<VF64>(std::numeric_limits<double>::min());
  const VF64 max_finite = Constant<VF64>(std::numeric_limits<double>::max());
  const VF64 zero = Constant<VF64>(0.0);
  const auto normal = LessEqual(min_normal, x) & LessEqual(x, max_finite);
  const auto pole = Equal(x, zero);
  const auto domain = Less(x, zero);
  const auto subnormal = AndNot(LessEqual(x, zero), Less(x, min_normal));
  const VF64 scaled = Select(subnormal, x * Constant<VF64>(4503599627370496.0), x);
  const Sum<VF64> ln = LnF64Parts(Select(normal | subnormal, scaled, Constant<VF64>(1.0)),
                                  Select(subnormal, Constant<VF64>(-52.0), zero), kLog1pTail6);
  VF64 y = ln.hi + ln.lo;
  y = Select(domain, FromBits<VF64>(0xFFF8000000000000u), y);
  y = Select(pole, Constant<VF64>(-std::numeric_limits<double>::infinity()), y);
  y = Select(Less(max_finite, x), x, y);
  // x * 1 quietens a NaN, but compilers may fold the product away: set the quiet bit instead.
  y = Select(Unordered(x, x), Or(x, FromBits<VF64>(0x0008000000000000u)), y);
  Store(out, y);
  if (const unsigned lanes = LaneBits(pole)) Report(lanes, first, engStsSingularity, "Ln64");
  if (const unsigned lanes = LaneBits(domain)) Report(lanes, first, engStsDomain, "Ln64");
}

struct LnF64Op {
  static constexpr bool kTakesIndex = true;
  ZAL_INLINE VF64 operator()(std::ptrdiff_t first, VF64 x) const {
    const VF64 min_normal = Constant<VF64>(std::numeric_limits<double>::min());
    const VF64 max_finite = Constant<VF64>(std::numeric_limits<double>::max());
    if (AllLanes<VF64>(LessEqual(min_normal, x) & LessEqual(x, max_finite))) {
      const Sum<VF64> ln = LnF64Parts(x, Constant<VF64>(0.0), kLog1pTail6);
      return ln.hi + ln.lo;
    }
    alignas(64) double xs[VF64::kLanes];
    alignas(64) double out[VF64::kLanes];
    Store(xs, x);
    LnF64Special(xs, out, first);
    return Load(out);
  }
};

// ---- Power -------------------------------------------------------------------------------------

// |x|^y = e^(y ln|x|). Accurate: ln|x| as a double-double, the product y ln|x| too, so that the
// exponential's argument carries about 2^-64 relative error. Light: 2^(y log2|x|) in plain doubles
// from 16-entry tables and short polynomials, within about 2^-34 (most of it the logarithm's
// error scaled by |y log2 x|, which reaches 1075 only in double).
enum class PowClass { kAccurate, kLight };

// The exponential's argument stays within +-708 in all but extreme cases, which take the wide path.
template <std::size_t N>
ZAL_INLINE VF64 ExpOfProduct(VF64 product, VF64 product_low, const double (&tail)[N]) {
  if (AllLanes<VF64>(LessEqual(Abs(product), Constant<VF64>(708.0)))) {
    return ExpF64Core(product, product_low, tail, false);
  }
  return ExpF64Wide(product, product_low, tail);
}

// log2 x for positive normal x, with `offset` added to the exponent: x = 2^e m, m within 1/32 of
// c = 1 + i/16, log2 x = e + log2 c + log2(1 + r), r = m/c - 1. Mantissas within 1/32 of 2 join
// the next binade's first interval, centred on 1, so that nothing cancels near x = 1; there
// r = m - 1 is exact, elsewhere |log2 x| > 1/45 and the rounding of r is far below the target.
ZAL_INLINE VF64 Log2Light(VF64 x, VF64 offset) {
  const VF64 one = Constant<VF64>(1.0);
  const VF64 in_binade = Or(And(x, FromBits<VF64>(0x000FFFFFFFFFFFFFu)), one);
  const auto fold = LessEqual(Constant<VF64>(1.96875), in_binade);
  const VF64 m = Select(fold, in_binade * Constant<VF64>(0.5), in_binade);
  // The offset joins the bias: a constant zero folds away.
  const VF64 bias = Select(fold, Constant<VF64>(1022.0) - offset, Constant<VF64>(1023.0) - offset);
  const VF64 e = ExponentField(x) - bias;
  // (m - 1) 16 is exact; adding 1.5 2^52 rounds it to the index i, left in the low bits.
  const VF64 i = MulAdd(m - one, Constant<VF64>(16.0), Constant<VF64>(0x1.8p52));
  const VF64 r = MulAdd(m, LookupLowBits16(kLog2Inverse, i), Negate(one));
  return MulAdd(r, Polynomial(r, kLog2OverR), e + LookupLowBits16(kLog2Centre, i));
}

// 2^t = 2^e 2^(j/16) 2^f, |f| <= 1/32 (f exact), 2^e 2^(j/16) built from the exponential's table
// by adding k's low bits to its exponent field; where `wide`, 2^(j/16) alone, scaled in two steps.
ZAL_INLINE VF64 Exp2LightCore(VF64 t, bool wide) {
  // t 16 is exact; adding 1.5 2^52 rounds it to k and leaves k mod 16 in the low bits.
  const VF64 shift = Constant<VF64>(0x1.8p52);
  const VF64 z = MulAdd(t, Constant<VF64>(16.0), shift);
  const VF64 k = z - shift;
  const VF64 f = MulAdd(k, Constant<VF64>(-1.0 / 16), t);
  const VF64 growth = f * Polynomial(f, kExp2M1OverF);
  if (!wide) {
    const VF64 power = AddShiftedBits<48>(LookupLowBits16(kExp16Powers, z), z);
    return MulAdd(power, growth, power);
  }
  const VF64 e = Floor(k * Constant<VF64>(1.0 / 16));
  const VF64 power =
      AddShiftedBits<48>(LookupLowBits16(kExp16Powers, z), z - e * Constant<VF64>(16.0));
  return ScaleWide(MulAdd(power, growth, power), e);
}

// Beyond +-1000 the argument is clamped where the result has long overflowed or vanished.
ZAL_INLINE VF64 Exp2Light(VF64 t) {
  if (AllLanes<VF64>(LessEqual(Abs(t), Constant<VF64>(1000.0)))) return Exp2LightCore(t, false);
  VF64 clamped = Select(Less(t, Constant<VF64>(-1100.0)), Constant<VF64>(-1100.0), t);
  clamped = Select(Less(Constant<VF64>(1100.0), clamped), Constant<VF64>(1100.0), clamped);
  return Exp2LightCore(clamped, true);
}

template <PowClass kClass>
ZAL_INLINE VF64 PowMagnitude(VF64 ax, VF64 offset, VF64 y) {
  if constexpr (kClass == PowClass::kAccurate) {
    const Sum<VF64> parts = LnF64Parts<true>(ax, offset, kLog1pCubic7);
    const Sum<VF64> ln = FastTwoSum(parts.hi, parts.lo);
    const VF64 product = y * ln.hi;
    return ExpOfProduct(product, MulAdd(y, ln.lo, ProductError(y, ln.hi, product)), kExpTail5);
  } else {
    return Exp2Light(y * Log2Light(ax, offset));
  }
}

// Every IEEE special case of pow, for a vector holding at least one lane outside the plain range
// (x positive normal, |y| < 2^1000). Reports poles (±0 to a negative power) and
// domain errors (a negative x to a finite non-integral power) when `tag` is not null.
template <PowClass kClass>
ZAL_NOINLINE void PowSpecial(const double* xs, const double* ys, double* out, std::ptrdiff_t first,
                             const char* tag) {
  const VF64 x = Load(xs);
  const VF64 y = Load(ys);
  const VF64 zero = Constant<VF64>(0.0);
  const VF64 one = Constant<VF64>(1.0);
  const VF64 inf = Constant<VF64>(std::numeric_limits<double>::infinity());
  const VF64 min_normal = Constant<VF64>(std::numeric_limits<double>::min());
  const VF64 ax = Abs(x);
  const VF64 ay = Abs(y);
  const auto x_normal = LessEqual(min_normal, ax) & Less(ax, inf);
  const auto x_subnormal = AndNot(Equal(ax, zero), Less(ax, min_normal));
  const auto y_finite = Less(ay, inf);
  const VF64 base = Select(x_normal, ax, Select(x_subnormal, ax * Constant<VF64>(0x1p52), one));
  const VF64 offset = Select(x_subnormal, Constant<VF64>(-52.0), zero);
  VF64 r = PowMagnitude<kClass>(base, offset, Select(y_finite, y, zero));

  // Integral y (every |y| >= 2^53 is, and even); odd ones keep the sign of a negative x.
  const auto y_integral = Equal(RoundNearestEven(y), y) & y_finite;
  const VF64 half_y = y * Constant<VF64>(0.5);
  const auto y_odd = AndNot(Equal(RoundNearestEven(half_y), half_y), y_integral);
  const auto x_negative = Less(x, zero);
  // The sign bit decides for zeros too: (-0)^-3 is -inf.
  const auto negate = Less(Or(SignOf(x), one), zero) & y_odd;
  r = Select(negate, Negate(r), r);
  const auto domain = AndNot(y_integral, x_negative & Less(ax, inf) & y_finite);
  r = Select(domain, FromBits<VF64>(0xFFF8000000000000u), r);

  // x = ±0 or ±inf: 0 or inf by the sign of y (inverted for inf), signed for odd y.
  const auto y_negative = Less(y, zero);
  const auto x_zero = Equal(ax, zero);
  const auto x_inf = Equal(ax, inf);
  const auto to_inf = (x_zero & y_negative) | (x_inf & Less(zero, y));
  const VF64 extreme = Select(to_inf, inf, zero);
  r = Select(x_zero | x_inf, Select(negate, Negate(extreme), extreme), r);

  // y = ±inf: 1 for |x| = 1, else 0 or inf by whether |x| and |y|'s sign grow together.
  const auto y_inf = Equal(ay, inf);
  const auto grows = AndNot(y_negative, Less(one, ax)) | (y_negative & Less(ax, one));
  r = Select(y_inf, Select(Equal(ax, one), one, Select(grows, inf, zero)), r);

  r = Select(Unordered(x, y), x + y, r);
  r = Select(Equal(y, zero) | Equal(x, one), one, r);
  Store(out, r);
  if (tag) {
    if (const unsigned lanes = LaneBits(x_zero & y_negative)) {
      Report(lanes, first, engStsSingularity, tag);
    }
    if (const unsigned lanes = LaneBits(domain)) Report(lanes, first, engStsDomain, tag);
  }
}

template <PowClass kClass>
ZAL_INLINE VF64 PowF64Vector(VF64 x, VF64 y, std::ptrdiff_t first, const char* tag) {
  const VF64 min_normal = Constant<VF64>(std::numeric_limits<double>::min());
  const VF64 inf = Constant<VF64>(std::numeric_limits<double>::infinity());
  // |y| < 2^1000 keeps the product's error term (Dekker's splitting of y) finite.
  const auto plain =
      LessEqual(min_normal, x) & Less(x, inf) & Less(Abs(y), Constant<VF64>(0x1p1000));
  if (AllLanes<VF64>(plain)) return PowMagnitude<kClass>(x, Constant<VF64>(0.0), y);
  alignas(64) double xs[VF64::kLanes];
  alignas(64) double ys[VF64::kLanes];
  alignas(64) double out[VF64::kLanes];
  Store(xs, x);
  Store(ys, y);
  PowSpecial<kClass>(xs, ys, out, first, tag);
  return Load(out);
}

template <PowClass kClass>
struct PowF64Op {
  static constexpr bool kTakesIndex = true;
  ZAL_INLINE VF64 operator()(std::ptrdiff_t first, VF64 x, VF64 y) const {
    return PowF64Vector<kClass>(x, y, first, "Pow64");
  }
};

// Float: the light double power on each half; float subnormals are normal doubles. One check
// sends the whole vector down the plain path when every base is positive and finite and every
// exponent finite. Forced inline into the loop, as a lambda of this size is not.
struct PowF32Op {
  ZAL_INLINE VF32 operator()(VF32 x, VF32 y) const {
    const VF32 inf = Constant<VF32>(std::numeric_limits<float>::infinity());
    const auto plain = Less(Constant<VF32>(0.0), x) & Less(x, inf) & Less(Abs(y), inf);
    if (AllLanes<VF32>(plain)) {
      const VF64 zero = Constant<VF64>(0.0);
      return JoinToF32(PowMagnitude<PowClass::kLight>(LowerToF64(x), zero, LowerToF64(y)),
                       PowMagnitude<PowClass::kLight>(UpperToF64(x), zero, UpperToF64(y)));
    }
    return JoinToF32(PowF64Vector<PowClass::kLight>(LowerToF64(x), LowerToF64(y), 0, nullptr),
                     PowF64Vector<PowClass::kLight>(UpperToF64(x), UpperToF64(y), 0, nullptr));
  }
};

// ---- Reciprocal, 26 bits
// -------------------------------------------------------------------------

// The level's approximate reciprocal, refined by Newton steps y += y (1 - x y), each of which
// doubles the correct bits. Magnitudes outside the normal float range divide.
constexpr auto kInverseF64Prec26Op = [](VF64 x) {
  const VF64 ax = Abs(x);
  const auto in_range =
      LessEqual(Constant<VF64>(0x1p-125), ax) & LessEqual(ax, Constant<VF64>(0x1p125));
  if (!AllLanes<VF64>(in_range)) return Constant<VF64>(1.0) / x;
  const VF64 one = Constant<VF64>(1.0);
  VF64 y = ApproxReciprocal(x);
  for (int bits = kApproxReciprocalBits; bits < 27; bits *= 2)
    y = MulAdd(y, MulAdd(Negate(x), y, one), y);
  return y;
};

}  // namespace

EngStatus AbsF32(const float* s, float* d, int n) {
  return Each<NaNs::kPassedOn>(kAbs, d, n, s);
}
EngStatus AbsF64(const double* s, double* d, int n) {
  return Each<NaNs::kPassedOn>(kAbs, d, n, s);
}
EngStatus AbsF32InPlace(float* d, int n) {
  return Each<NaNs::kPassedOn>(kAbs, d, n, static_cast<const float*>(d));
}
EngStatus AbsF64InPlace(double* d, int n) {
  return Each<NaNs::kPassedOn>(kAbs, d, n, static_cast<const double*>(d));
}
EngStatus SqrF32(const float* s, float* d, int n) {
  return Each(kSqr, d, n, s);
}
EngStatus SqrF64(const double* s, double* d, int n) {
  return Each(kSqr, d, n, s);
}
EngStatus SqrF32InPlace(float* d, int n) {
  return Each(kSqr, d, n, static_cast<const float*>(d));
}
EngStatus SqrF64InPlace(double* d, int n) {
  return Each(kSqr, d, n, static_cast<const double*>(d));
}
EngStatus SqrtF32(const float* s, float* d, int n) {
  return Each(kSqrt, d, n, s);
}
EngStatus SqrtF64(const double* s, double* d, int n) {
  return Each(kSqrt, d, n, s);
}
EngStatus SqrtF32InPlace(float* d, int n) {
  return Each(kSqrt, d, n, static_cast<const float*>(d));
}
EngStatus SqrtF64InPlace(double* d, int n) {
  return Each(kSqrt, d, n, static_cast<const double*>(d));
}
EngStatus InverseF32(const float* s, float* d, int n) {
  return Each(kInverse, d, n, s);
}
EngStatus InverseF64(const double* s, double* d, int n) {
  return Each(kInverse, d, n, s);
}
EngStatus InverseF64Prec26(const double* s, double* d, int n) {
  return Each(kInverseF64Prec26Op, d, n, s);
}
EngStatus RoundF32(const float* s, float* d, int n) {
  return Each(kRound, d, n, s);
}
EngStatus RoundF64(const double* s, double* d, int n) {
  return Each(kRound, d, n, s);
}
EngStatus ExpF32(const float* s, float* d, int n) {
  return Each(kExpF32Op, d, n, s);
}
EngStatus ExpF64(const double* s, double* d, int n) {
  return Each(kExpF64Op, d, n, s);
}
EngStatus LnF32(const float* s, float* d, int n) {
  return Each(LnF32Op<LnF32Class::kFull>{}, d, n, s);
}
EngStatus LnF32Prec24(const float* s, float* d, int n) {
  return Each(LnF32Op<LnF32Class::kBits24>{}, d, n, s);
}
EngStatus LnF32Prec21(const float* s, float* d, int n) {
  return Each(LnF32Op<LnF32Class::kBits21>{}, d, n, s);
}
EngStatus LnF32Prec11(const float* s, float* d, int n) {
  return Each(LnF32Op<LnF32Class::kBits11>{}, d, n, s);
}
EngStatus LnF64(const double* s, double* d, int n) {
  return Each<NaNs::kPassedOn>(LnF64Op{}, d, n, s);
}
EngStatus PowF32(const float* base, const float* exponent, float* d, int n) {
  return Each(PowF32Op{}, d, n, base, exponent);
}
EngStatus PowF64(const double* base, const double* exponent, double* d, int n) {
  return Each(PowF64Op<PowClass::kAccurate>{}, d, n, base, exponent);
}
EngStatus PowF64Prec26(const double* base, const double* exponent, double* d, int n) {
  return Each(PowF64Op<PowClass::kLight>{}, d, n, base, exponent);
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_MATH_PRIMITIVES(ZAL_CHECK_SHAPE)
