// The conversion kernels, written once against the conversion lanes. Each reproduces the portable
// variant bit for bit: every step is an exact operation or one IEEE rounding that the portable
// variant performs the same way.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "engine/core/primitive_declarations.h"
#include "engine/core/selected_features.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/primitives/conversion/conversion_factors-inl.h"
#include "engine/simd/vec_convert-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr std::ptrdiff_t kLanes = kConvertLanes;

// dst[i] = op(src[i]) for i < n, n at most one register's lanes, through a zeroed copy on the
// stack, so that nothing is read or written past the caller's arrays.
template <class From, class To, class Op>
ZAL_INLINE void ConvertPartial(Op op, const From* src, To* dst, std::ptrdiff_t n) {
  From in[kLanes] = {};
  To out[kLanes];
  std::memcpy(in, src, static_cast<std::size_t>(n) * sizeof(From));
  StoreLanes(out, op(LoadLanes(in)));
  std::memcpy(dst, out, static_cast<std::size_t>(n) * sizeof(To));
}

// Four registers from src + i to dst + i. Whole-register loads and stores (for 24-bit samples)
// stay inside the arrays: a register's spill-over is the next one's samples, and the fourth
// spills only when kFollowed says that a whole register comes after it.
template <bool kFollowed, class From, class To, class Op>
ZAL_INLINE void ConvertFour(Op op, const From* src, To* dst) {
  const auto in = LoadFourLanes<kFollowed>(src);
  const auto r0 = op(in[0]);
  const auto r1 = op(in[1]);
  const auto r2 = op(in[2]);
  const auto r3 = op(in[3]);
  StoreLanesFollowed(dst, r0);
  StoreLanesFollowed(dst + kLanes, r1);
  StoreLanesFollowed(dst + 2 * kLanes, r2);
  if constexpr (kFollowed) {
    StoreLanesFollowed(dst + 3 * kLanes, r3);
  } else {
    StoreLanes(dst + 3 * kLanes, r3);
  }
}

// dst[i] = op(src[i]) for i < n, lanes at a time.
template <class From, class To, class Op>
ZAL_INLINE void ConvertSteps(Op op, const From* src, To* dst, std::ptrdiff_t n) {
  std::ptrdiff_t i = 0;
  for (; i + 5 * kLanes <= n; i += 4 * kLanes) ConvertFour<true>(op, src + i, dst + i);
  if (i + 4 * kLanes <= n) {
    ConvertFour<false>(op, src + i, dst + i);
    i += 4 * kLanes;
  }
  for (; i + 2 * kLanes <= n; i += kLanes) {
    StoreLanesFollowed(dst + i, op(LoadLanesFollowed(src + i)));
  }
  if (i + kLanes <= n) {
    StoreLanes(dst + i, op(LoadLanes(src + i)));
    i += kLanes;
  }
  if (i < n) ConvertPartial(op, src + i, dst + i, n - i);
}

template <class From, class To, class Op>
ZAL_INLINE void ConvertRange(Op op, const From* src, To* dst, std::ptrdiff_t n) {
  ConvertSteps(op, src, dst, n);
}

#if ZAL_LEVEL_INDEX >= 5
// 24-bit samples to 32-bit lanes with byte permutes, four registers a step.
template <class To, class Op>
ZAL_BYTE_PERMUTES ZAL_NOINLINE void ConvertStepsByBytePermutes(Op op, const Int24* src, To* dst,
                                                               std::ptrdiff_t n) {
  std::ptrdiff_t i = 0;
  for (; i + 4 * kLanes <= n; i += 4 * kLanes) {
    const auto in = LoadFourLanesByBytePermutes(src + i);
    StoreLanes(dst + i, op(in[0]));
    StoreLanes(dst + i + kLanes, op(in[1]));
    StoreLanes(dst + i + 2 * kLanes, op(in[2]));
    StoreLanes(dst + i + 3 * kLanes, op(in[3]));
  }
  ConvertSteps(op, src + i, dst + i, n - i);
}

// The byte permutes where the feature word in force has them (a forced level's word does not).
template <class To, class Op>
ZAL_INLINE void ConvertRange(Op op, const Int24* src, To* dst, std::ptrdiff_t n) {
  if (SelectedFeatures() & engCpuAVX512VBMI) return ConvertStepsByBytePermutes(op, src, dst, n);
  ConvertSteps(op, src, dst, n);
}
#endif

