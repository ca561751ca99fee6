// Drivers of the conversion shapes, whose sources and destinations differ in element type: the
// source type, the result type, the parameters a case sweeps (scales, rounding codes, factors,
// channel counts) and the call. ConversionRunner runs them.
#pragma once

#include <cfloat>
#include <climits>
#include <span>

#include "engine/core/shapes.h"

namespace zal::test::harness {

// What a conversion case passes besides pointers and lengths.
struct ConversionParameters {
  int mode = 0;
  int scale = 0;
  float factor = 1.0f;
  int channels = 1;
};

// Scales around each target's width and the ends of the factor's reach, plus values that must be
// limited.
inline constexpr int kConversionScales[] = {0,   1,   -1,   15,  -15, 16,      -16,    23,
                                            -23, 31,  -31,  -32, 100, -126,    -127,   126,
                                            127, 128, -128, 149, 150, INT_MAX, INT_MIN};
// Rounding codes: the two every rounded conversion takes, the one some take, and refused ones.
inline constexpr int kEngineRoundingCodes[] = {0, 2, 1, 3, -1};
inline constexpr int kHalfModes[] = {0, 1, 2};
inline constexpr int kNoModes[] = {0};
inline constexpr int kNoScales[] = {0};
inline constexpr float kFactors[] = {1.0f, 0x1p-15f, 0x1p-23f, 0x1p-31f, 0.5f, 2.0f, 0x1p-127f,
                                     0x1p-149f, 0.0f, 0x1p127f, 3.0f,
                                     // Either side of the smallest factor whose 256th is normal.
                                     0x1p-118f, -0x1.8p-118f, 0x1.fffffep-119f};
inline constexpr float kNoFactors[] = {1.0f};

namespace conversion_kinds {

// Elementwise: (src, dst, n) with no, a scale, a mode, or both parameters.
struct Plain {
  static constexpr std::span<const int> kModes = kNoModes;
  static constexpr std::span<const int> kScales = kNoScales;
};
struct Scaled {
  static constexpr std::span<const int> kModes = kNoModes;
  static constexpr std::span<const int> kScales = kConversionScales;
};
struct Rounded {
  static constexpr std::span<const int> kModes = kEngineRoundingCodes;
  static constexpr std::span<const int> kScales = kConversionScales;
};
struct HalfMode {
  static constexpr std::span<const int> kModes = kHalfModes;
  static constexpr std::span<const int> kScales = kNoScales;
};

}  // namespace conversion_kinds

template <class Function, class Kind>
struct ElementwiseConversion;

template <class From, class To, class Kind>
struct ElementwiseConversion<EngStatus(const From*, To*, int), Kind> {
  using Source = From;
  using Result = To;
  using Function = EngStatus(const From*, To*, int);
  static constexpr bool kChannels = false;
  static constexpr std::span<const int> kModes = Kind::kModes;
  static constexpr std::span<const int> kScales = Kind::kScales;
  static constexpr std::span<const float> kFactorList = kNoFactors;
  static EngStatus Call(Function* f, const From* src, To* dst, int n, const ConversionParameters&) {
    return f(src, dst, n);
  }
};

template <class From, class To, class Kind>
struct ElementwiseConversion<EngStatus(const From*, To*, int, int), Kind> {
  using Source = From;
  using Result = To;
  using Function = EngStatus(const From*, To*, int, int);
  static constexpr bool kChannels = false;
  static constexpr std::span<const int> kModes = Kind::kModes;
  static constexpr std::span<const int> kScales = Kind::kScales;
  static constexpr std::span<const float> kFactorList = kNoFactors;
  // The one parameter is the scale, or the mode for the half conversion.
  static EngStatus Call(Function* f, const From* src, To* dst, int n,
                        const ConversionParameters& p) {
    return f(src, dst, n, kModes.size() > 1 ? p.mode : p.scale);
  }
};

template <class From, class To, class Kind>
struct ElementwiseConversion<EngStatus(const From*, To*, int, int, int), Kind> {
  using Source = From;
  using Result = To;
  using Function = EngStatus(const From*, To*, int, int, int);
  static constexpr bool kChannels = false;
  static constexpr std::span<const int> kModes = Kind::kModes;
  static constexpr std::span<const int> kScales = Kind::kScales;
  static constexpr std::span<const float> kFactorList = kNoFactors;
  static EngStatus Call(Function* f, const From* src, To* dst, int n,
                        const ConversionParameters& p) {
    return f(src, dst, n, p.mode, p.scale);
  }
};

// Interleaved in, planar out: n counts frames, the channels are carved from one destination.
template <class From>
struct DeinterleaveConversionDriver {
  using Source = From;
  using Result = float;
  using Function = engine::DeinterleaveConversion<From>;
  static constexpr bool kChannels = true;
  static constexpr bool kPlanarResult = true;
  static constexpr std::span<const int> kModes = kNoModes;
  static constexpr std::span<const int> kScales = kNoScales;
  static constexpr std::span<const float> kFactorList = kFactors;
  static EngStatus Call(Function* f, const From* src, float* const* dst, int frames,
                        const ConversionParameters& p) {
    return f(src, dst, p.channels, frames, p.factor);
  }
};

template <class To>
struct InterleaveConversionDriver {
  using Source = float;
  using Result = To;
  using Function = engine::InterleaveConversion<To>;
  static constexpr bool kChannels = true;
  static constexpr bool kPlanarResult = false;
  static constexpr std::span<const int> kModes = kEngineRoundingCodes;
  static constexpr std::span<const int> kScales = kConversionScales;
  static constexpr std::span<const float> kFactorList = kNoFactors;
  static EngStatus Call(Function* f, const float* const* src, To* dst, int frames,
                        const ConversionParameters& p) {
    return f(src, dst, p.channels, frames, p.mode, p.scale);
  }
};

}  // namespace zal::test::harness
