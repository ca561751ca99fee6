// The window kernels, written once against the vector layer. A window is symmetric, so each
// weight is computed once, for the first half, and applied to an element of the front and, lanes
// reversed, to its mirror at the back. Weights are made on the fly in double (nothing allocated;
// the long double windows keep their offsets' terms, half a kilobyte, on the stack) by the formulas
// of window_weights-inl.h and window_angle_sum-inl.h, which the portable variant evaluates element
// by element: every level gives its bits.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"
#include "engine/simd/vec-inl.h"
#include "engine/simd/vec_fft-inl.h"
#include "engine/simd/vec_math-inl.h"

// After the vector layer, whose Broadcast the weights use.
#include "engine/primitives/window/window_angle_sum-inl.h"
#include "engine/primitives/window/window_weights-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

alignas(64) inline constexpr double kLaneIndices[] = {0, 1, 2, 3, 4, 5, 6, 7};

// The weights of the indices in `first` and the lanes after it, each index passed through
// `index` first, rounded once to a register of T.
template <class T, class Weight, class Index>
ZAL_INLINE VectorOf<T> WeightsAt(const Weight& weight, VF64 first, Index index) {
  if constexpr (sizeof(T) == 4) {
    const VF64 second = first + Broadcast(static_cast<double>(VF64::kLanes));
    return Narrow(weight(index(first)), weight(index(second)));
  } else {
    return weight(index(first));
  }
}

// Several registers' weights at once: a formula whose weight is a long chain of dependent steps
// walks them side by side (its Many), the others one by one.
template <int kCount, class Weight>
ZAL_INLINE void WeightsOf(const Weight& weight, const VF64 (&indices)[kCount],
                          VF64 (&weights)[kCount]) {
  if constexpr (requires { weight.Many(indices, weights); }) {
    weight.Many(indices, weights);
  } else {
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) weights[c] = weight(indices[c]);
  }
}

// Two registers of weights, for the elements at `at` and `at + lanes`, applied to them and,
// lanes reversed, to their mirrors at the back; one comparison per two registers finds NaNs.
template <class T, class V>
ZAL_INLINE void ApplyTwoMirrored(const T* src, T* dst, std::ptrdiff_t n, std::ptrdiff_t at, V w0,
                                 V w1) {
  constexpr std::ptrdiff_t kLanes = V::kLanes;
  const std::ptrdiff_t back = n - at - 2 * kLanes;
  V front0 = Load(src + at) * w0;
  V front1 = Load(src + at + kLanes) * w1;
  V back0 = Load(src + back + kLanes) * Reverse(w0);
  V back1 = Load(src + back) * Reverse(w1);
  DefaultNaNs(front0, front1, back0, back1);
  Store(dst + at, front0);
  Store(dst + at + kLanes, front1);
  Store(dst + back + kLanes, back0);
  Store(dst + back, back1);
}

// dst[i] = w(min(i, n - 1 - i)) src[i] for i from `from` (a multiple of the lanes) to n - from.
// The front and back registers of one step never overlap each other or another step's, and each
// is read before it is written, so src may be dst.
template <class T, class Weight>
ZAL_INLINE void ApplySymmetricFrom(const T* src, T* dst, std::ptrdiff_t n, const Weight& weight,
                                   std::ptrdiff_t from) {
  constexpr std::ptrdiff_t kLanes = VectorOf<T>::kLanes;
  const VF64 lanes = Load(kLaneIndices);
  const auto same = [](VF64 index) { return index; };
  const auto apply = [&](std::ptrdiff_t at, auto w) {
    const std::ptrdiff_t back = n - at - kLanes;
    const auto front_values = Load(src + at);
    const auto back_values = Load(src + back);
    Store(dst + at, DefaultNaN(front_values * w));
    Store(dst + back, DefaultNaN(back_values * Reverse(w)));
  };
  std::ptrdiff_t i = from;
  // A weight is a long chain of dependent operations: four registers' chains side by side keep
  // the arithmetic units busy while each waits for its previous result.
  for (; 2 * (i + kUnroll * kLanes) <= n; i += kUnroll * kLanes) {
    constexpr int kHalves = sizeof(T) == 4 ? 2 : 1;
    constexpr int kCount = kUnroll * kHalves;
    const VF64 first = lanes + Broadcast(static_cast<double>(i));
    VF64 indices[kCount];
    ZAL_UNROLL_FULLY
    for (int c = 0; c < kCount; ++c) {
      indices[c] = first + Broadcast(static_cast<double>(c * VF64::kLanes));
    }
    VF64 weights[kCount];
    WeightsOf(weight, indices, weights);
    VectorOf<T> w[kUnroll];
    ZAL_UNROLL_FULLY
    for (int u = 0; u < kUnroll; ++u) {
      if constexpr (kHalves == 2) {
        w[u] = Narrow(weights[2 * u], weights[2 * u + 1]);
      } else {
        w[u] = weights[u];
      }
    }
    ApplyTwoMirrored(src, dst, n, i, w[0], w[1]);
    ApplyTwoMirrored(src, dst, n, i + 2 * kLanes, w[2], w[3]);
  }
  for (; 2 * (i + kLanes) <= n; i += kLanes) {
    apply(i, WeightsAt<T>(weight, lanes + Broadcast(static_cast<double>(i)), same));
  }
  // The middle, shorter than two registers: each lane's weight from its own mirrored index.
  const VF64 last = Broadcast(static_cast<double>(n - 1));
  const auto mirrored = [last](VF64 index) { return Min(index, last - index); };
  const std::ptrdiff_t end = n - i;
  for (; i < end; i += kLanes) {
    const auto w = WeightsAt<T>(weight, lanes + Broadcast(static_cast<double>(i)), mirrored);
    if (end - i >= kLanes) {
      Store(dst + i, DefaultNaN(Load(src + i) * w));
    } else {
      const int rest = static_cast<int>(end - i);
      StoreN(dst + i, DefaultNaN(LoadN(src + i, rest) * w), rest);
    }
  }
}

