#include "bench/iir_plain_loops.h"

namespace zal::bench::iir {
namespace {

template <class T>
void BySection(const T* taps, T* state, int sections, const T* src, T* dst, int n) {
  const T* in = src;
  for (int s = 0; s < sections; ++s) {
    const T b0 = taps[5 * s], b1 = taps[5 * s + 1], b2 = taps[5 * s + 2];
    const T a1 = taps[5 * s + 3], a2 = taps[5 * s + 4];
    T z1 = state[2 * s], z2 = state[2 * s + 1];
    for (int i = 0; i < n; ++i) {
      const T x = in[i];
      const T y = b0 * x + z1;
      z1 = b1 * x - a1 * y + z2;
      z2 = b2 * x - a2 * y;
      dst[i] = y;
    }
    state[2 * s] = z1;
    state[2 * s + 1] = z2;
    in = dst;
  }
}

template <class T>
void BySample(const T* taps, T* state, int sections, const T* src, T* dst, int n) {
  for (int i = 0; i < n; ++i) {
    T x = src[i];
    for (int s = 0; s < sections; ++s) {
      const T* c = taps + 5 * s;
      T* z = state + 2 * s;
      const T y = c[0] * x + z[0];
      z[0] = c[1] * x - c[3] * y + z[1];
      z[1] = c[2] * x - c[4] * y;
      x = y;
    }
    dst[i] = x;
  }
}

template <class T>
void Direct(const T* taps, T* state, int order, const T* src, T* dst, int n) {
  const T* b = taps;
  const T* a = taps + order + 1;
  for (int i = 0; i < n; ++i) {
    const T x = src[i];
    const T y = b[0] * x + state[0];
    for (int j = 0; j + 1 < order; ++j) state[j] = b[j + 1] * x - a[j] * y + state[j + 1];
    state[order - 1] = b[order] * x - a[order - 1] * y;
    dst[i] = y;
  }
}

}  // namespace

void PlainCascadeBySection(const float* taps, float* state, int sections, const float* src,
                           float* dst, int n) {
  BySection(taps, state, sections, src, dst, n);
}
void PlainCascadeBySection(const double* taps, double* state, int sections, const double* src,
                           double* dst, int n) {
  BySection(taps, state, sections, src, dst, n);
}
void PlainCascadeBySample(const float* taps, float* state, int sections, const float* src,
                          float* dst, int n) {
  BySample(taps, state, sections, src, dst, n);
}
void PlainCascadeBySample(const double* taps, double* state, int sections, const double* src,
                          double* dst, int n) {
  BySample(taps, state, sections, src, dst, n);
}
void PlainDirect(const float* taps, float* state, int order, const float* src, float* dst, int n) {
  Direct(taps, state, order, src, dst, n);
}
void PlainDirect(const double* taps, double* state, int order, const double* src, double* dst,
                 int n) {
  Direct(taps, state, order, src, dst, n);
}

}  // namespace zal::bench::iir
