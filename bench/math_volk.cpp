// VOLK's kernels where it has the function (float only), through its dispatcher.
#include <volk/volk.h>

#include "bench/math_contenders.h"

namespace zal::bench::math {

const Contender* Volk() {
  static const Contender contender = [] {
    Contender c{"volk", "VOLK 2, dispatched", {}, {}};
    c.f32[kSqrt] = [](const float* a, const float*, float* d, int n) {
      volk_32f_sqrt_32f(d, a, static_cast<unsigned>(n));
    };
    c.f32[kExp] = [](const float* a, const float*, float* d, int n) {
      volk_32f_exp_32f(d, a, static_cast<unsigned>(n));
    };
    c.f32[kPow] = [](const float* a, const float* b, float* d, int n) {
      volk_32f_x2_pow_32f(d, b, a, static_cast<unsigned>(n));
    };
    return c;
  }();
  return &contender;
}

}  // namespace zal::bench::math
