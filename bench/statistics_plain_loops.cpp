// Plain loops as a user would write them, built with the project's default flags.
#include <benchmark/benchmark.h>

#include <cmath>

#include "bench/statistics_contenders.h"

namespace zal::bench::statistics {

Contender PlainLoops() {
  Contender c{"plain", {}};
  c.kernels[kSum] = [](const Buffers& x) {
    float sum = 0;
    for (unsigned i = 0; i < x.n; ++i) sum += x.a[i];
    benchmark::DoNotOptimize(sum);
  };
  c.kernels[kDotProduct] = [](const Buffers& x) {
    float sum = 0;
    for (unsigned i = 0; i < x.n; ++i) sum += x.a[i] * x.b[i];
    benchmark::DoNotOptimize(sum);
  };
  c.kernels[kNormL2] = [](const Buffers& x) {
    float sum = 0;
    for (unsigned i = 0; i < x.n; ++i) sum += x.a[i] * x.a[i];
    benchmark::DoNotOptimize(std::sqrt(sum));
  };
  c.kernels[kMaxIndex] = [](const Buffers& x) {
    unsigned best = 0;
    for (unsigned i = 1; i < x.n; ++i) {
      if (x.a[i] > x.a[best]) best = i;
    }
    benchmark::DoNotOptimize(best);
  };
  c.kernels[kMinMaxIndex] = [](const Buffers& x) {
    unsigned low = 0;
    unsigned high = 0;
    for (unsigned i = 1; i < x.n; ++i) {
      if (x.a[i] < x.a[low]) low = i;
      if (x.a[i] > x.a[high]) high = i;
    }
    benchmark::DoNotOptimize(low + high);
  };
  c.kernels[kMagnitude] = [](const Buffers& x) {
    for (unsigned i = 0; i < x.n; ++i) x.first[i] = std::abs(x.z[i]);
  };
  c.kernels[kPowerSpectr] = [](const Buffers& x) {
    for (unsigned i = 0; i < x.n; ++i) x.first[i] = std::norm(x.z[i]);
  };
  c.kernels[kCartToPolar] = [](const Buffers& x) {
    for (unsigned i = 0; i < x.n; ++i) {
      x.first[i] = std::abs(x.z[i]);
      x.second[i] = std::arg(x.z[i]);
    }
  };
  return c;
}

}  // namespace zal::bench::statistics
