// The scale factors of the conversions, 2^-scale, as exact powers of two. Included by the kernels
// and by the portable variant; each translation unit gets its own copy inside its own namespace.
#pragma once

#include <cstdint>
#include <cstring>

namespace zal::engine::ZAL_LEVEL {
namespace {

// Built in the exponent field of 1.0, so the scale is limited to the field's reach: beyond +-127
// it acts as +-127, and at 127 the field is zero, which makes the factor 0.
inline float ScaleFactor(int scale) {
  const int limited = scale < -127 ? -127 : (scale > 127 ? 127 : scale);
  const std::uint32_t bits = static_cast<std::uint32_t>(127 - limited) << 23;
  float factor;
  std::memcpy(&factor, &bits, sizeof factor);
  return factor;
}

// The same in double precision, the scale limited to +-1023.
inline double ScaleFactorF64(int scale) {
  const int limited = scale < -1023 ? -1023 : (scale > 1023 ? 1023 : scale);
  const std::uint64_t bits = static_cast<std::uint64_t>(1023 - limited) << 52;
  double factor;
  std::memcpy(&factor, &bits, sizeof factor);
  return factor;
}

// 2^-scale in single precision as a correctly rounded power would give it: subnormal down to
// 2^-149, 0 below, +Inf above 2^127.
inline float ExactPowerOfTwo(int scale) {
  const int exponent = scale > 200 ? -200 : (scale < -200 ? 200 : -scale);
  std::uint32_t bits = 0;
  if (exponent > 127) {
    bits = 0x7F800000;
  } else if (exponent >= -126) {
    bits = static_cast<std::uint32_t>(exponent + 127) << 23;
  } else if (exponent >= -149) {
    bits = std::uint32_t{1} << (exponent + 149);
  }
  float factor;
  std::memcpy(&factor, &bits, sizeof factor);
  return factor;
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