// The rounding-mode codes of the rounded conversions.
constexpr int kTowardZero = 0;
constexpr int kNearestEven = 1;
constexpr int kHalfAway = 2;

// Runs convert(std::bool_constant<round>) for code 0 (truncation) or 2 (halves away from zero);
// refuses any other code.
template <class Convert>
ZAL_INLINE EngStatus WithRounding(int mode, Convert convert) {
  if (mode == kTowardZero) return convert(std::false_type{});
  if (mode == kHalfAway) return convert(std::true_type{});
  return engStsRoundModeNotSupportedErr;
}

// The processor's rounding forced to nearest for the lifetime of the object, if the caller had
// set another mode.
class NearestRounding {
 public:
  NearestRounding() : saved_(_mm_getcsr()) {
    if (saved_ & kRoundingBits) _mm_setcsr(saved_ & ~kRoundingBits);
  }
  ~NearestRounding() {
    if (saved_ & kRoundingBits) _mm_setcsr(saved_);
  }
  NearestRounding(const NearestRounding&) = delete;
  NearestRounding& operator=(const NearestRounding&) = delete;

 private:
  static constexpr unsigned kRoundingBits = 0x6000;
  unsigned saved_;
};

// y + 0.5 carrying the sign of y (a NaN stays a NaN).
ZAL_INLINE CF AddSignedHalf(CF y) {
  return y + Or(And(y, BroadcastLanes(-0.0f)), BroadcastLanes(0.5f));
}
ZAL_INLINE CD AddSignedHalf(CD y) {
  return y + Or(And(y, BroadcastLanes(-0.0)), BroadcastLanes(0.5));
}

// Float to a narrow integer (16 or 8 bits): limited from above to the target's maximum first,
// so that the truncation overflows only downwards (to -2^31), which the store saturates.
template <bool kRound>
struct ToNarrowInteger {
  CF factor;
  CF maximum;
  ZAL_INLINE CI operator()(CF x) const {
    CF y = LimitAbove(x * factor, maximum);
    if constexpr (kRound) y = AddSignedHalf(y);
    return Truncate(y);
  }
};

// Float to 32 bits: 2^31 and above truncate to -2^31 like a NaN does; flipping every bit of those
// lanes gives 2^31 - 1.
template <bool kRound>
struct FloatToS32 {
  CF factor;
  ZAL_INLINE CI operator()(CF x) const {
    CF y = x * factor;
    if constexpr (kRound) y = AddSignedHalf(LimitAbove(y, BroadcastLanes(2147483648.0f)));
    return Truncate(y) ^ GreaterEqual(y, BroadcastLanes(2147483648.0f));
  }
};

template <bool kRound>
struct DoubleToS32 {
  CD factor;
  ZAL_INLINE CI operator()(CD x) const {
    CD y = LimitAbove(x * factor, BroadcastLanes(2147483647.0));
    if constexpr (kRound) y = AddSignedHalf(y);
    return Truncate(y);
  }
};

// Limited to the 24-bit range (a NaN to its minimum), then rounded in the current mode, which the
// caller forces to nearest.
struct ToS24NearestEven {
  CF factor;
  ZAL_INLINE CI operator()(CF x) const {
    const CF y = LimitBelow(x * factor, BroadcastLanes(-8388608.0f));
    return RoundInCurrentMode(LimitAbove(y, BroadcastLanes(8388607.0f)));
  }
};

// The library's own 24-bit rule: scaled inputs are first limited to +-1.0; the result is limited
// to the 24-bit range (a NaN to its minimum) and truncated, or rounded with halves away from zero
// by the fraction the truncation left.
template <bool kRound, bool kLimitToUnit>
struct ToS24Limited {
  CF factor;
  ZAL_INLINE CI operator()(CF x) const {
    CF y = x;
    // x >= 1.0 gives the factor and x <= -1.0 its negation: x limited to +-1.0 (a NaN kept), then
    // scaled, is the same product.
    if constexpr (kLimitToUnit) {
      y = LimitBelowKeepingNaN(LimitAbove(x, BroadcastLanes(1.0f)), BroadcastLanes(-1.0f)) * factor;
    }
    y = LimitAbove(LimitBelow(y, BroadcastLanes(-8388608.0f)), BroadcastLanes(8388607.0f));
    CI i = Truncate(y);
    if constexpr (kRound) {
      const CF fraction = y - ToFloat(i);
      i = i - GreaterEqual(fraction, BroadcastLanes(0.5f)) +
          GreaterEqual(BroadcastLanes(-0.5f), fraction);
    }
    return i;
  }
};

