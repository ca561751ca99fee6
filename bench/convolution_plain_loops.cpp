// Convolution and resampling as a user writes them, built -O3 -march=native: each element of the
// shorter operand scales the longer one into the destination, a loop the compiler vectorises; the
// resamplers as strided loops.
#include "bench/convolution_contenders.h"

namespace zal::bench {

void PlainConvolve(const float* a, int len_a, const float* b, int len_b, float* dst) {
  const float* s = len_a <= len_b ? a : b;
  const float* l = len_a <= len_b ? b : a;
  const int m = len_a <= len_b ? len_a : len_b;
  const int n = len_a <= len_b ? len_b : len_a;
  for (int k = 0; k < m + n - 1; ++k) dst[k] = 0;
  for (int i = 0; i < m; ++i) {
    const float c = s[i];
    float* out = dst + i;
    for (int j = 0; j < n; ++j) out[j] += c * l[j];
  }
}

template <class T>
void PlainDownSample(const T* src, T* dst, int outputs, int factor) {
  for (int k = 0; k < outputs; ++k) dst[k] = src[static_cast<long long>(k) * factor];
}

template <class T>
void PlainUpSample(const T* src, T* dst, int len, int factor) {
  for (long long i = 0; i < static_cast<long long>(len) * factor; ++i) dst[i] = 0;
  for (int k = 0; k < len; ++k) dst[static_cast<long long>(k) * factor] = src[k];
}

template void PlainDownSample(const float*, float*, int, int);
template void PlainDownSample(const double*, double*, int, int);
template void PlainUpSample(const float*, float*, int, int);
template void PlainUpSample(const double*, double*, int, int);

}  // namespace zal::bench
