// The machine's fused multiply-add peak, measured: independent chains that never leave the
// registers, at the widest register width the processor has. Built with AVX-512 flags; each
// width runs only where the processor supports it.
#include <immintrin.h>

#include <cstdint>

#include "bench/fir_peak.h"

namespace zal::bench::fir {
namespace {

// Twelve chains cover the fused multiply-add latency times the units on current processors;
// the chains depend on nothing but themselves, so they stay in registers.
constexpr int kChains = 12;

__attribute__((target("avx512f"))) float Chains512(std::int64_t rounds) {
  __m512 acc[kChains];
  for (int c = 0; c < kChains; ++c) acc[c] = _mm512_set1_ps(static_cast<float>(c));
  const __m512 a = _mm512_set1_ps(0.999f);
  const __m512 b = _mm512_set1_ps(0.001f);
  for (std::int64_t r = 0; r < rounds; ++r) {
    for (int c = 0; c < kChains; ++c) acc[c] = _mm512_fmadd_ps(acc[c], a, b);
  }
  __m512 sum = acc[0];
  for (int c = 1; c < kChains; ++c) sum = _mm512_add_ps(sum, acc[c]);
  float lanes[16];
  _mm512_storeu_ps(lanes, sum);
  return lanes[0];
}

__attribute__((target("avx2,fma"))) float Chains256(std::int64_t rounds) {
  __m256 acc[kChains];
  for (int c = 0; c < kChains; ++c) acc[c] = _mm256_set1_ps(static_cast<float>(c));
  const __m256 a = _mm256_set1_ps(0.999f);
  const __m256 b = _mm256_set1_ps(0.001f);
  for (std::int64_t r = 0; r < rounds; ++r) {
    for (int c = 0; c < kChains; ++c) acc[c] = _mm256_fmadd_ps(acc[c], a, b);
  }
  __m256 sum = acc[0];
  for (int c = 1; c < kChains; ++c) sum = _mm256_add_ps(sum, acc[c]);
  float lanes[8];
  _mm256_storeu_ps(lanes, sum);
  return lanes[0];
}

}  // namespace

int PeakLanes() {
  if (__builtin_cpu_supports("avx512f")) return 16;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return 8;
  return 0;
}

double PeakProbe(std::int64_t rounds) {
  switch (PeakLanes()) {
    case 16:
      return Chains512(rounds);
    case 8:
      return Chains256(rounds);
    default:
      return 0;
  }
}

std::int64_t PeakFlopsPerRound() {
  return 2LL * kChains * PeakLanes();
}

}  // namespace zal::bench::fir
