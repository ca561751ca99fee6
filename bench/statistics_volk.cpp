// VOLK through its plain entry points, which pick the aligned or unaligned kernel at each call.
// Its min/max index kernels return 32-bit indices; its atan2 takes a scale (1 here) and computes
// the phase only.
#include <benchmark/benchmark.h>
#include <volk/volk.h>

#include <cstdint>

#include "bench/statistics_contenders.h"

namespace zal::bench::statistics {
namespace {

const lv_32fc_t* Volk(const std::complex<float>* z) {
  return reinterpret_cast<const lv_32fc_t*>(z);
}

}  // namespace

Contender VolkContender() {
  Contender c{"volk", {}};
  c.kernels[kSum] = [](const Buffers& x) {
    float sum;
    volk_32f_accumulator_s32f(&sum, x.a, x.n);
    benchmark::DoNotOptimize(sum);
  };
  c.kernels[kDotProduct] = [](const Buffers& x) {
    float sum;
    volk_32f_x2_dot_prod_32f(&sum, x.a, x.b, x.n);
    benchmark::DoNotOptimize(sum);
  };
  c.kernels[kMaxIndex] = [](const Buffers& x) {
    std::uint32_t index;
    volk_32f_index_max_32u(&index, x.a, x.n);
    benchmark::DoNotOptimize(index);
  };
  c.kernels[kMinMaxIndex] = [](const Buffers& x) {
    std::uint32_t low;
    std::uint32_t high;
    volk_32f_index_min_32u(&low, x.a, x.n);
    volk_32f_index_max_32u(&high, x.a, x.n);
    benchmark::DoNotOptimize(low + high);
  };
  c.kernels[kMagnitude] = [](const Buffers& x) {
    volk_32fc_magnitude_32f(x.first, Volk(x.z), x.n);
  };
  c.kernels[kPowerSpectr] = [](const Buffers& x) {
    volk_32fc_magnitude_squared_32f(x.first, Volk(x.z), x.n);
  };
  c.kernels[kCartToPolar] = [](const Buffers& x) {
    volk_32fc_s32f_atan2_32f(x.second, Volk(x.z), 1.0f, x.n);
  };
  return c;
}

}  // namespace zal::bench::statistics
