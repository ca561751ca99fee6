// The window weights as functions of the index, written once over a lane type V: VF64 in the level
// kernels, double in the portable variant. Each weight is a fixed sequence of double operations,
// never fused, so every level gives the portable variant's bits; a float window rounds the double
// weight once, which leaves it within half an ulp (and a hair) of the exact weight.
// Included inside level translation units and the portable one, after ZAL_INLINE.
#pragma once

#include <cmath>
#include <type_traits>

// The level kernels unroll loops over register arrays (vec_fft-inl.h); the portable variant's
// arrays hold one double each.
#ifndef ZAL_UNROLL_FULLY
#define ZAL_UNROLL_FULLY
#endif

namespace zal::engine::ZAL_LEVEL {
namespace {

// x in every lane of V, or x itself where V is double (whose Broadcast, in the portable variant,
// is the identity).
template <class V>
ZAL_INLINE V Splat(double x) {
  if constexpr (std::is_same_v<V, double>) {
    return x;
  } else {
    return Broadcast(x);
  }
}

inline constexpr double kPi = 3.141592653589793;

// sin(t) - t = t s P(s), s = t^2: Taylor coefficients of t^21 down to t^3, correctly rounded. On
// [0, pi/2] the terms left out stay below 2^-59 of the result.
inline constexpr double kSineCoefficients[] = {
    1.9572941063391263e-20, -8.22063524662433e-18,  2.8114572543455206e-15, -7.647163731819816e-13,
    1.6059043836821613e-10, -2.505210838544172e-08, 2.7557319223985893e-06, -0.0001984126984126984,
    0.008333333333333333,   -0.16666666666666666};
inline constexpr int kSineTerms = 10;
// Through t^17 for t up to pi/4: 2^-63 left out.
inline constexpr int kSineTermsF64 = 8;

template <int kTerms, class V>
ZAL_INLINE V Sine(V t) {
  const V s = t * t;
  V p = Splat<V>(kSineCoefficients[kSineTerms - kTerms]);
  for (int i = kSineTerms - kTerms + 1; i < kSineTerms; ++i) {
    p = p * s + Splat<V>(kSineCoefficients[i]);
  }
  return t + t * (s * p);
}

// The raised-cosine windows through s = sin(pi n / (N - 1)), the cosines rewritten in s^2 so that
// no weight is a difference of nearly equal terms: cos(2t) = 1 - 2 s^2 and cos(4t) = 1 - 8 s^2 +
// 8 s^4 make Hann s^2, Hamming 0.08 + 0.92 s^2 and Blackman s^2 ((1 + 4 alpha) - 4 alpha s^2).
enum class RaisedCosine { kHann, kHamming, kBlackman };

// The float windows' shape: the weight from s^2, the sine's square.
template <RaisedCosine kKind>
struct RaisedCosineWeight {
  double step;  // pi / (N - 1)
  double a;     // Blackman: 1 + 4 alpha
  double b;     // Blackman: -4 alpha

  template <class V>
  ZAL_INLINE V FromSquaredSine(V s2) const {
    if constexpr (kKind == RaisedCosine::kHann) {
      return s2;
    } else if constexpr (kKind == RaisedCosine::kHamming) {
      return Splat<V>(0.08) + Splat<V>(0.92) * s2;
    } else {
      return s2 * (Splat<V>(a) + Splat<V>(b) * s2);
    }
  }
};

template <RaisedCosine kKind>
RaisedCosineWeight<kKind> MakeRaisedCosine(int n, double alpha) {
  return {kPi / (n - 1), 1 + 4 * alpha, -4 * alpha};
}

// Float windows by recurrence. Each index m has its own chain: m, m + kBlock, m + 2 kBlock, ...,
// anchored from the polynomial at the first two blocks of every kAnchorEvery, then carried on by
// the three-term recurrence of sin^2 over the block's angle D = kBlock pi / (N - 1):
//   w(t + D) = (2 - 2g) w(t) - (w(t - D) - g),   g = 2 sin^2(D).
// A rounding error passed on k steps grows at most k-fold, and every earlier weight of a chain is
// smaller than the later ones, so the error stays within 2 k^2 roundings of the weight itself:
// 2^-42 relative, far below float's. The chains do not depend on the register width, so every
// level gives the same bits.
inline constexpr int kBlock = 64;
inline constexpr int kAnchorEvery = 32;
// Through t^17 on [0, pi/2], 2^-44 left out: an anchor's error is carried on up to kAnchorEvery
// times.
inline constexpr int kSineTermsAnchor = 8;

// A chain's value at its current index and at the one kBlock further on.
template <class V>
struct Chain {
  V now;
  V next;
};

// Hann and Hamming are affine in sin^2, so their weights follow the same recurrence with the
// constant g (2a + b) for a + b sin^2 and the chains carry the weights themselves; Blackman's
// chains carry sin^2.
template <RaisedCosine kKind>
struct RaisedCosineRecurrence {
  static constexpr bool kChainsCarryWeights = kKind != RaisedCosine::kBlackman;