template <class T, class Weight>
ZAL_INLINE void ApplySymmetric(const T* src, T* dst, std::ptrdiff_t n, const Weight& weight) {
  ApplySymmetricFrom(src, dst, n, weight, 0);
}

// One register of weights applied at `at` and, lanes reversed, at its mirror.
template <class T, class V>
ZAL_INLINE void ApplyMirrored(const T* src, T* dst, std::ptrdiff_t n, std::ptrdiff_t at, V w) {
  const std::ptrdiff_t back = n - at - V::kLanes;
  const V front_values = Load(src + at);
  const V back_values = Load(src + back);
  Store(dst + at, DefaultNaN(front_values * w));
  Store(dst + back, DefaultNaN(back_values * Reverse(w)));
}

// The offsets' terms of the long double raised-cosine windows, and room for kLanes anchors.
struct AngleSumTerms {
  alignas(64) double squared_sines[kSumBlock];
  alignas(64) double double_sines[kSumBlock];
  alignas(64) double highs[VF64::kLanes];
  alignas(64) double lows[VF64::kLanes];
  alignas(64) double cosines[VF64::kLanes];
  alignas(64) double sines[VF64::kLanes];
};

// The blocks of kWidth from `from` to `to`, their anchors kLanes at a time; lanes past the last
// block repeat it, so that every anchor stays inside the half window.
template <std::ptrdiff_t kWidth, class Weight>
ZAL_INLINE void ApplyBlocks(const double* src, double* dst, std::ptrdiff_t n, const Weight& weight,
                            AngleSumTerms& terms, std::ptrdiff_t from, std::ptrdiff_t to) {
  constexpr std::ptrdiff_t kLanes = VF64::kLanes;
  static_assert(kWidth % kLanes == 0);
  const VF64 lanes = Load(kLaneIndices);
  const VF64 last_first = Broadcast(static_cast<double>(to - kWidth));
  for (std::ptrdiff_t at = from; at < to; at += kLanes * kWidth) {
    const VF64 firsts =
        Min(lanes * Broadcast(static_cast<double>(kWidth)) + Broadcast(static_cast<double>(at)),
            last_first);
    const Anchor<VF64> anchors = weight.AnchorAt(firsts);
    Store(terms.highs, anchors.high);
    Store(terms.lows, anchors.low);
    Store(terms.cosines, anchors.cosine);
    Store(terms.sines, anchors.sine);
    for (std::ptrdiff_t l = 0; l < kLanes && at + l * kWidth < to; ++l) {
      const Anchor<VF64> anchor = {Broadcast(terms.highs[l]), Broadcast(terms.lows[l]),
                                   Broadcast(terms.cosines[l]), Broadcast(terms.sines[l])};
      const std::ptrdiff_t block = at + l * kWidth;
      const auto weights_at = [&](std::ptrdiff_t j) {
        return weight.Sum(anchor, Load(terms.squared_sines + j), Load(terms.double_sines + j));
      };
      if constexpr (kWidth >= 2 * kLanes) {
        ZAL_UNROLL_FULLY
        for (std::ptrdiff_t j = 0; j < kWidth; j += 2 * kLanes) {
          ApplyTwoMirrored(src, dst, n, block + j, weights_at(j), weights_at(j + kLanes));
        }
      } else {
        ApplyMirrored(src, dst, n, block, weights_at(0));
      }
    }
  }
}

