// Vector utilities: elementwise arithmetic, aligned memory and the calling thread's denormal modes.
//
// Conventions of every vector function:
// - `len` counts elements (complex elements for complex vectors). It reaches the engine as a
//   signed 32-bit value: a len of 0, or of 2^31 and more, makes the call a silent no-op, and so
//   does any null pointer. Nothing is written then, and nothing is ever reported or thrown.
// - Arguments: len first, then sources, then the destination, then scalar parameters, except where
//   a function's comment says otherwise. Buffers need no particular alignment.
// - Complex vectors are interleaved (real, imaginary), as std::complex stores them.
#pragma once

#include <complex>

#include "zalaccelerate/export.h"

namespace zalaccelerate::utility {

// ---- Elementwise arithmetic --------------------------------------------------------------------
// For each i < len. Note the operand roles of Sub and Div: the FIRST source is subtracted from,
// or divides, the SECOND.
//   Add(len, a, b, dst)              dst[i] = a[i] + b[i]
//   Sub(len, a, b, dst)              dst[i] = b[i] - a[i]
//   Mul(len, a, b, dst)              dst[i] = a[i] * b[i]
//   Div(len, a, b, dst)              dst[i] = b[i] / a[i]
//   AddProduct(len, a, b, dst)       dst[i] = dst[i] + a[i] * b[i]       (accumulates)
//   X_InPlace(len, src, srcDst)      srcDst[i] = srcDst[i] X src[i]    (Sub: srcDst - src,
//                                                                       Div: srcDst / src)
//   AddConstant(len, src, c, dst)    dst[i] = src[i] + c
//   SubConstant(len, src, c, dst)    dst[i] = src[i] - c
//   SubConstantRev(len, src, c, dst) dst[i] = c - src[i]
//   MulConstant(len, src, dst, c)    dst[i] = src[i] * c                 (constant last)
//   DivConstant(len, src, dst, c)    dst[i] = src[i] / c                 (constant last)
//   DivConstantRev(len, c, src, dst) dst[i] = c / src[i]                 (constant second)
//   XConstant_InPlace(len, srcDst, c)  as XConstant with src = dst = srcDst
//   AddConstantProduct(len, src, srcDst, c)  srcDst[i] += src[i] * c   (the double overload
//                                                                       does nothing, on purpose)
// Results: real operations are single IEEE operations (a product then a sum for the Product
// forms, never fused), so every processor level gives the same bits. Complex operations use
//   (p + qi)(r + si) = (pr - qs) + (ps + qr)i
//   (p + qi)/(r + si) = ((pr + qs) + (qr - ps)i) * (1 / (r^2 + s^2))
// in that order of IEEE operations, also bit-identical at every level; the quotient is not
// rescaled, so |divisor|^2 must not overflow or underflow. Division by zero gives IEEE results
// (±Inf, NaN), with every other element computed. A destination may be the same buffer as a source
// (exactly, not partly overlapping).

#define ZALACCELERATE_ARITHMETIC(T)                                          \
  ZAL_API void Add(unsigned int len, const T* a, const T* b, T* dst);        \
  ZAL_API void Add_InPlace(unsigned int len, const T* src, T* srcDst);       \
  ZAL_API void AddConstant(unsigned int len, const T* src, T c, T* dst);     \
  ZAL_API void AddConstant_InPlace(unsigned int len, T* srcDst, T c);        \
  ZAL_API void AddProduct(unsigned int len, const T* a, const T* b, T* dst); \
  ZAL_API void Sub(unsigned int len, const T* a, const T* b, T* dst);        \
  ZAL_API void Sub_InPlace(unsigned int len, const T* src, T* srcDst);       \
  ZAL_API void SubConstant(unsigned int len, const T* src, T c, T* dst);     \
  ZAL_API void SubConstant_InPlace(unsigned int len, T* srcDst, T c);        \
  ZAL_API void SubConstantRev(unsigned int len, const T* src, T c, T* dst);  \
  ZAL_API void SubConstantRev_InPlace(unsigned int len, T* srcDst, T c);     \
  ZAL_API void Mul(unsigned int len, const T* a, const T* b, T* dst);        \
  ZAL_API void Mul_InPlace(unsigned int len, const T* src, T* srcDst);       \
  ZAL_API void MulConstant(unsigned int len, const T* src, T* dst, T c);     \
  ZAL_API void MulConstant_InPlace(unsigned int len, T* srcDst, T c);        \
  ZAL_API void Div(unsigned int len, const T* a, const T* b, T* dst);        \
  ZAL_API void Div_InPlace(unsigned int len, const T* src, T* srcDst);       \
  ZAL_API void DivConstant(unsigned int len, const T* src, T* dst, T c);     \
  ZAL_API void DivConstant_InPlace(unsigned int len, T* srcDst, T c);

ZALACCELERATE_ARITHMETIC(float)
ZALACCELERATE_ARITHMETIC(double)
ZALACCELERATE_ARITHMETIC(std::complex<float>)
ZALACCELERATE_ARITHMETIC(std::complex<double>)
#undef ZALACCELERATE_ARITHMETIC

ZAL_API void AddConstantProduct(unsigned int len, const float* src, float* srcDst, float c);
ZAL_API void AddConstantProduct(unsigned int len, const double* src, double* srcDst, double c);
ZAL_API void DivConstantRev(unsigned int len, float c, const float* src, float* dst);

// srcDst[i] = srcDst[i] * c * 2^-scale, rounded to the nearest integer (ties to even) and
// saturated to [-32768, 32767]. A negative scale enlarges: scale -3 multiplies by 8.
ZAL_API void MulConstant_InPlace(unsigned int len, short* srcDst, short c, int scale);

// ---- Elementwise math functions -----------------------------------------------------------------
// For each i < len, dst[i] = f(src[i]) (Pow: base[i] raised to exponent[i]). The _InPlace forms
// compute in place in srcDst. Out-of-place forms need separate arrays, except Exp and Ln, whose
// destination may also be the source array exactly (that is what Exp_InPlace and Ln_InPlace do).
//
// Exact, the same bits at every processor level:
//   Abs       |x| (clears the sign bit, NaN included)     Sqr      x * x
//   Sqrt      IEEE square root (negative -> NaN)           Inverse  1 / x (±0 -> ±inf)
//   Round     nearest integral value, halves away from zero, in the same type; the sign of a
//             negative input survives a zero result: 1.5 -> 2, 2.5 -> 3, -2.5 -> -3, -0.4 -> -0
// Within 1 ulp (float and double): Exp, Ln, Pow. _PrecN: at least N correct bits, relative error
// at most 2^(1-N): Ln_Prec11, Ln_Prec21, Ln_Prec24 (float), Pow_Prec26, Inverse_Prec26 (double).
// These may differ between processor levels within their bound.
//
// Special values are IEEE-754's: Exp overflows to +inf and underflows through the subnormals to
// +0; Ln(±0) = -inf, Ln(negative or -inf) = NaN, Ln(+inf) = +inf, Ln(NaN) = NaN; Pow as C's pow
// (Pow(x, ±0) = 1 and Pow(1, y) = 1 even for NaN, Pow(negative, non-integer) = NaN, odd integral
// exponents keep the base's sign, ±0 to a negative power is ±inf). The double Ln and the double
// Pow forms report each pole (code 18) and domain error (code 19) to the engine's error hook
// (engSetErrorHook in zalaccelerate/core.h) with the element's index and the tag "Ln64" or "Pow64";
// every element is computed all the same.
#define ZALACCELERATE_MATH(T)                                                              \
  ZAL_API void Abs(unsigned int len, const T* src, T* dst);                                 \
  ZAL_API void Abs_InPlace(unsigned int len, T* srcDst);                                    \
  ZAL_API void Sqr(unsigned int len, const T* src, T* dst);                                 \
  ZAL_API void Sqr_InPlace(unsigned int len, T* srcDst);                                    \
  ZAL_API void Sqrt(unsigned int len, const T* src, T* dst);                                \
  ZAL_API void Sqrt_InPlace(unsigned int len, T* srcDst);                                   \
  ZAL_API void Exp(unsigned int len, const T* src, T* dst);                                 \
  ZAL_API void Exp_InPlace(unsigned int len, T* srcDst);                                    \
  ZAL_API void Ln(unsigned int len, const T* src, T* dst);                                  \
  ZAL_API void Pow(unsigned int len, const T* base, const T* exponent, T* dst);             \
  ZAL_API void Inverse(unsigned int len, const T* src, T* dst);                             \
  ZAL_API void Round(unsigned int len, const T* src, T* dst);

ZALACCELERATE_MATH(float)
ZALACCELERATE_MATH(double)
#undef ZALACCELERATE_MATH

ZAL_API void Ln_InPlace(unsigned int len, float* srcDst);
ZAL_API void Ln_Prec11(unsigned int len, const float* src, float* dst);
ZAL_API void Ln_Prec21(unsigned int len, const float* src, float* dst);
ZAL_API void Ln_Prec24(unsigned int len, const float* src, float* dst);
ZAL_API void Pow_Prec26(unsigned int len, const double* base, const double* exponent, double* dst);
ZAL_API void Inverse_Prec26(unsigned int len, const double* src, double* dst);

// ---- Aligned memory --------------------------------------------------------------------------
// Buffers aligned to 64 bytes, for the widest vectors the library uses. `count` counts elements
// (complex elements for the complex forms), never bytes. The memory is not initialised.
// Returns null when count is 0 or at least 2^31, when the block would exceed 2^31 - 1 - 72 bytes,
// or when the heap is exhausted; never throws. Release with the matching Free (null is ignored);
// a pointer from anywhere else must not be passed to Free.
ZAL_API unsigned char* Malloc_Byte(unsigned int count);
ZAL_API short* Malloc_Int16(unsigned int count);
ZAL_API float* Malloc_Float(unsigned int count);
ZAL_API double* Malloc_Double(unsigned int count);
ZAL_API std::complex<float>* Malloc_Complex_Float(unsigned int count);
ZAL_API std::complex<double>* Malloc_Complex_Double(unsigned int count);

ZAL_API void Free(unsigned char* buffer);
ZAL_API void Free(short* buffer);
ZAL_API void Free(float* buffer);
ZAL_API void Free(double* buffer);
ZAL_API void Free(std::complex<float>* buffer);
ZAL_API void Free(std::complex<double>* buffer);

// ---- Denormal modes of the calling thread ------------------------------------------------------
// Flush-to-zero: denormal results are written as zero. Switching it on also masks the underflow
// exception; switching it off leaves the exception masks as they are.
ZAL_API void SetFlushDenormalsToZero(bool enable);
// Denormals-are-zero: denormal operands are read as zero. Ignored on processors without it.
ZAL_API void SetDenormalsAreZero(bool enable);
// Does nothing: denormal exceptions stay as the thread has them.
ZAL_API void SetDenormalExceptionsEnabled(bool enable);

// The getters do not read the processor: they always return false, even right after the setter
// switched the mode on. Keep your own record of what you set.
ZAL_API bool GetFlushDenormalsToZero();
ZAL_API bool GetDenormalsAreZero();
ZAL_API bool GetDenormalExceptionsEnabled();

}  // namespace zalaccelerate::utility
