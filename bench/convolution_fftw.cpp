#include <fftw3.h>

#include <algorithm>
#include <cmath>

#include "bench/convolution_contenders.h"

namespace zal::bench {
namespace {

int CeilLog2(long long n) {
  int order = 0;
  while ((1LL << order) < n) ++order;
  return order;
}

// The block order that minimises the estimate ours uses, blocks * (3 N log2 N + 4400): blocks at
// least twice the shorter operand, none longer than the result.
int BlockOrder(long long m, long long l) {
  const int lowest = std::max(1, CeilLog2(2 * m - 1));
  const int highest = std::max(lowest, std::min(20, CeilLog2(m + l - 1)));
  int best = lowest;
  double best_cost = 0;
  for (int order = lowest; order <= highest; ++order) {
    const long long step = (1LL << order) - m + 1;
    const double blocks = static_cast<double>((l + step - 1) / step) + 0.5;
    const double cost = blocks * (3.0 * static_cast<double>(1LL << order) * order + 4400.0);
    if (order == lowest || cost < best_cost) {
      best = order;
      best_cost = cost;
    }
  }
  return best;
}

}  // namespace

FftwOverlapAdd::FftwOverlapAdd(int len_a, int len_b, bool measure) : len_a_(len_a), len_b_(len_b) {
  n_ = 1 << BlockOrder(std::min(len_a, len_b), std::max(len_a, len_b));
  time_ = fftwf_alloc_real(n_);
  filter_ = reinterpret_cast<float*>(fftwf_alloc_complex(n_ / 2 + 1));
  spectrum_ = reinterpret_cast<float*>(fftwf_alloc_complex(n_ / 2 + 1));
  const unsigned flags = measure ? FFTW_MEASURE : FFTW_ESTIMATE;
  auto* spectrum = reinterpret_cast<fftwf_complex*>(spectrum_);
  forward_ = fftwf_plan_dft_r2c_1d(n_, time_, spectrum, flags);
  filter_forward_ =
      fftwf_plan_dft_r2c_1d(n_, time_, reinterpret_cast<fftwf_complex*>(filter_), flags);
  inverse_ = fftwf_plan_dft_c2r_1d(n_, spectrum, time_, flags);
}

FftwOverlapAdd::~FftwOverlapAdd() {
  fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
  fftwf_destroy_plan(static_cast<fftwf_plan>(filter_forward_));
  fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
  fftwf_free(time_);
  fftwf_free(filter_);
  fftwf_free(spectrum_);
}

void FftwOverlapAdd::Run(const float* a, const float* b, float* dst) {
  const float* s = len_a_ <= len_b_ ? a : b;
  const float* l = len_a_ <= len_b_ ? b : a;
  const int m = std::min(len_a_, len_b_);
  const int len_l = std::max(len_a_, len_b_);
  const int step = n_ - m + 1;
  const float scale = 1.0f / static_cast<float>(n_);
  // The filter's spectrum, scaled by 1 / N once.
  std::copy(s, s + m, time_);
  std::fill(time_ + m, time_ + n_, 0.0f);
  fftwf_execute(static_cast<fftwf_plan>(filter_forward_));
  for (int i = 0; i < n_ + 2; ++i) filter_[i] *= scale;
  for (int p = 0; p < len_l; p += step) {
    const int count = std::min(step, len_l - p);
    std::copy(l + p, l + p + count, time_);
    std::fill(time_ + count, time_ + n_, 0.0f);
    fftwf_execute(static_cast<fftwf_plan>(forward_));
    // Written out: std::complex's product goes through the C library's NaN-aware routine.
    for (int k = 0; k < n_ + 2; k += 2) {
      const float re = spectrum_[k] * filter_[k] - spectrum_[k + 1] * filter_[k + 1];
      const float im = spectrum_[k] * filter_[k + 1] + spectrum_[k + 1] * filter_[k];
      spectrum_[k] = re;
      spectrum_[k + 1] = im;
    }
    fftwf_execute(static_cast<fftwf_plan>(inverse_));
    const int overlap = p > 0 ? m - 1 : 0;
    for (int i = 0; i < overlap; ++i) dst[p + i] += time_[i];
    std::copy(time_ + overlap, time_ + count + m - 1, dst + p + overlap);
  }
}

}  // namespace zal::bench