// The truncating 24-bit rule for factors of at least 2^23: every input at or beyond +-1.0 already
// scales beyond the 24-bit range, so limiting the product gives what limiting the input first
// would, a NaN included, with two operations less.
struct ToS24WideFactor {
  CF factor;
  ZAL_INLINE CI operator()(CF x) const {
    const CF y = LimitBelow(x * factor, BroadcastLanes(-8388608.0f));
    return Truncate(LimitAbove(y, BroadcastLanes(8388607.0f)));
  }
};

// ---- Binary16 -----------------------------------------------------------------------------------

// Exact. Normal values move their exponent and fraction fields; subnormals are 2^-14 + m 2^-24
// less 2^-14, an exact subtraction of normal floats, so no denormal mode can touch them; NaNs come
// out quiet with their payload.
ZAL_INLINE CF HalfToFloat(CI h) {
#if ZAL_LEVEL_INDEX >= 5
  return HalfToFloatInstruction(h);
#else
  const CI magnitude = h & BroadcastLanes(0x7FFF);
  const CI shifted = ShiftLeft<13>(magnitude);
  const CI exponent = shifted & BroadcastLanes(0x0F800000);
  const CI rebiased = shifted + BroadcastLanes((127 - 15) << 23);
  const CI is_special = Equal(exponent, BroadcastLanes(0x0F800000));
  const CI is_nan = Greater(magnitude, BroadcastLanes(0x7C00));
  const CI special =
      (rebiased + BroadcastLanes((128 - 16) << 23)) | (is_nan & BroadcastLanes(0x400000));
  const CF tiny = AsFloat(rebiased + BroadcastLanes(1 << 23)) - AsFloat(BroadcastLanes(113 << 23));
  const CI is_tiny = Equal(exponent, BroadcastLanes(0));
  // A zero difference is -0 when the caller rounds downwards: its sign comes from h alone.
  const CI tiny_magnitude = AsInt(tiny) & BroadcastLanes(0x7FFFFFFF);
  const CI bits = Select(is_special, special, Select(is_tiny, tiny_magnitude, rebiased));
  return AsFloat(bits | ShiftLeft<16>(h & BroadcastLanes(0x8000)));
#endif
}

// Toward zero (kNearest false) or to nearest even. Normal halves from the float's fields, with the
// rounding increment added below the kept bits (carrying into the infinity past the largest
// finite half); halves below 2^-14 from x 2^24 converted to an integer, exact for every float
// that reaches there; NaNs keep the top of their payload, quiet.
template <bool kNearest>
ZAL_INLINE CI FloatToHalf(CF x) {
#if ZAL_LEVEL_INDEX >= 5
  return kNearest ? FloatToHalfNearestInstruction(x) : FloatToHalfTowardZeroInstruction(x);
#else
  const CI bits = AsInt(x);
  const CI magnitude = bits & BroadcastLanes(0x7FFFFFFF);
  const CI sign = ShiftRightLogical<16>(bits) & BroadcastLanes(0x8000);
  CI normal = magnitude - BroadcastLanes(112 << 23);
  if constexpr (kNearest) {
    normal =
        normal + BroadcastLanes(0xFFF) + (ShiftRightLogical<13>(magnitude) & BroadcastLanes(1));
  }
  normal = ShiftRightLogical<13>(normal);
  const CI tiny = kNearest ? RoundInCurrentMode(AsFloat(magnitude) * BroadcastLanes(16777216.0f))
                           : Truncate(AsFloat(magnitude) * BroadcastLanes(16777216.0f));
  const CI overflow = BroadcastLanes(kNearest ? 0x7C00 : 0x7BFF);
  const CI nan =
      BroadcastLanes(0x7E00) | (ShiftRightLogical<13>(magnitude) & BroadcastLanes(0x3FF));
  CI half = Select(Greater(BroadcastLanes(0x38800000), magnitude), tiny, normal);
  half = Select(Greater(magnitude, BroadcastLanes(0x477FFFFF)), overflow, half);
  half = Select(Equal(magnitude, BroadcastLanes(0x7F800000)), BroadcastLanes(0x7C00), half);
  half = Select(Greater(magnitude, BroadcastLanes(0x7F800000)), nan, half);
  return half | sign;
#endif
}