  RaisedCosineWeight<kKind> shape;
  double offset;        // g (2a + b), a + b sin^2 the chains' values
  double twice_cosine;  // 2 - 2g = 2 cos(2D)
  double half_last;     // (N - 1) / 2

  // Indices past the centre (lanes of a short window's only block, whose values no chain
  // reaches) start from the centre's, so that every value stays in the polynomial's range.
  template <class V>
  ZAL_INLINE V Start(V m) const {
    const V centre = Splat<V>(half_last);
    const V t = Select(LessEqual(m, centre), m, centre) * Splat<V>(shape.step);
    const V s = Sine<kSineTermsAnchor>(t);
    if constexpr (kChainsCarryWeights) {
      return shape.FromSquaredSine(s * s);
    } else {
      return s * s;
    }
  }

  template <class V>
  ZAL_INLINE Chain<V> Anchor(V m) const {
    return {Start(m), Start(m + Splat<V>(kBlock))};
  }

  template <class V>
  ZAL_INLINE Chain<V> Advance(const Chain<V>& chain) const {
    return {chain.next, Splat<V>(twice_cosine) * chain.next - (chain.now - Splat<V>(offset))};
  }

  template <class V>
  ZAL_INLINE V Weight(V value) const {
    if constexpr (kChainsCarryWeights) {
      return value;
    } else {
      return shape.FromSquaredSine(value);
    }
  }

  // One index's weight, as the kernels reach it: the portable variant's way.
  ZAL_INLINE double operator()(double m) const {
    const auto index = static_cast<long long>(m);
    const long long steps = index / kBlock % kAnchorEvery;
    Chain<double> chain = Anchor(static_cast<double>(index - steps * kBlock));
    for (long long k = 0; k < steps; ++k) chain = Advance(chain);
    return Weight(chain.now);
  }
};

template <RaisedCosine kKind>
RaisedCosineRecurrence<kKind> MakeRaisedCosineRecurrence(int n, double alpha) {
  const RaisedCosineWeight<kKind> shape = MakeRaisedCosine<kKind>(n, alpha);
  const double sine = std::sin(kBlock * shape.step);
  const double gain = 2 * sine * sine;
  // Hamming: a = 0.08, b = 0.92.
  const double offset = kKind == RaisedCosine::kHamming ? gain * 1.08 : gain;
  return {shape, offset, 2 - 2 * gain, (n - 1) * 0.5};
}

// The error of the rounded product p = a b, exactly: by Dekker's splitting in plain operations
// (the portable variant, and the levels without fused multiply-add through the vector layer's
// ProductError), by one fused multiply-add where the level has it. An exact value is the same
// value either way, so every level keeps the portable variant's bits.
template <class V>
ZAL_INLINE V HighHalf(V x) {
  const V t = Splat<V>(134217729.0) * x;
  return t - (t - x);
}
template <class V>
ZAL_INLINE V ProductRemainder(V a, V b, V p) {
  if constexpr (!std::is_same_v<V, double>) {
    return ProductError(a, b, p);
  } else {
    const V a_high = HighHalf(a);
    const V a_low = a - a_high;
    const V b_high = HighHalf(b);
    const V b_low = b - b_high;
    return ((a_high * b_high - p) + a_high * b_low + a_low * b_high) + a_low * b_low;
  }
}

// (x + x_low) (a + a_low + (b + b_low) (s + s_low)), of double-double operands, rounded once but
// for terms 2^-100 below: the last rounding dominates the error.
template <class V>
ZAL_INLINE V ProductOfLinear(V x, V x_low, V a, V a_low, V b, V b_low, V s, V s_low) {
  const V bs = b * s;
  const V bs_low = (ProductRemainder(b, s, bs) + b * s_low) + b_low * s;
  const V bracket = a + bs;
  const V back = bracket - a;
  const V bracket_low = ((a - (bracket - back)) + (bs - back)) + (a_low + bs_low);
  const V w = x * bracket;
  return w + ((ProductRemainder(x, bracket, w) + x * bracket_low) + x_low * bracket);
}

// 0.08 and 0.92 to twice double's precision.
inline constexpr double kHammingBase = 0.08;
inline constexpr double kHammingBaseLow = -1.6653345369377347e-18;
inline constexpr double kHammingRise = 0.92;
inline constexpr double kHammingRiseLow = -3.9968028886505634e-17;

// The raised-cosine windows to double precision. Both ends of a rounding budget of 2 ulp need
// care: the angle t = pi m / (N - 1) is carried as a sum of two doubles, so that its own rounding
// does not pass into the sine; and only angles up to pi/4 are evaluated, by the sine of the
// complement past it: with v = sin(angle), s^2 = v^2 near the ends and s^2 = 1 - v^2 (v the
// cosine) near the centre, where 1 - v^2 >= 1/2 absorbs v's rounding.
template <RaisedCosine kKind>
struct PreciseRaisedCosineWeight {
  double step_high;  // pi / (N - 1) = step_high + step_low
  double step_low;
  double half_last;   // (N - 1) / 2
  double four_alpha;  // Blackman