// The long double raised-cosine windows (kSumMinLength elements and more): the first weights
// directly, then each block, narrow ones first, from its anchor and the offsets' terms kept on
// the stack, and the middle directly again.
template <class Weight>
ZAL_INLINE void ApplyByAngleSum(const double* src, double* dst, std::ptrdiff_t n,
                                const Weight& weight) {
  constexpr std::ptrdiff_t kLanes = VF64::kLanes;
  const VF64 lanes = Load(kLaneIndices);
  const auto fine_begin = static_cast<std::ptrdiff_t>(weight.fine_begin);
  for (std::ptrdiff_t i = 0; i < fine_begin; i += kLanes) {
    ApplyMirrored(src, dst, n, i, weight.direct(lanes + Broadcast(static_cast<double>(i))));
  }
  AngleSumTerms terms;
  for (std::ptrdiff_t j = 0; j < kSumBlock; j += kLanes) {
    const Offset<VF64> offset = weight.OffsetAt(lanes + Broadcast(static_cast<double>(j)));
    Store(terms.squared_sines + j, offset.squared_sine);
    Store(terms.double_sines + j, offset.double_sine);
  }
  const auto begin = static_cast<std::ptrdiff_t>(weight.begin);
  const auto end = static_cast<std::ptrdiff_t>(weight.end);
  ApplyBlocks<kFineBlock>(src, dst, n, weight, terms, fine_begin, begin);
  ApplyBlocks<kSumBlock>(src, dst, n, weight, terms, begin, end);
  ApplySymmetricFrom(src, dst, n, weight.direct, end);
}

// The float raised-cosine windows: the chains of every kBlock indices walked block by block from
// their anchors, eight registers of them side by side (enough to cover the recurrence's latency),
// the same bits as the portable variant's index-by-index walk.
template <class Recurrence>
ZAL_INLINE void ApplyByRecurrence(const float* src, float* dst, std::ptrdiff_t n,
                                  const Recurrence& recurrence) {
  constexpr std::ptrdiff_t kLanes = VF32::kLanes;
  constexpr std::ptrdiff_t kHalfLanes = VF64::kLanes;
  constexpr int kChains = 8;
  constexpr std::ptrdiff_t kSpan = kChains * kHalfLanes;
  static_assert(kBlock % kSpan == 0);
  const VF64 lanes = Load(kLaneIndices);
  const auto apply = [&](std::ptrdiff_t at, VF32 w) {
    const std::ptrdiff_t back = n - at - kLanes;
    const VF32 front_values = Load(src + at);
    const VF32 back_values = Load(src + back);
    Store(dst + at, DefaultNaN(front_values * w));
    Store(dst + back, DefaultNaN(back_values * Reverse(w)));
  };
  const auto weights_of = [&](VF64 low, VF64 high) {
    return Narrow(recurrence.Weight(low), recurrence.Weight(high));
  };
  // Blocks whose front and back do not meet; the next one, where the window has a middle, holds
  // the middle's weights.
  const std::ptrdiff_t full = n / (2 * kBlock);
  const std::ptrdiff_t blocks = n > 2 * kBlock * full ? full + 1 : full;
  alignas(64) float middle[kBlock];
  for (std::ptrdiff_t first = 0; first < blocks; first += kAnchorEvery) {
    const std::ptrdiff_t last = (first + kAnchorEvery < blocks ? first + kAnchorEvery : blocks) - 1;
    for (std::ptrdiff_t offset = 0; offset < kBlock; offset += kSpan) {
      Chain<VF64> chains[kChains];
      ZAL_UNROLL_FULLY
      for (int c = 0; c < kChains; ++c) {
        const double index = static_cast<double>(first * kBlock + offset + c * kHalfLanes);
        chains[c] = recurrence.Anchor(lanes + Broadcast(index));
      }
      for (std::ptrdiff_t block = first; block <= last; ++block) {
        if (block > first) {
          ZAL_UNROLL_FULLY
          for (int c = 0; c < kChains; ++c) chains[c] = recurrence.Advance(chains[c]);
        }
        if (block == full) {
          ZAL_UNROLL_FULLY
          for (int c = 0; c < kChains; c += 2) {
            Store(middle + offset + c * kHalfLanes, weights_of(chains[c].now, chains[c + 1].now));
          }
        } else {
          ZAL_UNROLL_FULLY
          for (int c = 0; c < kChains; c += 4) {
            ApplyTwoMirrored(src, dst, n, block * kBlock + offset + c * kHalfLanes,
                             weights_of(chains[c].now, chains[c + 1].now),
                             weights_of(chains[c + 2].now, chains[c + 3].now));
          }
        }
      }
    }
  }
  // The middle, under two blocks: its mirrored indices all lie in the block after the full ones.
  const std::ptrdiff_t i = full * kBlock;
  std::ptrdiff_t j = i;
  for (; 2 * (j + kLanes) <= n; j += kLanes) apply(j, Load(middle + (j - i)));
  for (const std::ptrdiff_t end = n - j; j < end; ++j) {
    const std::ptrdiff_t mirror = n - 1 - j;
    dst[j] = DefaultNaN(src[j] * middle[(j < mirror ? j : mirror) - i]);
  }
}

}  // namespace

#include "engine/primitives/window/window_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL

ZAL_WINDOW_PRIMITIVES(ZAL_CHECK_SHAPE)
