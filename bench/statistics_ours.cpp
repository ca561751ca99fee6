// The library's exported functions, dispatched at the natural level; and the read-bandwidth
// probe, SSE2 loads into four independent accumulators.
#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include "bench/statistics_contenders.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::statistics {
namespace {

namespace utility = zalaccelerate::utility;

void ReadAll(const Buffers& x) {
  const __m128i* p = reinterpret_cast<const __m128i*>(x.a);
  const unsigned blocks = x.n / 4;
  __m128i acc[4] = {_mm_setzero_si128(), _mm_setzero_si128(), _mm_setzero_si128(),
                    _mm_setzero_si128()};
  unsigned i = 0;
  for (; i + 4 <= blocks; i += 4) {
    for (int r = 0; r < 4; ++r) acc[r] = _mm_or_si128(acc[r], _mm_load_si128(p + i + r));
  }
  const __m128i all = _mm_or_si128(_mm_or_si128(acc[0], acc[1]), _mm_or_si128(acc[2], acc[3]));
  benchmark::DoNotOptimize(all);
}

}  // namespace

Contender Ours() {
  Contender c{"ours", {}};
  c.kernels[kSum] = [](const Buffers& x) { benchmark::DoNotOptimize(utility::Sum(x.n, x.a)); };
  c.kernels[kDotProduct] = [](const Buffers& x) {
    benchmark::DoNotOptimize(utility::DotProduct(x.n, x.a, x.b));
  };
  c.kernels[kNormL2] = [](const Buffers& x) {
    benchmark::DoNotOptimize(utility::NormL2(x.n, x.a));
  };
  c.kernels[kMaxIndex] = [](const Buffers& x) {
    float value;
    benchmark::DoNotOptimize(utility::MaxIndex(x.n, x.a, &value));
  };
  c.kernels[kMinMaxIndex] = [](const Buffers& x) {
    float low, high;
    int low_index, high_index;
    utility::MinMaxIndex(x.n, x.a, low, high, low_index, high_index);
    benchmark::DoNotOptimize(low_index + high_index);
  };
  c.kernels[kMagnitude] = [](const Buffers& x) { utility::Magnitude(x.n, x.z, x.first); };
  c.kernels[kPowerSpectr] = [](const Buffers& x) { utility::PowerSpectr(x.n, x.z, x.first); };
  c.kernels[kCartToPolar] = [](const Buffers& x) {
    utility::CartToPolar(x.n, reinterpret_cast<const float*>(x.z), x.first, x.second);
  };
  c.kernels[kRead] = ReadAll;
  return c;
}

}  // namespace zal::bench::statistics