// ---- Entry helpers ------------------------------------------------------------------------------

template <class From, class To, class Op>
ZAL_INLINE EngStatus Elementwise(Op op, const From* src, To* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  ConvertRange(op, src, dst, n);
  return engStsNoErr;
}

template <class To>
ZAL_INLINE EngStatus FloatToNarrow(const float* src, To* dst, int n, int mode, int scale,
                                   float maximum) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  const CF factor = BroadcastLanes(ScaleFactor(scale));
  return WithRounding(mode, [&](auto round) {
    ConvertRange(ToNarrowInteger<decltype(round)::value>{factor, BroadcastLanes(maximum)}, src, dst,
                 n);
    return engStsNoErr;
  });
}

// The float-to-24-bit rule for a rounding code: 0 and 2 the limited rule, 1 the nearest-even one.
template <class Body>
ZAL_INLINE EngStatus WithS24Rule(int mode, int scale, Body body) {
  if (mode == kNearestEven) {
    const NearestRounding nearest;
    return body(ToS24NearestEven{BroadcastLanes(ScaleFactor(scale))});
  }
  const float exact = ExactPowerOfTwo(scale);
  const CF factor = BroadcastLanes(exact);
  return WithRounding(mode, [&](auto round) {
    constexpr bool kRound = decltype(round)::value;
    if (scale == 0) return body(ToS24Limited<kRound, false>{factor});
    if (!kRound && exact >= 8388608.0f) return body(ToS24WideFactor{factor});
    return body(ToS24Limited<kRound, true>{factor});
  });
}

// ---- Planar and interleaved ---------------------------------------------------------------------

// Samples per block: the converted frames of a block stay in the first-level cache.
constexpr std::ptrdiff_t kBlockSamples = 2048;

template <class T>
EngStatus CheckChannels(const void* interleaved, T* const* planar, int channels, int frames) {
  if (!interleaved || !planar) return engStsNullPtrErr;
  if (channels <= 0) return engStsSizeErr;
  for (int c = 0; c < channels; ++c) {
    if (!planar[c]) return engStsNullPtrErr;
  }
  return frames <= 0 ? engStsSizeErr : engStsNoErr;
}

// Runs body(std::integral_constant<int, channels>) for the counts up to 8, where a frame's
// channels unroll into registers; 0 stands for any larger count.
template <class Body>
ZAL_INLINE void ForChannelCount(int channels, Body body) {
  switch (channels) {
    case 3:
      return body(std::integral_constant<int, 3>{});
    case 4:
      return body(std::integral_constant<int, 4>{});
    case 5:
      return body(std::integral_constant<int, 5>{});
    case 6:
      return body(std::integral_constant<int, 6>{});
    case 7:
      return body(std::integral_constant<int, 7>{});
    case 8:
      return body(std::integral_constant<int, 8>{});
    default:
      return body(std::integral_constant<int, 0>{});
  }
}

// Frames of a block to their channels, frame by frame: each channel's stores run sequentially.
// kChannels 0: the count is the block's own.
template <int kChannels>
ZAL_INLINE void Scatter(const float* block, float* const* dst, std::ptrdiff_t f0,
                        std::ptrdiff_t count, int channels = kChannels) {
  if constexpr (kChannels > 0) {
    // The channel loop unrolled by a fold, so that every channel's pointer stays in a register.
    [&]<int... c>(std::integer_sequence<int, c...>) {
      float* const out[] = {(dst[c] + f0)...};
      for (std::ptrdiff_t f = 0; f < count; ++f) {
        ((out[c][f] = block[f * kChannels + c]), ...);
      }
    }
    (std::make_integer_sequence<int, kChannels>{});
  } else {
    for (int c = 0; c < channels; ++c) {
      float* out = dst[c] + f0;
      for (std::ptrdiff_t f = 0; f < count; ++f) out[f] = block[f * channels + c];
    }
  }
}

