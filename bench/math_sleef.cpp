// SLEEF's vector functions at this processor's widest level: 512-bit with AVX-512, else its
// 256-bit dispatcher. Its 1-ulp functions stand against our full-accuracy members, its 3.5-ulp
// logarithm against the reduced ones. Built with -mavx2 -mfma -mavx512f; run only where they are.
#include <sleef.h>

#include "bench/math_contenders.h"

namespace zal::bench::math {
namespace {

// dst = f(a) (or f(a, b)) for whole vectors: the benchmark's n is a multiple of every width.
#define ZAL_SLEEF_UNARY(T, V, load, store, f)                                               \
  [](const T* a, const T*, T* d, int n) {                                                   \
    for (int i = 0; i + int(sizeof(V) / sizeof(T)) <= n; i += int(sizeof(V) / sizeof(T))) { \
      store(d + i, f(load(a + i)));                                                         \
    }                                                                                       \
  }
#define ZAL_SLEEF_BINARY(T, V, load, store, f)                                              \
  [](const T* a, const T* b, T* d, int n) {                                                 \
    for (int i = 0; i + int(sizeof(V) / sizeof(T)) <= n; i += int(sizeof(V) / sizeof(T))) { \
      store(d + i, f(load(a + i), load(b + i)));                                            \
    }                                                                                       \
  }

Contender Wide() {
  Contender c{"sleef", "SLEEF 3.5, AVX-512 functions", {}, {}};
  c.f32[kAbs] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_fabsf16_avx512f);
  c.f32[kSqrt] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_sqrtf16_u05avx512f);
  c.f32[kRound] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_roundf16_avx512f);
  c.f32[kExp] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_expf16_u10avx512f);
  c.f32[kLn] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_logf16_u10avx512f);
  c.f32[kLnPrec24] =
      ZAL_SLEEF_UNARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_logf16_u35avx512f);
  c.f32[kLnPrec21] = c.f32[kLnPrec11] = c.f32[kLnPrec24];
  c.f32[kPow] =
      ZAL_SLEEF_BINARY(float, __m512, _mm512_loadu_ps, _mm512_storeu_ps, Sleef_powf16_u10avx512f);
  c.f64[kAbs] =
      ZAL_SLEEF_UNARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_fabsd8_avx512f);
  c.f64[kSqrt] =
      ZAL_SLEEF_UNARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_sqrtd8_u05avx512f);
  c.f64[kRound] =
      ZAL_SLEEF_UNARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_roundd8_avx512f);
  c.f64[kExp] =
      ZAL_SLEEF_UNARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_expd8_u10avx512f);
  c.f64[kLn] =
      ZAL_SLEEF_UNARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_logd8_u10avx512f);
  c.f64[kPow] =
      ZAL_SLEEF_BINARY(double, __m512d, _mm512_loadu_pd, _mm512_storeu_pd, Sleef_powd8_u10avx512f);
  c.f64[kPowPrec26] = c.f64[kPow];
  return c;
}

Contender Narrow() {
  Contender c{"sleef", "SLEEF 3.5, 256-bit dispatched functions", {}, {}};
  c.f32[kSqrt] =
      ZAL_SLEEF_UNARY(float, __m256, _mm256_loadu_ps, _mm256_storeu_ps, Sleef_sqrtf8_u05);
  c.f32[kExp] = ZAL_SLEEF_UNARY(float, __m256, _mm256_loadu_ps, _mm256_storeu_ps, Sleef_expf8_u10);
  c.f32[kLn] = ZAL_SLEEF_UNARY(float, __m256, _mm256_loadu_ps, _mm256_storeu_ps, Sleef_logf8_u10);
  c.f32[kLnPrec24] =
      ZAL_SLEEF_UNARY(float, __m256, _mm256_loadu_ps, _mm256_storeu_ps, Sleef_logf8_u35);
  c.f32[kLnPrec21] = c.f32[kLnPrec11] = c.f32[kLnPrec24];
  c.f32[kPow] = ZAL_SLEEF_BINARY(float, __m256, _mm256_loadu_ps, _mm256_storeu_ps, Sleef_powf8_u10);
  c.f64[kSqrt] =
      ZAL_SLEEF_UNARY(double, __m256d, _mm256_loadu_pd, _mm256_storeu_pd, Sleef_sqrtd4_u05);
  c.f64[kExp] =
      ZAL_SLEEF_UNARY(double, __m256d, _mm256_loadu_pd, _mm256_storeu_pd, Sleef_expd4_u10);
  c.f64[kLn] = ZAL_SLEEF_UNARY(double, __m256d, _mm256_loadu_pd, _mm256_storeu_pd, Sleef_logd4_u10);
  c.f64[kPow] =
      ZAL_SLEEF_BINARY(double, __m256d, _mm256_loadu_pd, _mm256_storeu_pd, Sleef_powd4_u10);
  c.f64[kPowPrec26] = c.f64[kPow];
  return c;
}

}  // namespace

const Contender* Sleef() {
  static const Contender wide = Wide();
  static const Contender narrow = Narrow();
  if (__builtin_cpu_supports("avx512f")) return &wide;
  return __builtin_cpu_supports("avx2") ? &narrow : nullptr;
}

}  // namespace zal::bench::math
