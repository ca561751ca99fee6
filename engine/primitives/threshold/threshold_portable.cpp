// The reference of the thresholds, inversion, normalisation, ramps and elementwise extremes: one
// element at a time, in the operation order every level reproduces.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <emmintrin.h>

#include <cmath>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"

namespace zal::engine::portable {
namespace {

template <class T, class Op, class... Sources>
EngStatus Each(Op op, T* dst, int n, Sources... src) {
  if (const EngStatus status = Check(n, src..., dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = op(src[i]...);
  return engStsNoErr;
}

// a < b ? a : b and a > b ? a : b as the processor's min and max instructions give them, which
// every level uses: under denormals-are-zero they return a denormal operand as zero, whichever
// way a compiler would translate the conditional.
float Lower(float a, float b) {
  return _mm_cvtss_f32(_mm_min_ss(_mm_set_ss(a), _mm_set_ss(b)));
}
double Lower(double a, double b) {
  return _mm_cvtsd_f64(_mm_min_sd(_mm_set_sd(a), _mm_set_sd(b)));
}
float Higher(float a, float b) {
  return _mm_cvtss_f32(_mm_max_ss(_mm_set_ss(a), _mm_set_ss(b)));
}
double Higher(double a, double b) {
  return _mm_cvtsd_f64(_mm_max_sd(_mm_set_sd(a), _mm_set_sd(b)));
}

constexpr double kInversionEpsilon = 1.1920928955078125e-7;

template <class T>
EngStatus InvertReal(T* p, int n, T level) {
  if (const EngStatus status = Check(n, p)) return status;
  if (!(level > 0)) return engStsThreshNegLevelErr;
  const T limit = T(1) / level;
  const T epsilon = static_cast<T>(kInversionEpsilon);
  for (int i = 0; i < n; ++i) {
    const T x = p[i];
    if (x * x <= epsilon) {
      p[i] = limit;
    } else if (std::fabs(x) < level) {
      p[i] = std::copysign(limit, x);
    } else {
      p[i] = DefaultNaN(T(1) / x);
    }
  }
  return engStsNoErr;
}

template <class C>
EngStatus InvertComplex(C* p, int n, RealOf<C> level) {
  using R = RealOf<C>;
  if (const EngStatus status = Check(n, p)) return status;
  if (!(level > 0)) return engStsThreshNegLevelErr;
  const R limit = R(1) / level;
  const R epsilon = static_cast<R>(kInversionEpsilon);
  for (int i = 0; i < n; ++i) {
    const R re = p[i].re;
    const R im = p[i].im;
    const R norm = re * re + im * im;
    if (norm <= epsilon) {
      p[i] = {limit, R(0)};
      continue;
    }
    const R divisor = norm < level * level ? std::sqrt(norm) * level : norm;
    p[i] = {DefaultNaN(re / divisor), DefaultNaN(-im / divisor)};
  }
  return engStsNoErr;
}

template <class T>
EngStatus Normalize(const T* src, T* dst, int n, T sub, T div) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  constexpr T kSmallestNormal =
      sizeof(T) == 4 ? T(1.17549435082228750797e-38f) : T(2.22507385850720138309e-308);
  if (std::fabs(div) < kSmallestNormal) return engStsDivByZeroErr;
  const T reciprocal = T(1) / div;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN((src[i] - sub) * reciprocal);
  return engStsNoErr;
}

template <class T>
EngStatus VectorSlope(T* p, int n, T offset, T slope) {
  if (const EngStatus status = Check(n, p)) return status;
  for (int i = 0; i < n; ++i) {
    p[i] = DefaultNaN(static_cast<T>(static_cast<double>(offset) + static_cast<double>(slope) * i));
  }
  return engStsNoErr;
}

}  // namespace

#define ZAL_THRESHOLD_REFERENCE(T, E)                                            \
  EngStatus ThresholdGT##E##InPlace(T* p, int n, T level) {                      \
    return Each([level](T x) { return Lower(level, x); }, p, n, p);              \
  }                                                                              \
  EngStatus ThresholdLT##E##InPlace(T* p, int n, T level) {                      \
    return Each([level](T x) { return Higher(level, x); }, p, n, p);             \
  }                                                                              \
  EngStatus ThresholdGTVal##E(const T* s, T* d, int n, T level, T value) {       \
    return Each([level, value](T x) { return level < x ? value : x; }, d, n, s); \
  }                                                                              \
  EngStatus ThresholdLTVal##E(const T* s, T* d, int n, T level, T value) {       \
    return Each([level, value](T x) { return x < level ? value : x; }, d, n, s); \
  }                                                                              \
  EngStatus ThresholdGTVal##E##InPlace(T* p, int n, T level, T value) {          \
    return ThresholdGTVal##E(p, p, n, level, value);                             \
  }                                                                              \
  EngStatus ThresholdLTVal##E##InPlace(T* p, int n, T level, T value) {          \
    return ThresholdLTVal##E(p, p, n, level, value);                             \
  }                                                                              \
  EngStatus InvertThreshold##E##InPlace(T* p, int n, T level) {                  \
    return InvertReal(p, n, level);                                              \
  }                                                                              \
  EngStatus Normalize##E(const T* s, T* d, int n, T sub, T div) {                \
    return Normalize(s, d, n, sub, div);                                         \
  }                                                                              \
  EngStatus VectorSlope##E(T* p, int n, T offset, T slope) {                     \
    return VectorSlope(p, n, offset, slope);                                     \
  }

ZAL_THRESHOLD_REFERENCE(float, F32)
ZAL_THRESHOLD_REFERENCE(double, F64)
#undef ZAL_THRESHOLD_REFERENCE

EngStatus ThresholdLTValGTValF32(const float* s, float* d, int n, float level_lt, float value_lt,
                                 float level_gt, float value_gt) {
  if (const EngStatus status = Check(n, s, d)) return status;
  if (level_lt > level_gt) return engStsThresholdErr;
  for (int i = 0; i < n; ++i) {
    const float x = s[i];
    d[i] = x < level_lt ? value_lt : (level_gt < x ? value_gt : x);
  }
  return engStsNoErr;
}

EngStatus InvertThresholdC32InPlace(Complex32* p, int n, float level) {
  return InvertComplex(p, n, level);
}
EngStatus InvertThresholdC64InPlace(Complex64* p, int n, double level) {
  return InvertComplex(p, n, level);
}

EngStatus MinEveryF32(const float* a, const float* b, float* d, int n) {
  return Each([](float x, float y) { return Lower(x, y); }, d, n, a, b);
}
EngStatus MaxEveryF32(const float* a, const float* b, float* d, int n) {
  return Each([](float x, float y) { return Higher(x, y); }, d, n, a, b);
}
EngStatus MinEveryF32InPlace(const float* s, float* d, int n) {
  return MinEveryF32(s, d, d, n);
}
EngStatus MaxEveryF32InPlace(const float* s, float* d, int n) {
  return MaxEveryF32(s, d, d, n);
}

}  // namespace zal::engine::portable