  // sin^2 and cos^2 of the angle at index n, each as a sum of two doubles.
  template <class V>
  struct Squares {
    V s2;
    V s2_low;
    V c2;
    V c2_low;
  };

  template <class V>
  ZAL_INLINE Squares<V> SquaresAt(V n) const {
    const V quarter = Splat<V>(half_last * 0.5);
    const auto near_end = LessEqual(n, quarter);
    const V m = Select(near_end, n, Splat<V>(half_last) - n);
    // t = t_high + t_low, exact but for the last term's rounding.
    const V t_high = m * Splat<V>(step_high);
    const V t_low = ProductRemainder(m, Splat<V>(step_high), t_high) + m * Splat<V>(step_low);
    // sin(t) = t_high + (t_low cos(t_high) + t_high s P(s)): the cosine's three terms leave
    // under 2^-5 of t_low's tiny share.
    const V s = t_high * t_high;
    V p = Splat<V>(kSineCoefficients[kSineTerms - kSineTermsF64]);
    for (int i = kSineTerms - kSineTermsF64 + 1; i < kSineTerms; ++i) {
      p = p * s + Splat<V>(kSineCoefficients[i]);
    }
    const V cosine = Splat<V>(1.0) - s * (Splat<V>(0.5) - s * Splat<V>(1.0 / 24));
    const V correction = t_low * cosine + t_high * (s * p);
    // v = v_high + v_low, then v^2 = square + square_low.
    const V v_high = t_high + correction;
    const V v_low = correction - (v_high - t_high);
    const V square = v_high * v_high;
    const V square_low = ProductRemainder(v_high, v_high, square) + Splat<V>(2.0) * v_high * v_low;
    // sin^2 of the half angle, and its complement cos^2, from whichever v^2 is: each a sum of two
    // doubles until the last operation.
    const V one = Splat<V>(1.0);
    const V complement = one - square;
    const V complement_low = ((one - complement) - square) - square_low;
    return {Select(near_end, square, complement), Select(near_end, square_low, complement_low),
            Select(near_end, complement, square), Select(near_end, complement_low, square_low)};
  }

  template <class V>
  ZAL_INLINE V operator()(V n) const {
    const auto [s2, s2_low, c2, c2_low] = SquaresAt(n);
    const V zero = Splat<V>(0.0);
    const V one = Splat<V>(1.0);
    if constexpr (kKind == RaisedCosine::kHann) {
      return s2 + s2_low;
    } else if constexpr (kKind == RaisedCosine::kHamming) {
      // 0.08 + 0.92 s^2.
      return ProductOfLinear(one, zero, Splat<V>(kHammingBase), Splat<V>(kHammingBaseLow),
                             Splat<V>(kHammingRise), Splat<V>(kHammingRiseLow), s2, s2_low);
    } else {
      // s^2 (1 + 4 alpha c^2).
      return ProductOfLinear(s2, s2_low, one, zero, Splat<V>(four_alpha), zero, c2, c2_low);
    }
  }
};

// pi = kPi + kPiLow to twice double's precision.
inline constexpr double kPiLow = 1.2246467991473532e-16;

template <RaisedCosine kKind>
PreciseRaisedCosineWeight<kKind> MakePreciseRaisedCosine(int n, double alpha) {
  const double last = n - 1;
  const double high = kPi / last;
  const double product = high * last;
  const double remainder = ((kPi - product) - ProductRemainder(high, last, product)) + kPiLow;
  return {high, remainder / last, last * 0.5, 4 * alpha};
}

// Rises from 0 at both ends to 1 at the centre: 2n / (N - 1).
struct TriangleWeight {
  double slope;

