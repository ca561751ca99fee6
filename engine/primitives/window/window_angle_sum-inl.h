// The long double raised-cosine windows past their first weights, by the angle sum. With the index
// m = kB + j, a = pi kB / (N - 1) and b = pi j / (N - 1):
//   sin^2(a + b) = sin^2 a + cos 2a sin^2 b + sin a cos a sin 2b,
// so each block needs one evaluation of its anchor a (sin^2 a to twice double precision, cos 2a,
// sin a cos a) and each offset j one of sin^2 b and sin 2b, shared by every block; a weight is
// then two products and three sums. The sum's correction stays small against the anchor: with
// the anchor at least 4 block widths in, it is under 1 - (4/5)^2 = 0.36 of the weight near the
// ends, where its terms are all positive, so the few roundings of its constants and products cost
// at most about 1.1 ulp of the weight, and half an ulp more for the last sum. Near the centre the
// correction is under b^2 + b absolutely with b <= pi/18 (lengths from 18 blocks on), and the
// weight over 1/2. No fused multiply-add: every level gives the portable variant's bits.
//
// Included inside level translation units and the portable one, where window_weights-inl.h is.
#pragma once

#include "engine/primitives/window/window_weights-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

inline constexpr int kSumBlock = 32;
// The correction's share is under 0.36 of the weight from the block whose anchor lies 4 block
// widths in (Blackman: under 0.21, 8 widths in). Blocks of kFineBlock bridge the start: the first
// 4 (8) fine widths directly, fine blocks up to 4 (8) wide blocks, then wide blocks.
inline constexpr int kFineBlock = 8;
inline constexpr int kSumFirstBlock = 4;
inline constexpr int kBlackmanFirstBlock = 8;
inline constexpr int kSumMinLength = 18 * kSumBlock + 1;

// w(a + b) = high + (low + (cosine sin^2 b + sine sin 2b)).
template <class V>
struct Anchor {
  V high;
  V low;
  V cosine;
  V sine;
};

// sin^2 b and sin 2b of an offset.
template <class V>
struct Offset {
  V squared_sine;
  V double_sine;
};

template <RaisedCosine kKind>
struct AngleSumWeight {
  PreciseRaisedCosineWeight<kKind> direct;
  double fine_begin;     // the first index of the fine blocks, evaluated directly before
  double begin;          // the first index of the wide blocks
  double end;            // the first index of the middle: blocks stop before the halves meet
  double blackman_base;  // 1 + 4 alpha

  template <class V>
  ZAL_INLINE Anchor<V> AnchorAt(V first) const {
    const auto [s2, s2_low, c2, c2_low] = direct.SquaresAt(first);
    V high = s2 + s2_low;
    V low = s2_low - (high - s2);
    V cosine = (c2 - s2) + (c2_low - s2_low);
    V sine = Sqrt(s2 * c2);
    if constexpr (kKind == RaisedCosine::kHamming) {
      // 0.08 + 0.92 (high + low) to twice double precision; the correction scaled by 0.92.
      const V rise = Splat<V>(kHammingRise);
      const V base = Splat<V>(kHammingBase);
      const V t = rise * high;
      const V t_low =
          ProductRemainder(rise, high, t) + (rise * low + Splat<V>(kHammingRiseLow) * high);
      const V sum = base + t;
      const V back = sum - base;
      const V rest = ((base - (sum - back)) + (t - back)) + (t_low + Splat<V>(kHammingBaseLow));
      high = sum + rest;
      low = rest - (high - sum);
      cosine = rise * cosine;
      sine = rise * sine;
    }
    return {high, low, cosine, sine};
  }

  template <class V>
  ZAL_INLINE Offset<V> OffsetAt(V j) const {
    const auto [s2, s2_low, c2, c2_low] = direct.SquaresAt(j);
    const V squared_sine = s2 + s2_low;
    return {squared_sine, Splat<V>(2.0) * Sqrt(squared_sine * c2)};
  }

  template <class V>
  ZAL_INLINE V Sum(const Anchor<V>& anchor, V squared_sine, V double_sine) const {
    const V correction = anchor.low + (anchor.cosine * squared_sine + anchor.sine * double_sine);
    if constexpr (kKind != RaisedCosine::kBlackman) {
      return anchor.high + correction;
    } else {
      // s^2 ((1 + 4 alpha) - 4 alpha s^2), s^2 as a sum of two doubles; 1 + 4 alpha holds the
      // bracket's cancellation for alpha near -1/4 and is exact there.
      const V s2 = anchor.high + correction;
      const V s2_low = correction - (s2 - anchor.high);
      const V base = Splat<V>(blackman_base);
      const V k = Splat<V>(-direct.four_alpha);
      const V ks = k * s2;
      const V ks_low = ProductRemainder(k, s2, ks) + k * s2_low;
      const V bracket = base + ks;
      const V back = bracket - base;
      const V bracket_low = ((base - (bracket - back)) + (ks - back)) + ks_low;
      const V w = s2 * bracket;
      return w + ((ProductRemainder(s2, bracket, w) + s2 * bracket_low) + s2_low * bracket);
    }
  }

  // One index's weight, as the kernels reach it: the portable variant's way.
  ZAL_INLINE double operator()(double m) const {
    if (m < fine_begin || m >= end) return direct(m);
    const double width = m < begin ? kFineBlock : kSumBlock;
    const double first = std::floor(m / width) * width;
    const Offset<double> offset = OffsetAt(m - first);
    return Sum(AnchorAt(first), offset.squared_sine, offset.double_sine);
  }
};

// Blackman's bracket 1 + 4 alpha cos^2 doubles the error of sin^2 and more: its blocks start
// later, where the corrections are a smaller share. Hamming's floor of 0.08 keeps them small from
// the first block on in long windows: sin^2 grows by at most B pi / (N - 1) over a block, under
// 0.36 of 0.08 / 0.92 from N - 1 = 3212 on.
template <RaisedCosine kKind>
AngleSumWeight<kKind> MakeAngleSum(int n, double alpha) {
  int first_block = kKind == RaisedCosine::kBlackman ? kBlackmanFirstBlock : kSumFirstBlock;
  if (kKind == RaisedCosine::kHamming && n - 1 >= 3212) first_block = 0;
  return {MakePreciseRaisedCosine<kKind>(n, alpha), static_cast<double>(first_block * kFineBlock),
          static_cast<double>(first_block * kSumBlock),
          static_cast<double>(n / 2 / kSumBlock * kSumBlock), 1 + 4 * alpha};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
