// Eigen's reductions over maps of the caller's arrays, built with -O3 -march=native.
#include <benchmark/benchmark.h>

#include <Eigen/Core>

#include "bench/statistics_contenders.h"

namespace zal::bench::statistics {
namespace {

Eigen::Map<const Eigen::VectorXf> View(const float* p, unsigned n) {
  return {p, static_cast<Eigen::Index>(n)};
}

}  // namespace

Contender EigenContender() {
  Contender c{"eigen", {}};
  c.kernels[kSum] = [](const Buffers& x) { benchmark::DoNotOptimize(View(x.a, x.n).sum()); };
  c.kernels[kDotProduct] = [](const Buffers& x) {
    benchmark::DoNotOptimize(View(x.a, x.n).dot(View(x.b, x.n)));
  };
  c.kernels[kNormL2] = [](const Buffers& x) { benchmark::DoNotOptimize(View(x.a, x.n).norm()); };
  c.kernels[kMaxIndex] = [](const Buffers& x) {
    Eigen::Index index;
    benchmark::DoNotOptimize(View(x.a, x.n).maxCoeff(&index));
    benchmark::DoNotOptimize(index);
  };
  c.kernels[kMinMaxIndex] = [](const Buffers& x) {
    Eigen::Index low;
    Eigen::Index high;
    benchmark::DoNotOptimize(View(x.a, x.n).minCoeff(&low));
    benchmark::DoNotOptimize(View(x.a, x.n).maxCoeff(&high));
    benchmark::DoNotOptimize(low + high);
  };
  return c;
}

}  // namespace zal::bench::statistics