  template <class V>
  ZAL_INLINE V operator()(V n) const {
    return n * Splat<V>(slope);
  }
};

// 1 / (k!)^2, correctly rounded: the power series I0(x) = sum (x^2 / 4)^k / (k!)^2, all of whose
// terms are positive, so that it is accurate to the working precision over the whole range.
inline constexpr double kBesselSeries[] = {1.0,
                                           1.0,
                                           0.25,
                                           0.027777777777777776,
                                           0.001736111111111111,
                                           6.944444444444444e-05,
                                           1.9290123456790124e-06,
                                           3.936759889140842e-08,
                                           6.151187326782565e-10,
                                           7.594058428126624e-12,
                                           7.594058428126623e-14,
                                           6.276081345559193e-16,
                                           4.358389823304995e-18,
                                           2.5789288895295828e-20,
                                           1.3157800456783586e-22,
                                           5.8479113141260385e-25,
                                           2.2843403570804838e-27,
                                           7.904291893012054e-30,
                                           2.4395962632753253e-32,
                                           6.757884385804225e-35,
                                           1.6894710964510564e-37,
                                           3.8310002187098785e-40,
                                           7.915289708078262e-43,
                                           1.4962740468957016e-45,
                                           2.5976979980828152e-48,
                                           4.156316796932504e-51,
                                           6.14839762859838e-54,
                                           8.434015951438106e-57,
                                           1.0757673407446564e-59,
                                           1.2791526049282477e-62,
                                           1.4212806721424974e-65,
                                           1.4789601166935458e-68,
                                           1.4442969889585408e-71,
                                           1.3262598613026087e-74,
                                           1.147283617043779e-77,
                                           9.365580547296156e-81,
                                           7.226528200074194e-84,
                                           5.278691161485898e-87,
                                           3.6556032974279072e-90,
                                           2.4034209713529963e-93,
                                           1.5021381070956227e-96,
                                           8.935979221270807e-100,
                                           5.065747857863269e-103,
                                           2.739723016691871e-106,
                                           1.4151461863077845e-109,
                                           6.988376228680417e-113,
                                           3.3026352687525603e-116,
                                           1.4950816064973112e-119,
                                           6.48906947264458e-123,
                                           2.7026528415845812e-126,
                                           1.0810611366338324e-129,
                                           4.156328860568368e-133,
                                           1.5371038685533903e-136,
                                           5.472067883778535e-140,
                                           1.876566489635986e-143,
                                           6.203525585573507e-147,
                                           1.9781650464201234e-150,
                                           6.088535076700903e-154,
                                           1.8099093569265468e-157,
                                           5.199394877697635e-161,
                                           1.4442763549160097e-164,
                                           3.8814199272131406e-168,
                                           1.0097346324695995e-171,
                                           2.544052991860921e-175};
inline constexpr int kBesselTermsMax = static_cast<int>(sizeof kBesselSeries / sizeof(double));

// I0 of the argument whose square over 4 is y, over the first `terms` terms (one more where that
// makes them even): enough for weights rounded to float. The even and the odd terms by Horner's
// rule in y^2, two independent chains of half the length, so that the wait for each product
// halves; every term is positive, so the split costs no accuracy.
static_assert(kBesselTermsMax % 2 == 0);
template <int kCount, class V>
ZAL_INLINE void BesselI0OfQuarterSquare(const V (&y)[kCount], int terms, V (&sums)[kCount]) {
  const int pairs = (terms + 1) / 2;
  V y2[kCount];
  V even[kCount];
  V odd[kCount];
  ZAL_UNROLL_FULLY
  for (int c = 0; c < kCount; ++c) {
    y2[c] = y[c] * y[c];
    even[c] = Splat<V>(kBesselSeries[2 * pairs - 2]);
    odd[c] = Splat<V>(kBesselSeries[2 * pairs - 1]);
  }
  for (int j = pairs - 2; j >= 0; --j) {
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) {
      even[c] = even[c] * y2[c] + Splat<V>(kBesselSeries[2 * j]);
      odd[c] = odd[c] * y2[c] + Splat<V>(kBesselSeries[2 * j + 1]);
    }
  }
  ZAL_UNROLL_FULLY
  for (int c = 0; c < kCount; ++c) sums[c] = even[c] + y[c] * odd[c];
}
template <class V>
ZAL_INLINE V BesselI0OfQuarterSquare(V y, int terms) {
  V sums[1];
  BesselI0OfQuarterSquare<1>({y}, terms, sums);
  return sums[0];
}

// The same to double precision, for y = y_high + y_low: Horner's rule with each step's rounding
// errors (exact, from Dekker's product and Knuth's sum) carried along in a second Horner sum, the
// compensated scheme whose error stays near one rounding however many terms the large arguments
// need (plain Horner loses up to 8 ulp at beta = 25). Only the first `compensated` terms need it:
// the higher ones, summed by plain Horner (a relative error of a few roundings per term, all terms
// positive), make up under 2^-10 of the sum, so their error costs a tenth of an ulp at most.
template <class V>
struct TwoParts {
  V high;
  V low;
};
template <int kCount, class V>
ZAL_INLINE void PreciseBesselI0OfQuarterSquare(const V (&y_high)[kCount], const V (&y_low)[kCount],
                                               int terms, int compensated,
                                               TwoParts<V> (&sums)[kCount]) {
  V sum[kCount];
  V errors[kCount];
  ZAL_UNROLL_FULLY
  for (int c = 0; c < kCount; ++c) {
    sum[c] = Splat<V>(kBesselSeries[terms - 1]);
    errors[c] = Splat<V>(0.0);
  }
  int k = terms - 2;
  for (; k >= compensated; --k) {
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) sum[c] = sum[c] * y_high[c] + Splat<V>(kBesselSeries[k]);
  }
  for (; k >= 0; --k) {
    const V coefficient = Splat<V>(kBesselSeries[k]);
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) {
      const V product = sum[c] * y_high[c];
      const V product_error = ProductRemainder(sum[c], y_high[c], product) + sum[c] * y_low[c];
      const V next = product + coefficient;
      const V back = next - product;
      const V sum_error = (product - (next - back)) + (coefficient - back);
      errors[c] = errors[c] * y_high[c] + (product_error + sum_error);
      sum[c] = next;
    }
  }
  ZAL_UNROLL_FULLY
  for (int c = 0; c < kCount; ++c) {
    const V high = sum[c] + errors[c];
    sums[c] = {high, errors[c] - (high - sum[c])};
  }
}
template <class V>
ZAL_INLINE TwoParts<V> PreciseBesselI0OfQuarterSquare(V y_high, V y_low, int terms,
                                                      int compensated) {
  TwoParts<V> sums[1];
  PreciseBesselI0OfQuarterSquare<1>({y_high}, {y_low}, terms, compensated, sums);
  return sums[0];
}

