// The reference of the arithmetic family: plain scalar loops, one element at a time, in the
// operation order every level reproduces (no fused multiply-add), so levels match it bit for bit,
// NaNs made the default NaN as they are there.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/simd/default_nan-inl.h"

namespace zal::engine::portable {
namespace {

Complex32 operator+(Complex32 a, Complex32 b) {
  return {a.re + b.re, a.im + b.im};
}
Complex32 operator-(Complex32 a, Complex32 b) {
  return {a.re - b.re, a.im - b.im};
}
Complex64 operator+(Complex64 a, Complex64 b) {
  return {a.re + b.re, a.im + b.im};
}
Complex64 operator-(Complex64 a, Complex64 b) {
  return {a.re - b.re, a.im - b.im};
}

template <class C>
C Multiply(C a, C b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// The textbook quotient: no scaling, so |divisor|^2 must stay within range. Its two parts share
// one reciprocal, so that an element costs one division, not two.
template <class C>
C Divide(C a, C b) {
  const auto den = b.re * b.re + b.im * b.im;
  const auto inv = 1 / den;
  return {(a.re * b.re + a.im * b.im) * inv, (a.im * b.re - a.re * b.im) * inv};
}

Complex32 operator*(Complex32 a, Complex32 b) {
  return Multiply(a, b);
}
Complex64 operator*(Complex64 a, Complex64 b) {
  return Multiply(a, b);
}
Complex32 operator/(Complex32 a, Complex32 b) {
  return Divide(a, b);
}
Complex64 operator/(Complex64 a, Complex64 b) {
  return Divide(a, b);
}

bool IsZero(float x) {
  return x == 0.0f;
}
bool IsZero(double x) {
  return x == 0.0;
}
bool IsZero(Complex32 x) {
  return x.re == 0.0f && x.im == 0.0f;
}
bool IsZero(Complex64 x) {
  return x.re == 0.0 && x.im == 0.0;
}

EngStatus Check(const void* a, const void* b, const void* c, int n) {
  if (!a || !b || !c) return engStsNullPtrErr;
  return n <= 0 ? engStsSizeErr : engStsNoErr;
}

template <class T, class Op>
EngStatus Each(const T* first, const T* second, T* dst, int n, Op op) {
  if (const EngStatus status = Check(first, second, dst, n)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(op(first[i], second[i], dst[i]));
  return engStsNoErr;
}

template <class T, class Op>
EngStatus EachWith(const T* src, T c, T* dst, int n, Op op) {
  if (const EngStatus status = Check(src, dst, dst, n)) return status;
  for (int i = 0; i < n; ++i) dst[i] = DefaultNaN(op(src[i], c, dst[i]));
  return engStsNoErr;
}

// Division completes the whole vector, then reports zero divisors. They are noted before the
// destination, which may be the divisor itself, is written.
template <class T>
bool HasZero(const T* divisors, int n) {
  bool zero = false;
  for (int i = 0; divisors && i < n; ++i) zero |= IsZero(divisors[i]);
  return zero;
}

EngStatus DivisorWarning(EngStatus status, bool zero_divisor) {
  return status == engStsNoErr && zero_divisor ? engStsDivByZero : status;
}

constexpr auto kAdd = [](auto a, auto b, auto) { return a + b; };
constexpr auto kSubFromSecond = [](auto a, auto b, auto) { return b - a; };
constexpr auto kMul = [](auto a, auto b, auto) { return a * b; };
constexpr auto kDivSecond = [](auto a, auto b, auto) { return b / a; };
constexpr auto kAddProduct = [](auto a, auto b, auto d) { return d + a * b; };
constexpr auto kSubConstant = [](auto s, auto c, auto) { return s - c; };
constexpr auto kDivByConstant = [](auto s, auto c, auto) { return s / c; };

}  // namespace

#define ZAL_PORTABLE_ARITHMETIC(T, E)                            \
  EngStatus Add##E(const T* a, const T* b, T* d, int n) {        \
    return Each(a, b, d, n, kAdd);                               \
  }                                                              \
  EngStatus Sub##E(const T* a, const T* b, T* d, int n) {        \
    return Each(a, b, d, n, kSubFromSecond);                     \
  }                                                              \
  EngStatus Mul##E(const T* a, const T* b, T* d, int n) {        \
    return Each(a, b, d, n, kMul);                               \
  }                                                              \
  EngStatus Div##E(const T* a, const T* b, T* d, int n) {        \
    const bool zero = HasZero(a, n);                             \
    return DivisorWarning(Each(a, b, d, n, kDivSecond), zero);   \
  }                                                              \
  EngStatus AddProduct##E(const T* a, const T* b, T* d, int n) { \
    return Each(a, b, d, n, kAddProduct);                        \
  }                                                              \
  EngStatus Sub##E##InPlace(const T* s, T* d, int n) {           \
    return Each(s, d, d, n, kSubFromSecond);                     \
  }                                                              \
  EngStatus Mul##E##InPlace(const T* s, T* d, int n) {           \
    return Each(s, d, d, n, kMul);                               \
  }                                                              \
  EngStatus Div##E##InPlace(const T* s, T* d, int n) {           \
    const bool zero = HasZero(s, n);                             \
    return DivisorWarning(Each(s, d, d, n, kDivSecond), zero);   \
  }

