// The reference of the math family: one element at a time through the C library, whose
// functions are within 1 ulp in double; float functions compute in double and round once.
// Special cases are classified by floating-point comparison, as the kernels do, so that the
// denormals-are-zero mode affects both alike.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "engine/core/error_hook.h"
#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"

namespace zal::engine::portable {
namespace {

// Every NaN a function computes is the default NaN, except where it only moves one (Abs) or
// passes it on quietened by contract (the double Ln).
enum class NaNs { kDefault, kPassedOn };

template <class T>
T Result(T x, NaNs nans) {
  return nans == NaNs::kDefault ? DefaultNaN(x) : x;
}

template <NaNs kNaNs = NaNs::kDefault, class T, class F>
EngStatus Each(F f, const T* s, T* d, int n) {
  if (const EngStatus status = Check(n, s, d)) return status;
  for (int i = 0; i < n; ++i) d[i] = Result(f(s[i], i), kNaNs);
  return engStsNoErr;
}

template <class T, class F>
EngStatus EachPair(F f, const T* a, const T* b, T* d, int n) {
  if (const EngStatus status = Check(n, a, b, d)) return status;
  for (int i = 0; i < n; ++i) d[i] = DefaultNaN(f(a[i], b[i], i));
  return engStsNoErr;
}

// Halves away from zero; the sign survives a zero result. Truncation and the fraction's
// subtraction are exact, so no rounding mode matters.
template <class T>
T RoundHalfAway(T x) {
  const T magnitude = std::fabs(x);
  const T whole = std::trunc(magnitude);
  const T r = magnitude - whole >= T(0.5) ? whole + 1 : whole;
  return std::copysign(r, x);
}

// Zero by comparison: a denormal read as zero becomes the zero the kernels see.
template <class T>
T Sanitised(T x) {
  return x == 0 ? std::copysign(T(0), x) : x;
}

float LnFloat(float x) {
  if (std::isnan(x)) return x + x;
  if (x == 0) return -std::numeric_limits<float>::infinity();
  if (x < 0) return -std::numeric_limits<float>::quiet_NaN();
  return static_cast<float>(std::log(static_cast<double>(x)));
}

// The defined order: pole, +inf, NaN, domain, then every positive value (subnormals included).
double LnDouble(double x, int i) {
  if (x == 0) {
    ReportMathError(i, engStsSingularity, "Ln64");
    return -std::numeric_limits<double>::infinity();
  }
  if (x == std::numeric_limits<double>::infinity()) return x;
  // x * 1 quietens a NaN, but compilers may fold the product away: set the quiet bit instead.
  if (std::isnan(x)) {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) | 0x0008000000000000u);
  }
  if (x < 0) {
    ReportMathError(i, engStsDomain, "Ln64");
    return -std::numeric_limits<double>::quiet_NaN();
  }
  return std::log(x);
}

double PowDouble(double x, double y, int i) {
  x = Sanitised(x);
  y = Sanitised(y);
  // IEEE: 1 even for a signalling NaN on the other side.
  if (y == 0 || x == 1) return 1.0;
  if (x == 0 && y < 0) ReportMathError(i, engStsSingularity, "Pow64");
  if (x < 0 && std::isfinite(x) && std::isfinite(y) && std::nearbyint(y) != y) {
    ReportMathError(i, engStsDomain, "Pow64");
    // Some C runtimes read a subnormal exponent as zero here and return 1.
    return std::numeric_limits<double>::quiet_NaN();
  }
  return std::pow(x, y);
}

}  // namespace

EngStatus AbsF32(const float* s, float* d, int n) {
  return Each<NaNs::kPassedOn>([](float x, int) { return std::fabs(x); }, s, d, n);
}
EngStatus AbsF64(const double* s, double* d, int n) {
  return Each<NaNs::kPassedOn>([](double x, int) { return std::fabs(x); }, s, d, n);
}
EngStatus AbsF32InPlace(float* d, int n) {
  return AbsF32(d, d, n);
}
EngStatus AbsF64InPlace(double* d, int n) {
  return AbsF64(d, d, n);
}
EngStatus SqrF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return x * x; }, s, d, n);
}
EngStatus SqrF64(const double* s, double* d, int n) {
  return Each([](double x, int) { return x * x; }, s, d, n);
}
EngStatus SqrF32InPlace(float* d, int n) {
  return SqrF32(d, d, n);
}
EngStatus SqrF64InPlace(double* d, int n) {
  return SqrF64(d, d, n);
}
EngStatus SqrtF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return std::sqrt(x); }, s, d, n);
}
EngStatus SqrtF64(const double* s, double* d, int n) {
  return Each([](double x, int) { return std::sqrt(x); }, s, d, n);
}
EngStatus SqrtF32InPlace(float* d, int n) {
  return SqrtF32(d, d, n);
}
EngStatus SqrtF64InPlace(double* d, int n) {
  return SqrtF64(d, d, n);
}
EngStatus InverseF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return 1.0f / x; }, s, d, n);
}
EngStatus InverseF64(const double* s, double* d, int n) {
  return Each([](double x, int) { return 1.0 / x; }, s, d, n);
}
EngStatus InverseF64Prec26(const double* s, double* d, int n) {
  return InverseF64(s, d, n);
}
EngStatus RoundF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return RoundHalfAway(x); }, s, d, n);
}
EngStatus RoundF64(const double* s, double* d, int n) {
  return Each([](double x, int) { return RoundHalfAway(x); }, s, d, n);
}
EngStatus ExpF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return static_cast<float>(std::exp(static_cast<double>(x))); }, s,
              d, n);
}
EngStatus ExpF64(const double* s, double* d, int n) {
  return Each([](double x, int) { return std::exp(x); }, s, d, n);
}
EngStatus LnF32(const float* s, float* d, int n) {
  return Each([](float x, int) { return LnFloat(x); }, s, d, n);
}
EngStatus LnF32Prec24(const float* s, float* d, int n) {
  return LnF32(s, d, n);
}
EngStatus LnF32Prec21(const float* s, float* d, int n) {
  return LnF32(s, d, n);
}
EngStatus LnF32Prec11(const float* s, float* d, int n) {
  return LnF32(s, d, n);
}
EngStatus LnF64(const double* s, double* d, int n) {
  return Each<NaNs::kPassedOn>(LnDouble, s, d, n);
}
EngStatus PowF32(const float* base, const float* exponent, float* d, int n) {
  return EachPair(
      [](float x, float y, int) {
        return static_cast<float>(
            std::pow(static_cast<double>(Sanitised(x)), static_cast<double>(Sanitised(y))));
      },
      base, exponent, d, n);
}
EngStatus PowF64(const double* base, const double* exponent, double* d, int n) {
  return EachPair(PowDouble, base, exponent, d, n);
}
EngStatus PowF64Prec26(const double* base, const double* exponent, double* d, int n) {
  return PowF64(base, exponent, d, n);
}

}  // namespace zal::engine::portable

ZAL_MATH_PRIMITIVES(ZAL_CHECK_SHAPE)