// (a + a_low) / (b + b_low), rounded once but for terms 2^-100 below, given r = 1 / b rounded:
// no division (a long wait per register), a multiply and one correction step instead. q b lies
// within a few roundings of a, so a - q b is exact.
template <class V>
ZAL_INLINE V Quotient(TwoParts<V> a, V b, V b_low, V r) {
  const V q = a.high * r;
  const V qb = q * b;
  const V remainder = (((a.high - qb) - ProductRemainder(q, b, qb)) + a.low) - q * b_low;
  return q + remainder * r;
}

// I0(alpha sqrt(c^2 - (n - c)^2)) / I0(alpha c), c = (N - 1) / 2. The argument's square is
// alpha^2 n (N - 1 - n): no square root, and at the centre of an odd length the same product as
// the normaliser's, so that the weight there is 1 exactly. kPrecise carries alpha^2 / 4 and the
// series to double precision: an error in the argument's square grows by up to beta / 2 in I0.
template <bool kPrecise>
struct KaiserWeight {
  double last;            // N - 1
  double quarter_alpha2;  // alpha^2 / 4 = quarter_alpha2 + quarter_alpha2_low
  double quarter_alpha2_low;
  double normaliser;  // I0(alpha c) = normaliser + normaliser_low
  double normaliser_low;
  double reciprocal;  // 1 / normaliser
  int terms;
  int compensated;  // kPrecise: the terms summed with their rounding errors

