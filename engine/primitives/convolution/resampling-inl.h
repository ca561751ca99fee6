// The stream decimator and zero inserter of one level. Factors up to a register's lane count move
// whole registers through lane picks: a decimated register is F loads each picking its share of
// lanes, an inserted group of F registers is one load picked F ways with zeros around. Larger
// factors, and the tails, go sample by sample. Included inside namespace zal::engine::ZAL_LEVEL,
// in its anonymous namespace, after Fill and Copy.

#include "engine/primitives/convolution/lane_picks-inl.h"

// The lane sources of every pick for one factor and lane count, built at compile time.
// down[s]: the kept register's lanes from registers 2s and 2s + 1 (the last alone when the factor
// is odd): lane k takes position k kFactor - 2s kLanes of the pair. up[kLanes + q], q a position
// in a group of kFactor registers less the phase: the sample placed there, or -1.
template <int kFactor, int kLanes>
struct PickSources {
  std::int32_t down[(kFactor + 1) / 2][kLanes];
  std::int32_t up[(kFactor + 1) * kLanes];
};

template <int kFactor, int kLanes>
constexpr PickSources<kFactor, kLanes> MakeSources() {
  PickSources<kFactor, kLanes> sources{};
  for (int s = 0; s < (kFactor + 1) / 2; ++s) {
    const int width = 2 * s + 1 < kFactor ? 2 * kLanes : kLanes;
    for (int k = 0; k < kLanes; ++k) {
      const int at = k * kFactor - 2 * s * kLanes;
      sources.down[s][k] = at >= 0 && at < width ? at : -1;
    }
  }
  for (int q = -kLanes; q < kFactor * kLanes; ++q) {
    sources.up[kLanes + q] = q >= 0 && q % kFactor == 0 ? q / kFactor : -1;
  }
  return sources;
}

template <int kFactor, int kLanes>
inline constexpr PickSources<kFactor, kLanes> kPickSources = MakeSources<kFactor, kLanes>();

// Registers of dst filled with every kFactor-th sample of in, from in[0], two source registers
// per permute; returns the samples written. Reads only whole groups of kFactor registers inside
// in[0, available).
template <int kFactor, class T>
ZAL_INLINE long long DownPicked(const T* in, long long available, T* dst) {
  constexpr int kLanes = kPickLanes<T>;
  // From kFactor = kLanes on every register gives one lane: scalar loads do as well (measured).
  if constexpr (kFactor >= kLanes) {
    return 0;
  } else {
    constexpr int kPairs = kFactor / 2;
    constexpr auto& kSources = kPickSources<kFactor, kLanes>;
    using Pick = decltype(MakePairPick(T(0), nullptr));
    Pick pairs[kPairs];
    for (int s = 0; s < kPairs; ++s) pairs[s] = MakePairPick(T(0), kSources.down[s]);
    const Pick last = MakePick(T(0), kSources.down[(kFactor - 1) / 2]);
    const long long groups = available / (kLanes * kFactor);
    for (long long g = 0; g < groups; ++g) {
      const T* x = in + g * kLanes * kFactor;
      auto out = PairPicked(pairs[0], LoadPicks(x), LoadPicks(x + kLanes));
      // Unrolled at compile time, so that the picks stay in registers.
      [&]<int... kPair>(std::integer_sequence<int, kPair...>) {
        ((out = Joined(out, PairPicked(pairs[kPair + 1], LoadPicks(x + 2 * (kPair + 1) * kLanes),
                                       LoadPicks(x + (2 * kPair + 3) * kLanes)))),
         ...);
      }
      (std::make_integer_sequence<int, kPairs - 1>{});
      if constexpr (kFactor % 2 == 1) {
        out = Joined(out, Picked(last, LoadPicks(x + (kFactor - 1) * kLanes)));
      }
      StorePicks(dst + g * kLanes, out);
    }
    return groups * kLanes;
  }
}

