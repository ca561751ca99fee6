// The loops a user writes in place of the library, one sample at a time: scale, round with
// lrintf, clamp, store. Half precision through the processor's conversion instructions where the
// build enables them (-march=native here), else through the compiler's _Float16 where it has one.
// Built twice: with the build's own flags, and with -O3 -march=native and ZAL_PLAIN_LOOPS_NATIVE
// defined.
#include <immintrin.h>

#include <cmath>
#include <cstdint>

#include "bench/conversion_contenders.h"
#include "zalcore/int24.h"

namespace zal::bench::conversion {
namespace {

using zalcore::utility::int24_t;

template <class T>
const T* Source(const Buffers& b) {
  return static_cast<const T*>(b.src);
}
template <class T>
T* Destination(const Buffers& b) {
  return static_cast<T*>(b.dst);
}

float Clamp(float x, float low, float high) {
  return x < low ? low : (x > high ? high : x);
}

}  // namespace

#if defined(ZAL_PLAIN_LOOPS_NATIVE)
Contender PlainLoopsNativeContender() {
  Contender c{"plain-native", "plain loops, -O3 -march=native", {}};
#else
Contender PlainLoopsContender() {
  Contender c{"plain", "plain loops, the build's flags", {}};
#endif
  c.kernels[kS16ToF32] = [](const Buffers& b) {
    const short* src = Source<short>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = src[i] * (1.0f / 32768.0f);
  };
  c.kernels[kF32ToS16] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    short* dst = Destination<short>(b);
    for (unsigned i = 0; i < b.n; ++i) {
      dst[i] = static_cast<short>(std::lrintf(Clamp(src[i] * 32768.0f, -32768.0f, 32767.0f)));
    }
  };
  c.kernels[kS32ToF32] = [](const Buffers& b) {
    const int* src = Source<int>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<float>(src[i]) * 0x1p-31f;
  };
  c.kernels[kF32ToS32] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    int* dst = Destination<int>(b);
    for (unsigned i = 0; i < b.n; ++i) {
      dst[i] = static_cast<int>(std::lrintf(Clamp(src[i] * 0x1p31f, -0x1p31f, 2147483520.0f)));
    }
  };
  c.kernels[kS24ToF32] = [](const Buffers& b) {
    const int24_t* src = Source<int24_t>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<float>(int{src[i]}) * 0x1p-23f;
  };
  c.kernels[kS24ToF32Unscaled] = [](const Buffers& b) {
    const int24_t* src = Source<int24_t>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<float>(int{src[i]});
  };
  c.kernels[kF32ToS24Truncate] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    int24_t* dst = Destination<int24_t>(b);
    for (unsigned i = 0; i < b.n; ++i) {
      dst[i] = int24_t(static_cast<int>(Clamp(src[i] * 0x1p23f, -8388608.0f, 8388607.0f)));
    }
  };
  c.kernels[kF32ToS24Round] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    int24_t* dst = Destination<int24_t>(b);
    for (unsigned i = 0; i < b.n; ++i) {
      dst[i] =
          int24_t(static_cast<int>(std::lrintf(Clamp(src[i] * 0x1p23f, -8388608.0f, 8388607.0f))));
    }
  };
#if defined(__F16C__)
  // Where the processor has them, the conversion instructions eight at a time: the F16C limit.
  c.kernels[kF16ToF32] = [](const Buffers& b) {
    const auto* src = Source<unsigned short>(b);
    float* dst = Destination<float>(b);
    unsigned i = 0;
    for (; i + 8 <= b.n; i += 8) {
      const __m128i h = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
      _mm256_storeu_ps(dst + i, _mm256_cvtph_ps(h));
    }
    for (; i < b.n; ++i) dst[i] = _cvtsh_ss(src[i]);
  };
  c.kernels[kF32ToF16] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    auto* dst = Destination<unsigned short>(b);
    unsigned i = 0;
    for (; i + 8 <= b.n; i += 8) {
      const __m128i h = _mm256_cvtps_ph(_mm256_loadu_ps(src + i), _MM_FROUND_TO_ZERO);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), h);
    }
    for (; i < b.n; ++i) dst[i] = _cvtss_sh(src[i], _MM_FROUND_TO_ZERO);
  };
#elif defined(__FLT16_MANT_DIG__)
  c.kernels[kF16ToF32] = [](const Buffers& b) {
    const auto* src = Source<_Float16>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<float>(src[i]);
  };
  c.kernels[kF32ToF16] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    auto* dst = Destination<_Float16>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<_Float16>(src[i]);
  };
#endif
  c.kernels[kF32ToF64] = [](const Buffers& b) {
    const float* src = Source<float>(b);
    double* dst = Destination<double>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = src[i];
  };
  c.kernels[kF64ToF32] = [](const Buffers& b) {
    const double* src = Source<double>(b);
    float* dst = Destination<float>(b);
    for (unsigned i = 0; i < b.n; ++i) dst[i] = static_cast<float>(src[i]);
  };
  return c;
}

}  // namespace zal::bench::conversion
