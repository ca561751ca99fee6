// The reference of the convolution family: one element at a time, the same plans and work layout
// as the kernels, the portable transform for the transform method.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/convolution/convolution_plan.h"
#include "engine/primitives/fft/fft_spec.h"

namespace zal::engine::portable {
namespace {

#include "engine/primitives/convolution/convolution_transform-inl.h"

template <class T>
long long WorkBytes(const ConvolutionPlan& plan) {
  if (plan.method == kConvolutionDirect) return 0;
  ConvolutionLayout layout;
  int spec_bytes;
  return LayOut<T>(plan.order, &layout, &spec_bytes) ? layout.bytes : -1;
}

template <class T>
void ConvolveDirect(const T* s, int m, const T* l, int len_l, T* dst) {
  const long long outputs = static_cast<long long>(len_l) + m - 1;
  for (long long k = 0; k < outputs; ++k) {
    const long long j_first = k - len_l + 1 > 0 ? k - len_l + 1 : 0;
    const long long j_end = k + 1 < m ? k + 1 : m;
    T sum = 0;
    for (long long j = j_first; j < j_end; ++j) sum += s[j] * l[k - j];
    dst[k] = sum;
  }
}

// Prepares the transform afresh every call: the reference keeps nothing between calls.
template <class T>
EngStatus ConvolveTransform(const T* s, int m, const T* l, int len_l, T* dst,
                            const ConvolutionPlan& plan, unsigned char* work) {
  ConvolutionLayout layout;
  int spec_bytes;
  if (!LayOut<T>(plan.order, &layout, &spec_bytes)) return engStsFftOrderErr;
  const auto address = reinterpret_cast<std::uintptr_t>(work);
  unsigned char* base = work + ((64 - address % 64) % 64);
  reinterpret_cast<ConvolutionTag*>(base)->magic = 0;
  FFTSpec* spec = nullptr;
  if (const EngStatus status = RealPrepare(T(0), &spec, plan.order, base + layout.spec)) {
    return status;
  }
  unsigned char* scratch = base + layout.scratch;
  T* filter = reinterpret_cast<T*>(base + layout.filter);
  T* block = reinterpret_cast<T*>(base + layout.block);
  const int n = 1 << plan.order;
  for (int i = 0; i < n; ++i) filter[i] = i < m ? s[i] : T(0);
  Forward(filter, spec, scratch);
  for (long long p = 0; p < len_l; p += plan.step) {
    const int count = static_cast<int>(len_l - p < plan.step ? len_l - p : plan.step);
    for (int i = 0; i < n; ++i) block[i] = i < count ? l[p + i] : T(0);
    Forward(block, spec, scratch);
    for (int i = 0; i < n + 2; i += 2) {
      const T re = block[i] * filter[i] - block[i + 1] * filter[i + 1];
      const T im = block[i] * filter[i + 1] + block[i + 1] * filter[i];
      block[i] = re;
      block[i + 1] = im;
    }
    Inverse(block, spec, scratch);
    const int overlap = p > 0 ? m - 1 : 0;
    for (int i = 0; i < count + m - 1; ++i)
      dst[p + i] = i < overlap ? dst[p + i] + block[i] : block[i];
  }
  return engStsNoErr;
}

template <class T>
EngStatus CheckResampling(const T* src, int len, const T* dst, const int* dst_len, int factor,
                          const int* phase) {
  if (!src || !dst || !dst_len || !phase) return engStsNullPtrErr;
  if (len <= 0) return engStsSizeErr;
  if (factor <= 0) return engStsSampleFactorErr;
  return *phase < 0 || *phase >= factor ? engStsSamplePhaseErr : engStsNoErr;
}

template <class T>
EngStatus DownSample(const T* src, int len, T* dst, int* dst_len, int factor, int* phase) {
  if (const EngStatus status = CheckResampling(src, len, dst, dst_len, factor, phase)) {
    return status;
  }
  long long at = factor == 1 ? 0 : *phase;
  int count = 0;
  for (; at < len; at += factor) dst[count++] = src[at];
  *dst_len = count;
  *phase = static_cast<int>(at - len);
  return engStsNoErr;
}

template <class T>
EngStatus UpSample(const T* src, int len, T* dst, int* dst_len, int factor, int* phase) {
  if (const EngStatus status = CheckResampling(src, len, dst, dst_len, factor, phase)) {
    return status;
  }
  const long long outputs = static_cast<long long>(len) * factor;
  if (outputs > 0x7FFFFFFF) return engStsSizeErr;
  for (long long k = 0; k < outputs; ++k) {
    dst[k] = k % factor == *phase ? src[k / factor] : T(0);
  }
  *dst_len = static_cast<int>(outputs);
  return engStsNoErr;
}

}  // namespace

#include "engine/primitives/convolution/convolution_entries-inl.h"

}  // namespace zal::engine::portable

ZAL_CONVOLUTION_PRIMITIVES(ZAL_CHECK_SHAPE)
