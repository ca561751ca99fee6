#include "engine/primitives/convolution/convolution_plan.h"

#include <emmintrin.h>

#include <cstdint>

namespace zal::engine {
namespace {

// Costs in units of one multiply-add of the direct method, fitted (relative least squares) to the
// grid of bench/convolution_bench.cpp measured on an x86-64 server with AVX-512 under a hypervisor
// (CPUID family 26, model 2) at the avx512 level: a block of N points (forward and inverse real
// transform, spectrum product, overlap-add) costs about N * kTransformPerStage * log2 N plus
// kTransformPerBlock for the calls and passes that do not grow with N.
constexpr double kTransformPerStage = 3.0;
constexpr double kTransformPerBlock = 4400.0;
// Below this many elements in the shorter operand the transform never wins.
constexpr long long kTransformFrom = 64;

int CeilLog2(long long n) {
  int order = 0;
  while ((1LL << order) < n) ++order;
  return order;
}

double BlockCost(int order) {
  const double n = static_cast<double>(1LL << order);
  return n * kTransformPerStage * order + kTransformPerBlock;
}

long long RoundUp64(long long bytes) {
  return (bytes + 63) / 64 * 64;
}

}  // namespace

ConvolutionPlan PlanConvolution(long long len_a, long long len_b, int method) {
  const long long shorter = len_a < len_b ? len_a : len_b;
  const long long longer = len_a < len_b ? len_b : len_a;
  const ConvolutionPlan direct{kConvolutionDirect, 0, 0};
  if (method == kConvolutionDirect) return direct;
  if (method == kConvolutionAuto && shorter < kTransformFrom) return direct;
  if (2 * shorter - 1 > (1LL << kConvolutionMaxOrder)) return direct;
  // Blocks of at least twice the shorter operand, and none longer than the whole result.
  const int lowest = CeilLog2(2 * shorter - 1) > 1 ? CeilLog2(2 * shorter - 1) : 1;
  int highest = CeilLog2(len_a + len_b - 1);
  if (highest > kConvolutionMaxOrder) highest = kConvolutionMaxOrder;
  if (highest < lowest) highest = lowest;
  int best = lowest;
  double best_cost = 0;
  for (int order = lowest; order <= highest; ++order) {
    const long long step = (1LL << order) - shorter + 1;
    const long long blocks = (longer + step - 1) / step;
    // The shorter operand's spectrum costs about half a block.
    const double cost = (static_cast<double>(blocks) + 0.5) * BlockCost(order);
    if (order == lowest || cost < best_cost) {
      best = order;
      best_cost = cost;
    }
  }
  const ConvolutionPlan transform{kConvolutionTransform, best,
                                  static_cast<int>((1LL << best) - shorter + 1)};
  if (method == kConvolutionTransform) return transform;
  const double direct_cost = static_cast<double>(shorter) * static_cast<double>(longer);
  return best_cost < direct_cost ? transform : direct;
}

ConvolutionLayout LayOutConvolution(int order, int spec_bytes, int scratch_bytes,
                                    int element_bytes) {
  const long long spectrum = RoundUp64((2 + (1LL << order)) * element_bytes);
  ConvolutionLayout layout;
  layout.spec = RoundUp64(sizeof(ConvolutionTag));
  layout.scratch = layout.spec + RoundUp64(spec_bytes);
  layout.filter = layout.scratch + RoundUp64(scratch_bytes);
  layout.block = layout.filter + spectrum;
  layout.bytes = layout.block + spectrum + 64;
  return layout;
}

// Fletcher sums over 32-bit words in four 128-bit streams (a += w, b += a in every lane): every
// word counts with a weight that depends on its place, and the check runs near load speed.
unsigned long long ConvolutionChecksum(const unsigned char* bytes, long long count) {
  __m128i a[4];
  __m128i b[4];
  for (int s = 0; s < 4; ++s) {
    a[s] = _mm_set1_epi32(s + 1);
    b[s] = _mm_setzero_si128();
  }
  long long i = 0;
  for (; i + 64 <= count; i += 64) {
    for (int s = 0; s < 4; ++s) {
      a[s] = _mm_add_epi32(a[s], _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i) + s));
      b[s] = _mm_add_epi32(b[s], a[s]);
    }
  }
  alignas(16) std::uint32_t lanes[32];
  for (int s = 0; s < 4; ++s) {
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes) + s, a[s]);
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes) + 4 + s, b[s]);
  }
  unsigned long long sum = 0xCBF29CE484222325ULL;
  constexpr unsigned long long kPrime = 0x100000001B3ULL;
  for (std::uint32_t lane : lanes) sum = (sum ^ lane) * kPrime;
  for (; i < count; ++i) sum = (sum ^ bytes[i]) * kPrime;
  return sum;
}

}  // namespace zal::engine