#define ZAL_PORTABLE_CONSTANTS(T, E, ConstantType, value)                                 \
  EngStatus AddConstant##E(const T* s, ConstantType c, T* d, int n) {                     \
    if (!(value)) return engStsNullPtrErr;                                                \
    return EachWith(s, *(value), d, n, kAdd);                                             \
  }                                                                                       \
  EngStatus SubConstant##E(const T* s, ConstantType c, T* d, int n) {                     \
    if (!(value)) return engStsNullPtrErr;                                                \
    return EachWith(s, *(value), d, n, kSubConstant);                                     \
  }                                                                                       \
  EngStatus SubConstantRev##E(const T* s, ConstantType c, T* d, int n) {                  \
    if (!(value)) return engStsNullPtrErr;                                                \
    return EachWith(s, *(value), d, n, kSubFromSecond);                                   \
  }                                                                                       \
  EngStatus MulConstant##E(const T* s, ConstantType c, T* d, int n) {                     \
    if (!(value)) return engStsNullPtrErr;                                                \
    return EachWith(s, *(value), d, n, kMul);                                             \
  }                                                                                       \
  EngStatus DivConstant##E(const T* s, ConstantType c, T* d, int n) {                     \
    if (!(value)) return engStsNullPtrErr;                                                \
    return DivisorWarning(EachWith(s, *(value), d, n, kDivByConstant), IsZero(*(value))); \
  }                                                                                       \
  EngStatus AddConstant##E##InPlace(ConstantType c, T* d, int n) {                        \
    return AddConstant##E(d, c, d, n);                                                    \
  }                                                                                       \
  EngStatus SubConstant##E##InPlace(ConstantType c, T* d, int n) {                        \
    return SubConstant##E(d, c, d, n);                                                    \
  }                                                                                       \
  EngStatus SubConstantRev##E##InPlace(ConstantType c, T* d, int n) {                     \
    return SubConstantRev##E(d, c, d, n);                                                 \
  }                                                                                       \
  EngStatus MulConstant##E##InPlace(ConstantType c, T* d, int n) {                        \
    return MulConstant##E(d, c, d, n);                                                    \
  }                                                                                       \
  EngStatus DivConstant##E##InPlace(ConstantType c, T* d, int n) {                        \
    return DivConstant##E(d, c, d, n);                                                    \
  }

ZAL_PORTABLE_ARITHMETIC(float, F32)
ZAL_PORTABLE_ARITHMETIC(double, F64)
ZAL_PORTABLE_ARITHMETIC(Complex32, C32)
ZAL_PORTABLE_ARITHMETIC(Complex64, C64)
ZAL_PORTABLE_CONSTANTS(float, F32, float, &c)
ZAL_PORTABLE_CONSTANTS(double, F64, double, &c)
ZAL_PORTABLE_CONSTANTS(Complex32, C32, Complex32, &c)
ZAL_PORTABLE_CONSTANTS(Complex64, C64, const Complex64*, c)

EngStatus AddF64InPlace(const double* s, double* d, int n) {
  return Each(s, d, d, n, kAdd);
}
EngStatus AddC32InPlace(const Complex32* s, Complex32* d, int n) {
  return Each(s, d, d, n, kAdd);
}
EngStatus AddC64InPlace(const Complex64* s, Complex64* d, int n) {
  return Each(s, d, d, n, kAdd);
}

EngStatus AddConstantProductF32(const float* s, float c, float* d, int n) {
  return EachWith(s, c, d, n, kAddProduct);
}

EngStatus DivConstantRevF32(const float* s, float c, float* d, int n) {
  const bool zero = HasZero(s, n);
  return DivisorWarning(EachWith(s, c, d, n, kDivSecond), zero);
}

// Rounds to nearest with ties to even and saturates; a negative scale enlarges.
EngStatus MulConstantScaledS16(const short* s, short c, short* d, int n, int scale) {
  if (const EngStatus status = Check(s, d, d, n)) return status;
  constexpr std::int64_t kMin = -32768;
  constexpr std::int64_t kMax = 32767;
  for (int i = 0; i < n; ++i) {
    std::int64_t product = static_cast<std::int64_t>(s[i]) * c;
    if (scale > 0) {
      const int shift = scale > 40 ? 40 : scale;  // |product| < 2^31: any larger shift rounds to 0
      const std::int64_t floor = product >> shift;
      const std::int64_t remainder = product - (floor << shift);
      const std::int64_t half = std::int64_t{1} << (shift - 1);
      product = floor + ((remainder > half || (remainder == half && (floor & 1))) ? 1 : 0);
    } else if (scale < 0) {
      product *= std::int64_t{1} << (scale < -31 ? 31 : -scale);
    }
    d[i] = static_cast<short>(product < kMin ? kMin : product > kMax ? kMax : product);
  }
  return engStsNoErr;
}

}  // namespace zal::engine::portable

ZAL_ARITHMETIC_PRIMITIVES(ZAL_CHECK_SHAPE)