// Whole registers of src spread over kFactor registers each, sample k at dst[k kFactor + phase];
// returns the samples placed.
template <int kFactor, class T>
ZAL_INLINE long long UpPicked(const T* src, long long len, T* dst, int phase) {
  constexpr int kLanes = kPickLanes<T>;
  if constexpr (kFactor > kLanes) {
    return 0;
  } else {
    using Pick = decltype(MakePick(T(0), nullptr));
    const std::int32_t* sources = kPickSources<kFactor, kLanes>.up + kLanes - phase;
    Pick picks[kFactor];
    for (int r = 0; r < kFactor; ++r) picks[r] = MakePick(T(0), sources + r * kLanes);
    const long long groups = len / kLanes;
    for (long long g = 0; g < groups; ++g) {
      const auto x = LoadPicks(src + g * kLanes);
      T* out = dst + g * kLanes * kFactor;
      [&]<int... kRegister>(std::integer_sequence<int, kRegister...>) {
        (StorePicks(out + kRegister * kLanes, Picked(picks[kRegister], x)), ...);
      }
      (std::make_integer_sequence<int, kFactor>{});
    }
    return groups * kLanes;
  }
}

// The factors that lane picks serve at some level: 2 ... 16.
using PickedFactors =
    std::integer_sequence<int, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16>;

template <class T, int... kFactors>
long long DownByPicks(const T* in, long long available, T* dst, int factor,
                      std::integer_sequence<int, kFactors...>) {
  long long done = 0;
  static_cast<void>(
      ((factor == kFactors && (done = DownPicked<kFactors>(in, available, dst), true)) || ...));
  return done;
}

template <class T, int... kFactors>
long long UpByPicks(const T* src, long long len, T* dst, int factor, int phase,
                    std::integer_sequence<int, kFactors...>) {
  long long done = 0;
  static_cast<void>(
      ((factor == kFactors && (done = UpPicked<kFactors>(src, len, dst, phase), true)) || ...));
  return done;
}

template <class T>
EngStatus DownSample(const T* src, int len, T* dst, int* dst_len, int factor, int* phase) {
  if (const EngStatus status = CheckResampling(src, len, dst, dst_len, factor, phase)) {
    return status;
  }
  if (factor == 1) {
    Copy(src, dst, len);
    *dst_len = len;
    *phase = 0;
    return engStsNoErr;
  }
  const long long first = *phase;
  const long long count = first < len ? (len - first + factor - 1) / factor : 0;
  // Only an index that is kept forms a pointer: the phase may lie past the block.
  const T* in = count > 0 ? src + first : src;
  long long k = count > 0 ? DownByPicks(in, len - first, dst, factor, PickedFactors{}) : 0;
  for (; k + 4 <= count; k += 4) {
    const T x0 = in[k * factor];
    const T x1 = in[(k + 1) * factor];
    const T x2 = in[(k + 2) * factor];
    const T x3 = in[(k + 3) * factor];
    dst[k] = x0;
    dst[k + 1] = x1;
    dst[k + 2] = x2;
    dst[k + 3] = x3;
  }
  for (; k < count; ++k) dst[k] = in[k * factor];
  *dst_len = static_cast<int>(count);
  *phase = static_cast<int>(first + count * factor - len);
  return engStsNoErr;
}

// Past the picked registers the zeros go out at full vector width first; the samples then land in
// their slots.
template <class T>
EngStatus UpSample(const T* src, int len, T* dst, int* dst_len, int factor, int* phase) {
  if (const EngStatus status = CheckResampling(src, len, dst, dst_len, factor, phase)) {
    return status;
  }
  const long long outputs = static_cast<long long>(len) * factor;
  if (outputs > 0x7FFFFFFF) return engStsSizeErr;
  if (factor == 1) {
    Copy(src, dst, len);
  } else {
    long long k = UpByPicks(src, len, dst, factor, *phase, PickedFactors{});
    Fill(dst + k * factor, T(0), outputs - k * factor);
    T* out = dst + *phase;
    for (; k + 4 <= len; k += 4) {
      out[k * factor] = src[k];
      out[(k + 1) * factor] = src[k + 1];
      out[(k + 2) * factor] = src[k + 2];
      out[(k + 3) * factor] = src[k + 3];
    }
    for (; k < len; ++k) out[k * factor] = src[k];
  }
  *dst_len = static_cast<int>(outputs);
  return engStsNoErr;
}
