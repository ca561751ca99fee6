// VOLK's converters through their plain entry points, which pick the aligned or unaligned kernel
// at each call. Its scalars divide (int to float) or multiply (float to int) by the full scale.
#include <volk/volk.h>

#include <cstdint>

#include "bench/conversion_contenders.h"

namespace zal::bench::conversion {

Contender VolkContender() {
  Contender c{"volk", "VOLK from the system, its dispatcher's choice", {}};
  c.kernels[kS16ToF32] = [](const Buffers& b) {
    volk_16i_s32f_convert_32f(static_cast<float*>(b.dst), static_cast<const std::int16_t*>(b.src),
                              32768.0f, b.n);
  };
  c.kernels[kF32ToS16] = [](const Buffers& b) {
    volk_32f_s32f_convert_16i(static_cast<std::int16_t*>(b.dst), static_cast<const float*>(b.src),
                              32768.0f, b.n);
  };
  c.kernels[kS32ToF32] = [](const Buffers& b) {
    volk_32i_s32f_convert_32f(static_cast<float*>(b.dst), static_cast<const std::int32_t*>(b.src),
                              2147483648.0f, b.n);
  };
  c.kernels[kF32ToS32] = [](const Buffers& b) {
    volk_32f_s32f_convert_32i(static_cast<std::int32_t*>(b.dst), static_cast<const float*>(b.src),
                              2147483648.0f, b.n);
  };
  c.kernels[kF32ToF64] = [](const Buffers& b) {
    volk_32f_convert_64f(static_cast<double*>(b.dst), static_cast<const float*>(b.src), b.n);
  };
  c.kernels[kF64ToF32] = [](const Buffers& b) {
    volk_64f_convert_32f(static_cast<float*>(b.dst), static_cast<const double*>(b.src), b.n);
  };
  return c;
}

}  // namespace zal::bench::conversion
