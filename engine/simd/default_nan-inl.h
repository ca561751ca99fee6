// The one NaN every primitive computes, in every level and in the portable variants. x86
// arithmetic passes on one operand's NaN, and which one depends on the operand order the compiler
// picked, which differs between the SSE and VEX encodings; so any NaN an operation may have
// propagated becomes the default NaN, the one that invalid operations (0 * inf, inf - inf,
// sqrt(-1)) produce anyway.
#pragma once

#include <bit>
#include <cstdint>

#include "engine/core/shapes.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

inline constexpr float kDefaultNaNF32 = std::bit_cast<float>(std::uint32_t{0xFFC00000u});
inline constexpr double kDefaultNaNF64 = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000u});

inline float DefaultNaN(float x) {
  return x != x ? kDefaultNaNF32 : x;
}
inline double DefaultNaN(double x) {
  return x != x ? kDefaultNaNF64 : x;
}
inline Complex32 DefaultNaN(Complex32 z) {
  return {DefaultNaN(z.re), DefaultNaN(z.im)};
}
inline Complex64 DefaultNaN(Complex64 z) {
  return {DefaultNaN(z.re), DefaultNaN(z.im)};
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
