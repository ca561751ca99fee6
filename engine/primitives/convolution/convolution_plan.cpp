#include "engine/primitives/convolution/convolution_plan.h"

#include <cstring>

namespace zal::engine {
namespace {

// Costs in units of one multiply-add of the direct method, fitted to a grid measured on an
// x86-64 server with AVX-512 (family 25) at the avx2 and avx512 levels: a block of N points
// (forward and inverse real transform, spectrum product, overlap-add) costs about
// N * (kTransformPerStage * log2 N + kTransformPerPoint).
constexpr double kTransformPerStage = 1.6;
constexpr double kTransformPerPoint = 6.0;
// Below this many elements in the shorter operand the transform never wins.
constexpr long long kTransformFrom = 64;

int CeilLog2(long long n) {
  int order = 0;
  while ((1LL << order) < n) ++order;
  return order;
}

double BlockCost(int order) {
  const double n = static_cast<double>(1LL << order);
  return n * (kTransformPerStage * order + kTransformPerPoint);
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

// Four independent multiply-xor streams over 8-byte words, so that the check runs at load speed.
unsigned long long ConvolutionChecksum(const unsigned char* bytes, long long count) {
  constexpr unsigned long long kPrime = 0x100000001B3ULL;
  unsigned long long h[4] = {0xCBF29CE484222325ULL, 1, 2, 3};
  long long i = 0;
  for (; i + 32 <= count; i += 32) {
    for (int s = 0; s < 4; ++s) {
      unsigned long long word;
      std::memcpy(&word, bytes + i + 8 * s, 8);
      h[s] = (h[s] ^ word) * kPrime;
    }
  }
  for (; i < count; ++i) h[0] = (h[0] ^ bytes[i]) * kPrime;
  return h[0] ^ (h[1] * 3) ^ (h[2] * 5) ^ (h[3] * 7);
}

}  // namespace zal::engine