template <int kChannels>
ZAL_INLINE void Gather(const float* const* src, float* block, std::ptrdiff_t f0,
                       std::ptrdiff_t count, int channels = kChannels) {
  if constexpr (kChannels > 0) {
    [&]<int... c>(std::integer_sequence<int, c...>) {
      const float* const in[] = {(src[c] + f0)...};
      for (std::ptrdiff_t f = 0; f < count; ++f) {
        ((block[f * kChannels + c] = in[c][f]), ...);
      }
    }
    (std::make_integer_sequence<int, kChannels>{});
  } else {
    for (int c = 0; c < channels; ++c) {
      const float* in = src[c] + f0;
      for (std::ptrdiff_t f = 0; f < count; ++f) block[f * channels + c] = in[f];
    }
  }
}

// Two channels: each register pair of converted samples splits into the channels directly.
template <class From, class Op>
ZAL_INLINE void DeinterleavePairs(Op op, const From* src, float* left, float* right,
                                  std::ptrdiff_t frames) {
  std::ptrdiff_t f = 0;
  for (; f + kLanes <= frames; f += kLanes) {
    const CF a = op(LoadLanes(src + 2 * f));
    const CF b = op(LoadLanes(src + 2 * f + kLanes));
    StoreLanes(left + f, EvenLanes(a, b));
    StoreLanes(right + f, OddLanes(a, b));
  }
  if (f < frames) {
    float block[2 * kLanes];
    const std::ptrdiff_t samples = 2 * (frames - f);
    for (std::ptrdiff_t j = 0; j < samples; j += kLanes) {
      ConvertPartial(op, src + 2 * f + j, block + j, samples - j < kLanes ? samples - j : kLanes);
    }
    for (std::ptrdiff_t j = 0; f + j < frames; ++j) {
      left[f + j] = block[2 * j];
      right[f + j] = block[2 * j + 1];
    }
  }
}

template <class From, class Op>
ZAL_INLINE EngStatus DeinterleaveConverted(Op op, const From* src, float* const* dst, int channels,
                                           int frames) {
  if (const EngStatus status = CheckChannels(src, dst, channels, frames)) return status;
  if (channels == 1) {
    ConvertRange(op, src, dst[0], frames);
    return engStsNoErr;
  }
  if (channels == 2) {
    DeinterleavePairs(op, src, dst[0], dst[1], frames);
    return engStsNoErr;
  }
  alignas(64) float block[kBlockSamples];
  const std::ptrdiff_t block_frames = kBlockSamples / channels;
  for (std::ptrdiff_t f0 = 0; f0 < frames; f0 += block_frames) {
    const std::ptrdiff_t count = frames - f0 < block_frames ? frames - f0 : block_frames;
    ConvertRange(op, src + f0 * channels, block, count * channels);
    ForChannelCount(channels, [&](auto channel_count) {
      Scatter<decltype(channel_count)::value>(block, dst, f0, count, channels);
    });
  }
  return engStsNoErr;
}

template <class To, class Op>
ZAL_INLINE void InterleavePairs(Op op, const float* left, const float* right, To* dst,
                                std::ptrdiff_t frames) {
  std::ptrdiff_t f = 0;
  for (; f + kLanes <= frames; f += kLanes) {
    const CF a = LoadLanes(left + f);
    const CF b = LoadLanes(right + f);
    StoreLanes(dst + 2 * f, op(ZipLow(a, b)));
    StoreLanes(dst + 2 * f + kLanes, op(ZipHigh(a, b)));
  }
  if (f < frames) {
    float block[2 * kLanes];
    for (std::ptrdiff_t j = 0; f + j < frames; ++j) {
      block[2 * j] = left[f + j];
      block[2 * j + 1] = right[f + j];
    }
    const std::ptrdiff_t samples = 2 * (frames - f);
    for (std::ptrdiff_t j = 0; j < samples; j += kLanes) {
      ConvertPartial(op, block + j, dst + 2 * f + j, samples - j < kLanes ? samples - j : kLanes);
    }
  }
}

template <class To, class Op>
ZAL_INLINE void InterleaveConverted(Op op, const float* const* src, To* dst, int channels,
                                    int frames) {
  if (channels == 1) {
    ConvertRange(op, src[0], dst, frames);
    return;
  }
  if (channels == 2) {
    InterleavePairs(op, src[0], src[1], dst, frames);
    return;
  }
  alignas(64) float block[kBlockSamples];
  const std::ptrdiff_t block_frames = kBlockSamples / channels;
  for (std::ptrdiff_t f0 = 0; f0 < frames; f0 += block_frames) {
    const std::ptrdiff_t count = frames - f0 < block_frames ? frames - f0 : block_frames;
    ForChannelCount(channels, [&](auto channel_count) {
      Gather<decltype(channel_count)::value>(src, block, f0, count, channels);
    });
    ConvertRange(op, block, dst + f0 * channels, count * channels);
  }
}