  template <class V>
  ZAL_INLINE V operator()(V n) const {
    V weights[1];
    Many<1>({n}, weights);
    return weights[0];
  }

  // kCount registers' weights, each series step taken for all of them before the next: the
  // steps of one register depend on each other, those of different registers do not.
  template <int kCount, class V>
  ZAL_INLINE void Many(const V (&n)[kCount], V (&weights)[kCount]) const {
    V y[kCount];
    V m[kCount];
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) {
      m[c] = n[c] * (Splat<V>(last) - n[c]);
      y[c] = Splat<V>(quarter_alpha2) * m[c];
    }
    if constexpr (kPrecise) {
      V y_low[kCount];
      ZAL_UNROLL_FULLY
      for (int c = 0; c < kCount; ++c) {
        y_low[c] = ProductRemainder(Splat<V>(quarter_alpha2), m[c], y[c]) +
                   Splat<V>(quarter_alpha2_low) * m[c];
      }
      TwoParts<V> sums[kCount];
      PreciseBesselI0OfQuarterSquare(y, y_low, terms, compensated, sums);
      ZAL_UNROLL_FULLY
      for (int c = 0; c < kCount; ++c) {
        weights[c] =
            Quotient(sums[c], Splat<V>(normaliser), Splat<V>(normaliser_low), Splat<V>(reciprocal));
      }
    } else {
      // One rounding more than a quotient, far below float's: the centre's 1 - 2^-53 rounds to 1.
      BesselI0OfQuarterSquare(y, terms, weights);
      ZAL_UNROLL_FULLY
      for (int c = 0; c < kCount; ++c) weights[c] = weights[c] * Splat<V>(reciprocal);
    }
  }
};

// The series is cut where a term falls below 2^-56 of the sum at the largest argument, the
// centre's (2^-32 for weights rounded to float); smaller arguments converge faster. A NaN alpha
// keeps every term (and gives NaN weights).
template <bool kPrecise>
KaiserWeight<kPrecise> MakeKaiser(int n, double alpha) {
  const double last = n - 1;
  const double centre = last * 0.5;
  const double alpha2 = alpha * alpha;
  const double quarter_alpha2 = alpha2 * 0.25;
  const double quarter_alpha2_low = ProductRemainder(alpha, alpha, alpha2) * 0.25;
  const double m = centre * centre;
  const double y = quarter_alpha2 * m;
  double series[kBesselTermsMax] = {1};
  double sum = 1;
  int terms = kBesselTermsMax;
  for (int k = 1; k < kBesselTermsMax; ++k) {
    series[k] = series[k - 1] * (y / (k * k));
    sum += series[k];
    if (series[k] < (kPrecise ? 0x1p-56 : 0x1p-32) * sum) {
      terms = k + 1;
      break;
    }
  }
  // The largest argument has the heaviest tail; a NaN keeps every term compensated.
  int compensated = terms;
  for (double tail = 0; compensated > 1; --compensated) {
    tail += series[compensated - 1];
    if (!(tail < 0x1p-10 * sum)) break;
  }
  if constexpr (kPrecise) {
    const double y_low = ProductRemainder(quarter_alpha2, m, y) + quarter_alpha2_low * m;
    const TwoParts<double> normaliser =
        PreciseBesselI0OfQuarterSquare(y, y_low, terms, compensated);
    return {last,
            quarter_alpha2,
            quarter_alpha2_low,
            normaliser.high,
            normaliser.low,
            1 / normaliser.high,
            terms,
            compensated};
  } else {
    const double normaliser = BesselI0OfQuarterSquare(y, terms);
    return {last, quarter_alpha2, 0, normaliser, 0, 1 / normaliser, terms, terms};
  }
}

// The engine's limit: beyond |alpha| (N - 1) / 2 = 38, I0 leaves the float range.
inline bool KaiserTooBig(int n, double alpha) {
  return std::fabs(alpha) * (n - 1) * 0.5 > 38.0;
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