// The converted samples of an integer source times a factor; 1 leaves them as they are.
template <class Body>
ZAL_INLINE EngStatus WithFactor(float factor, Body body) {
  if (factor == 1.0f) return body([](CI x) { return ToFloat(x); }, [](CF x) { return x; });
  const CF f = BroadcastLanes(factor);
  return body([f](CI x) { return ToFloat(x) * f; }, [f](CF x) { return x * f; });
}

// Whether the 24-bit loads' factor of 256 folds into a factor: where factor / 256 is a normal
// float (or 0 or infinite), (256 x) (factor / 256) is the real product x factor, so it rounds and
// flushes as that does.
ZAL_INLINE bool AbsorbsLoadShift(float factor) {
  return factor == 0.0f || std::fabs(factor) >= 0x1p-118f;
}

}  // namespace

EngStatus ConvertU8ToF32(const unsigned char* src, float* dst, int n) {
  return Elementwise([](CI x) { return ToFloat(x); }, src, dst, n);
}
EngStatus ConvertS16ToF32Scaled(const short* src, float* dst, int n, int scale) {
  const CF f = BroadcastLanes(ScaleFactor(scale));
  return Elementwise([f](CI x) { return ToFloat(x) * f; }, src, dst, n);
}
EngStatus ConvertS16ToF64Scaled(const short* src, double* dst, int n, int scale) {
  const CD f = BroadcastLanes(ScaleFactorF64(scale));
  return Elementwise([f](CI x) { return ToDouble(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToF32Scaled(const int* src, float* dst, int n, int scale) {
  const CF f = BroadcastLanes(ScaleFactor(scale));
  return Elementwise([f](CI x) { return ToFloat(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToF64Scaled(const int* src, double* dst, int n, int scale) {
  const CD f = BroadcastLanes(ScaleFactorF64(scale));
  return Elementwise([f](CI x) { return ToDouble(x) * f; }, src, dst, n);
}
EngStatus ConvertS32ToS24Scaled(const int* src, Int24* dst, int n, int scale) {
  const CD f = BroadcastLanes(ScaleFactorF64(scale));
  return Elementwise(
      [f](CI x) {
        const CD y = LimitBelow(ToDouble(x) * f, BroadcastLanes(-8388608.0));
        return Truncate(LimitAbove(y, BroadcastLanes(8388607.0)));
      },
      src, dst, n);
}

EngStatus ConvertF32ToU8(const float* src, unsigned char* dst, int n, int mode, int scale) {
  return FloatToNarrow(src, dst, n, mode, scale, 255.0f);
}
EngStatus ConvertF32ToS16(const float* src, short* dst, int n, int mode, int scale) {
  return FloatToNarrow(src, dst, n, mode, scale, 32767.0f);
}
EngStatus ConvertF32ToS32(const float* src, int* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  const CF f = BroadcastLanes(ScaleFactor(scale));
  return WithRounding(mode, [&](auto round) {
    ConvertRange(FloatToS32<decltype(round)::value>{f}, src, dst, n);
    return engStsNoErr;
  });
}
EngStatus ConvertF64ToS32(const double* src, int* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  const CD f = BroadcastLanes(ScaleFactorF64(scale));
  return WithRounding(mode, [&](auto round) {
    ConvertRange(DoubleToS32<decltype(round)::value>{f}, src, dst, n);
    return engStsNoErr;
  });
}
EngStatus ConvertF32ToS24Even(const float* src, Int24* dst, int n, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  const NearestRounding nearest;
  ConvertRange(ToS24NearestEven{BroadcastLanes(ScaleFactor(scale))}, src, dst, n);
  return engStsNoErr;
}
EngStatus ConvertF32ToS24Limited(const float* src, Int24* dst, int n, int mode, int scale) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (mode == kNearestEven) return engStsRoundModeNotSupportedErr;
  return WithS24Rule(mode, scale, [&](auto op) {
    ConvertRange(op, src, dst, n);
    return engStsNoErr;
  });
}

EngStatus ConvertF32ToF64(const float* src, double* dst, int n) {
  return Elementwise([](CF x) { return ToDouble(x); }, src, dst, n);
}
EngStatus ConvertF64ToF32(const double* src, float* dst, int n) {
  return Elementwise([](CD x) { return ToFloat(x); }, src, dst, n);
}
EngStatus ConvertS24ToS32(const Int24* src, int* dst, int n) {
  return Elementwise([](CS24 x) { return Samples(x); }, src, dst, n);
}
EngStatus ConvertS24ToF32(const Int24* src, float* dst, int n) {
  const CF exact = BroadcastLanes(0x1p-8f);
  return Elementwise([exact](CS24 x) { return ToFloatTimes256(x) * exact; }, src, dst, n);
}

EngStatus ConvertF32ToF16(const float* src, unsigned short* dst, int n, int mode) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (mode == kTowardZero) {
    ConvertRange([](CF x) { return FloatToHalf<false>(x); }, src, dst, n);
    return engStsNoErr;
  }
  if (mode == kNearestEven) {
    const NearestRounding nearest;
    ConvertRange([](CF x) { return FloatToHalf<true>(x); }, src, dst, n);
    return engStsNoErr;
  }
  return engStsRoundModeNotSupportedErr;
}
EngStatus ConvertF16ToF32(const unsigned short* src, float* dst, int n) {
  return Elementwise([](CI h) { return HalfToFloat(h); }, src, dst, n);
}

EngStatus DeinterleaveConvertS16ToF32(const short* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return WithFactor(factor, [&](auto from_integer, auto) {
    return DeinterleaveConverted(from_integer, src, dst, channels, frames);
  });
}
EngStatus DeinterleaveConvertS24ToF32(const Int24* src, float* const* dst, int channels, int frames,
                                      float factor) {
  // Inlined with each factor rule, rather than behind a generic lambda: a short conversion would
  // spend a tenth of its time reading the arguments back through the closure.
  if (AbsorbsLoadShift(factor)) {
    const CF f = BroadcastLanes(factor * 0x1p-8f);
    return DeinterleaveConverted([f](CS24 x) { return ToFloatTimes256(x) * f; }, src, dst, channels,
                                 frames);
  }
  const CF f = BroadcastLanes(factor);
  return DeinterleaveConverted([f](CS24 x) { return ToFloat(Samples(x)) * f; }, src, dst, channels,
                               frames);
}
EngStatus DeinterleaveConvertS32ToF32(const int* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return WithFactor(factor, [&](auto from_integer, auto) {
    return DeinterleaveConverted(from_integer, src, dst, channels, frames);
  });
}
EngStatus DeinterleaveConvertF32ToF32(const float* src, float* const* dst, int channels, int frames,
                                      float factor) {
  return WithFactor(factor, [&](auto, auto from_float) {
    return DeinterleaveConverted(from_float, src, dst, channels, frames);
  });
}

EngStatus InterleaveConvertF32ToS16(const float* const* src, short* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckChannels(dst, src, channels, frames)) return status;
  const CF factor = BroadcastLanes(ScaleFactor(scale));
  return WithRounding(mode, [&](auto round) {
    InterleaveConverted(ToNarrowInteger<decltype(round)::value>{factor, BroadcastLanes(32767.0f)},
                        src, dst, channels, frames);
    return engStsNoErr;
  });
}
EngStatus InterleaveConvertF32ToS24(const float* const* src, Int24* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckChannels(dst, src, channels, frames)) return status;
  return WithS24Rule(mode, scale, [&](auto op) {
    InterleaveConverted(op, src, dst, channels, frames);
    return engStsNoErr;
  });
}
EngStatus InterleaveConvertF32ToS32(const float* const* src, int* dst, int channels, int frames,
                                    int mode, int scale) {
  if (const EngStatus status = CheckChannels(dst, src, channels, frames)) return status;
  const CF factor = BroadcastLanes(ScaleFactor(scale));
  return WithRounding(mode, [&](auto round) {
    InterleaveConverted(FloatToS32<decltype(round)::value>{factor}, src, dst, channels, frames);
    return engStsNoErr;
  });
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_CONVERSION_PRIMITIVES(ZAL_CHECK_SHAPE)
