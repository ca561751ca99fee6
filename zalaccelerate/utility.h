// Vector utilities: elementwise arithmetic and math functions, reductions, thresholds,
// complex-domain helpers, data movement and layout, sample format conversion, windows,
// convolution and resampling, aligned memory and the calling thread's denormal modes.
//
// Conventions of every vector function:
// - `len` counts elements (complex elements for complex vectors). It reaches the engine as a
//   signed 32-bit value: a len of 0, or of 2^31 and more, makes the call a silent no-op, and so
//   does any null pointer. Nothing is written then, and nothing is ever reported or thrown.
// - Arguments: len first, then sources, then the destination, then scalar parameters, except where
//   a function's comment says otherwise.
// - Alignment: every pointer must be aligned to its element type (alignof: 4 bytes for float and
//   std::complex<float>, 8 for double and std::complex<double>, 2 for short), as any C++ array of
//   that type is. Nothing beyond that: vectors may start anywhere else, and the functions run at
//   the same speed at any element offset.
// - Complex vectors are interleaved (real, imaginary), as std::complex stores them.
// - NaNs: every NaN a function computes is the default NaN, sign set and payload empty
//   (0xFFC00000 in float, 0xFFF8000000000000 in double), whatever NaNs its operands held, on every
//   processor: NaN + 1, NaN(0x7FC00001) * NaN(0xFFC00002), sqrt(NaN) and Exp(NaN) give it as
//   0 * Inf, Inf - Inf and sqrt(-1) do. Functions that only move, select or change the sign of
//   values (Abs, thresholds and Trim, MinEvery/MaxEvery, Min/Max and their indices) pass
//   a NaN on bit for bit. The one exception is the double Ln, which returns a NaN argument
//   quietened, its payload kept.
// - Floating-point modes: every function runs under the calling thread's MXCSR and leaves its
//   control bits as it found them. Under flush-to-zero and denormals-are-zero, denormal results
//   and operands behave as the processor makes them, alike at every level. Exact results (moves,
//   sign changes, selections, thresholds, Round, the short MulConstant_InPlace) are the same
//   under every rounding mode. Results of IEEE operations (arithmetic, Sqr, Sqrt, Inverse, sums,
//   norms, magnitudes, Normalize, VectorSlope) are rounded by the thread's rounding mode, as the
//   same operations written in C, identically at every level. Exp, Ln, Pow, Inverse_Prec26,
//   CartToPolar, PolarToCart and the windows hold their stated accuracy under rounding to nearest
//   only (a window's zero weights may then carry either sign, and its last bits may differ between
//   levels). The conversions' rules are stated with them.
#pragma once

#include <complex>
#include <cstdint>

#include "zalaccelerate/export.h"
#include "zalcore/int24.h"

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
#define ZALACCELERATE_MATH(T)                                                   \
  ZAL_API void Abs(unsigned int len, const T* src, T* dst);                     \
  ZAL_API void Abs_InPlace(unsigned int len, T* srcDst);                        \
  ZAL_API void Sqr(unsigned int len, const T* src, T* dst);                     \
  ZAL_API void Sqr_InPlace(unsigned int len, T* srcDst);                        \
  ZAL_API void Sqrt(unsigned int len, const T* src, T* dst);                    \
  ZAL_API void Sqrt_InPlace(unsigned int len, T* srcDst);                       \
  ZAL_API void Exp(unsigned int len, const T* src, T* dst);                     \
  ZAL_API void Exp_InPlace(unsigned int len, T* srcDst);                        \
  ZAL_API void Ln(unsigned int len, const T* src, T* dst);                      \
  ZAL_API void Pow(unsigned int len, const T* base, const T* exponent, T* dst); \
  ZAL_API void Inverse(unsigned int len, const T* src, T* dst);                 \
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
// ---- Reductions and statistics -----------------------------------------------------------------
// Each returns its result (or fills its outputs) from len elements of src. A null pointer or a len
// of 0 (or 2^31 and more) is refused: value-returning functions then return 0 (index 0, false),
// MinMax and StandardDeviation leave their outputs as they were, MinIndex/MaxIndex still store 0
// through a non-null value pointer, and MinMaxIndex still writes 0 to both index outputs.
//   Sum(len, src)            sum                       Mean(len, src)   sum / len
//   Min / Max(len, src)      smallest / largest        MinMax(len, src, min, max)
//   MinIndex / MaxIndex(len, src, value)  index of the smallest / largest element; its value is
//                            stored through `value` unless that is null
//   MinMaxIndex(len, src, min, max, minIdx, maxIdx)   both at once
//   MaxAbs(src, len)         largest |src[i]| (pointer first, length second)
//   NormL1(len, src)         sum of |src[i]|           NormL2(len, src)  sqrt of the sum of squares
//   DotProduct(len, a, b)    sum of a[i] * b[i]
//   StandardDeviation(len, src, out)  sample deviation, sqrt(sum (mean - x)^2 / (len - 1)); a
//                            single element gives 0
//   Equal(len, a, b)         whether the len bytes are the same
// Extremes: NaN elements are skipped; ties report the first occurrence (lowest index), and the
// value reported is that element, so of -0 and +0 the earlier one wins. If every element is NaN,
// the index is 0 and the value src[0]. MaxAbs ignores NaN the same way (all NaN gives 0).
// Summation order and precision: sums are formed in one fixed order that does not depend on the
// processor, so every result is bit-identical on every machine. Element i is added to partial sum
// i mod 64 (i mod 32 for double), each partial in index order, and the partials are combined
// pairwise. The error of the float Sum is therefore about (len/64 + 6) eps sum|x| at worst rather
// than len eps sum|x|, and typically far smaller. Sum, Mean, NormL1, NormL2 and DotProduct of float
// data accumulate in float (products rounded before they are added, never fused); the float
// StandardDeviation accumulates mean and squared deviations in double and rounds once; double
// data accumulate in double. NormL2 squares without rescaling: |x| above about 1.8e19 (float)
// overflows to +Inf.
ZAL_API float Sum(unsigned int len, const float* src);
ZAL_API double Sum(unsigned int len, const double* src);
ZAL_API float Mean(unsigned int len, const float* src);
ZAL_API double Mean(unsigned int len, const double* src);
ZAL_API float Min(unsigned int len, const float* src);
ZAL_API double Min(unsigned int len, const double* src);
ZAL_API float Max(unsigned int len, const float* src);
ZAL_API double Max(unsigned int len, const double* src);
ZAL_API void MinMax(unsigned int len, const float* src, float& min, float& max);
ZAL_API int MinIndex(unsigned int len, const float* src, float* value);
ZAL_API int MaxIndex(unsigned int len, const float* src, float* value);
ZAL_API void MinMaxIndex(unsigned int len, const float* src, float& min, float& max, int& minIdx,
                         int& maxIdx);
ZAL_API float MaxAbs(const float* src, unsigned int len);
ZAL_API float NormL1(unsigned int len, const float* src);
ZAL_API double NormL1(unsigned int len, const double* src);
ZAL_API float NormL2(unsigned int len, const float* src);
ZAL_API double NormL2(unsigned int len, const double* src);
ZAL_API void StandardDeviation(unsigned int len, const float* src, float& out);
ZAL_API void StandardDeviation(unsigned int len, const double* src, double& out);
ZAL_API float DotProduct(unsigned int len, const float* a, const float* b);
ZAL_API double DotProduct(unsigned int len, const double* a, const double* b);
ZAL_API bool Equal(unsigned int len, const unsigned char* a, const unsigned char* b);

// ---- Thresholds, clamping, normalisation and ramps ----------------------------------------------
// For each i < len; comparisons are strict and ordered, so an element equal to the level and a NaN
// element stay as they are. Results are bit-identical on every processor.
//   Threshold_GT_InPlace(len, p, level)          p[i] > level becomes level
//   Threshold_LT_InPlace(len, p, level)          p[i] < level becomes level
//   Threshold_GTVal(len, src, dst, level, value)  dst[i] = src[i] > level ? value : src[i]
//   Threshold_LTVal(len, src, dst, level, value)  dst[i] = src[i] < level ? value : src[i]
//   X_InPlace(len, p, level, value)              the same in place
//   Trim(len, p, low, high)                      p[i] < low becomes low, p[i] > high becomes high;
//                                                low > high does nothing
//   Invert_Threshold_InPlace(len, p, level)      reciprocal with its magnitude held at 1/level:
//     complex z, with n = re^2 + im^2: n <= 1.1920928955078125e-7 gives (1/level, 0); n < level^2
//     gives (re, -im) / (sqrt(n) level); otherwise (re, -im) / n, the reciprocal itself. Real x:
//     x^2 <= 1.1920928955078125e-7 gives +1/level; |x| < level gives 1/level with the sign of x;
//     otherwise 1/x. A level <= 0 (or NaN) does nothing.
//   Normalize(len, src, dst, sub, div)           dst[i] = (src[i] - sub) * (1 / div); does nothing
//                                                when |div| is below the smallest normal number
//                                                (1.17549435e-38 float, 2.2250738585072014e-308
//                                                double), zero included
//   VectorSlope(len, p, offset, slope)           p[i] = offset + slope * i, computed in double and
//                                                rounded once: no drift however long the ramp
//   MinEvery / MaxEvery(len, a, b, dst)          dst[i] = a[i] < b[i] ? a[i] : b[i] (> for Max):
//                                                b[i] where either is NaN
//   MinEvery_InPlace / MaxEvery_InPlace(len, src, srcDst)  the same into srcDst (as b)
// Under denormals-are-zero, Threshold_GT/LT_InPlace and Min/MaxEvery return denormal elements as
// zero. A destination may be the same buffer as the source (exactly, not partly overlapping).
#define ZALACCELERATE_THRESHOLDS(T)                                                       \
  ZAL_API void Threshold_GT_InPlace(unsigned int len, T* p, T level);                     \
  ZAL_API void Threshold_LT_InPlace(unsigned int len, T* p, T level);                     \
  ZAL_API void Threshold_GTVal(unsigned int len, const T* src, T* dst, T level, T value); \
  ZAL_API void Threshold_GTVal_InPlace(unsigned int len, T* p, T level, T value);         \
  ZAL_API void Threshold_LTVal(unsigned int len, const T* src, T* dst, T level, T value); \
  ZAL_API void Threshold_LTVal_InPlace(unsigned int len, T* p, T level, T value);         \
  ZAL_API void Invert_Threshold_InPlace(unsigned int len, T* p, T level);                 \
  ZAL_API void Normalize(unsigned int len, const T* src, T* dst, T sub, T div);           \
  ZAL_API void VectorSlope(unsigned int len, T* p, T offset, T slope);

ZALACCELERATE_THRESHOLDS(float)
ZALACCELERATE_THRESHOLDS(double)
#undef ZALACCELERATE_THRESHOLDS

ZAL_API void Invert_Threshold_InPlace(unsigned int len, std::complex<float>* p, float level);
ZAL_API void Invert_Threshold_InPlace(unsigned int len, std::complex<double>* p, double level);
ZAL_API void Trim(unsigned int len, float* p, float low, float high);
ZAL_API void MinEvery(unsigned int len, const float* a, const float* b, float* dst);
ZAL_API void MinEvery_InPlace(unsigned int len, const float* src, float* srcDst);
ZAL_API void MaxEvery(unsigned int len, const float* a, const float* b, float* dst);
ZAL_API void MaxEvery_InPlace(unsigned int len, const float* src, float* srcDst);

// ---- Complex-domain helpers ---------------------------------------------------------------------
// len counts complex elements. Angles in radians.
//   Magnitude(len, re, im, dst)      dst[i] = sqrt(re[i]^2 + im[i]^2)   (split layout)
//   Magnitude(len, src, dst)         the same from interleaved elements; both layouts give the same
//                                    bits for the same data
//   PowerSpectr(len, src, dst)       dst[i] = re^2 + im^2
//   CartToPolar(len, src, mag, phase)  src holds 2 len floats (re, im pairs): mag[i] = |z|,
//                                    phase[i] = atan2(im, re) in [-pi, pi]
//   PolarToCart(len, mag, phase, dst)  dst[2i] = mag[i] cos(phase[i]), dst[2i+1] = mag[i] sin(...)
// Accuracy: magnitudes and power spectra are correctly rounded square roots of the rounded sums
// (not rescaled: re^2 + im^2 may overflow for parts above about 1.8e19 in float). Phases are within
// 2 ulp of atan2 evaluated exactly, with C's special values: atan2(+-0, +0) = +-0,
// atan2(+-0, -0) = +-pi, pi/4 multiples for infinite parts, NaN for NaN. PolarToCart is within
// 1 ulp of mag cos(phase), mag sin(phase) evaluated in double, for |phase| < 1.6e6; larger
// phases lose accuracy in the reduction by multiples of pi/2. Results are bit-identical on every
// processor.
ZAL_API void Magnitude(unsigned int len, const float* re, const float* im, float* dst);
ZAL_API void Magnitude(unsigned int len, const double* re, const double* im, double* dst);
ZAL_API void Magnitude(unsigned int len, const std::complex<float>* src, float* dst);
ZAL_API void Magnitude(unsigned int len, const std::complex<double>* src, double* dst);
ZAL_API void PowerSpectr(unsigned int len, const std::complex<float>* src, float* dst);
ZAL_API void PowerSpectr(unsigned int len, const std::complex<double>* src, double* dst);
ZAL_API void CartToPolar(unsigned int len, const float* src, float* mag, float* phase);
ZAL_API void PolarToCart(unsigned int len, const float* mag, const float* phase, float* dst);

// ---- Data movement and layout ---------------------------------------------------------------
// Bits are moved as they are: NaN payloads, signalling NaNs and -0 arrive unchanged.
//   Copy(len, src, dst)     dst[i] = src[i]; the arrays must not overlap
//   Move(len, src, dst)     the same for arrays that may overlap in any way: the result is that of
//                           copying src to a temporary first
//   Set(len, p, value)      p[i] = value
//   Zero(len, p)            p[i] = all-zero bits (+0 for float and double)
//   Flip(len, src, dst)     dst[i] = src[len - 1 - i]; dst must be src exactly or not overlap it
//   Flip_InPlace(len, p)    p reversed in place (the middle element of an odd len stays)
//   SwapBytes(len, p)       the bytes of each element in reverse order, in place
//   SwapBytes(len, src, dst) the same into dst (which may be src exactly): 2-byte AB -> BA,
//                           4-byte ABCD -> DCBA, 8-byte likewise, int24_t bytes 0 and 2 exchanged
//                           (0x123456, stored 56 34 12, becomes 12 34 56: 0x563412)
// Copy, Move, Set and Zero return at once for len 0, even with null pointers. Otherwise len and
// the pointers are checked as for every vector function (len >= 2^31 or a null pointer: nothing
// is done), except for this, kept on purpose for compatibility: Copy(int), Zero(int) and
// Zero(unsigned int) work on len * 4 bytes computed in 32 bits. A len of 2^30 or more wraps:
// 2^30 (or any multiple of it) copies or clears nothing, 2^30 + k works on the first k elements
// only, and a byte count of 2^31 or more does nothing.
// Destinations of about a megabyte and more (half the core's level-2 cache) are written with
// non-temporal stores that bypass the caches: the data is in memory, not cache, when the call
// returns. Move streams only arrays that do not overlap.
ZAL_API void Copy(unsigned int len, const signed char* src, signed char* dst);
ZAL_API void Copy(unsigned int len, const unsigned char* src, unsigned char* dst);
ZAL_API void Copy(unsigned int len, const short* src, short* dst);
ZAL_API void Copy(unsigned int len, const int* src, int* dst);
ZAL_API void Copy(unsigned int len, const unsigned int* src, unsigned int* dst);
ZAL_API void Copy(unsigned int len, const float* src, float* dst);
ZAL_API void Copy(unsigned int len, const double* src, double* dst);

ZAL_API void Move(unsigned int len, const unsigned char* src, unsigned char* dst);
ZAL_API void Move(unsigned int len, const short* src, short* dst);
ZAL_API void Move(unsigned int len, const unsigned int* src, unsigned int* dst);
ZAL_API void Move(unsigned int len, const float* src, float* dst);
ZAL_API void Move(unsigned int len, const double* src, double* dst);

ZAL_API void Set(unsigned int len, unsigned char* p, unsigned char value);
ZAL_API void Set(unsigned int len, short* p, short value);
ZAL_API void Set(unsigned int len, int* p, int value);
ZAL_API void Set(unsigned int len, unsigned int* p, unsigned int value);
ZAL_API void Set(unsigned int len, float* p, float value);
ZAL_API void Set(unsigned int len, double* p, double value);

ZAL_API void Zero(unsigned int len, unsigned char* p);
ZAL_API void Zero(unsigned int len, short* p);
ZAL_API void Zero(unsigned int len, int* p);
ZAL_API void Zero(unsigned int len, unsigned int* p);
ZAL_API void Zero(unsigned int len, float* p);
ZAL_API void Zero(unsigned int len, double* p);

ZAL_API void Flip(unsigned int len, const float* src, float* dst);
ZAL_API void Flip(unsigned int len, const double* src, double* dst);
ZAL_API void Flip_InPlace(unsigned int len, float* p);
ZAL_API void Flip_InPlace(unsigned int len, double* p);

ZAL_API void SwapBytes(unsigned int len, unsigned short* p);
ZAL_API void SwapBytes(unsigned int len, unsigned int* p);
ZAL_API void SwapBytes(unsigned int len, zalcore::utility::int24_t* p);
ZAL_API void SwapBytes(unsigned int len, std::uint64_t* p);
ZAL_API void SwapBytes(unsigned int len, const unsigned short* src, unsigned short* dst);
ZAL_API void SwapBytes(unsigned int len, const unsigned int* src, unsigned int* dst);
ZAL_API void SwapBytes(unsigned int len, const zalcore::utility::int24_t* src,
                       zalcore::utility::int24_t* dst);
ZAL_API void SwapBytes(unsigned int len, const std::uint64_t* src, std::uint64_t* dst);

// Interleaved audio holds frame after frame, each frame one sample per channel in channel order;
// planar audio one array per channel, reached through an array of channel pointers.
//   Interleave(len, a, b, dst)     dst[2i] = a[i], dst[2i + 1] = b[i]      for i < len
//   Deinterleave(len, src, a, b)   a[i] = src[2i], b[i] = src[2i + 1]
//   Interleave(channels, frames, src, dst)    dst[f * channels + c] = src[c][f]
//   Deinterleave(channels, frames, src, dst)  dst[c][f] = src[f * channels + c]
// for every frame f < frames and channel c < channels. Note the order of the counts: channels
// first. Frames are taken in ascending order, a block of a few frames at a time: Interleave
// writes dst, and Deinterleave reads src, block after block in one ascending pass; each element
// is read and written once, and no temporary memory is used. Planar and interleaved buffers must
// not overlap. A count of 0
// or of 2^31 and more, a null buffer or channel-pointer array, or a null pointer among the
// channels makes the call do nothing (the channel pointers are checked before anything is
// written). With one channel the N-channel forms copy.
ZAL_API void Interleave(unsigned int len, const float* a, const float* b, float* dst);
ZAL_API void Interleave(unsigned int len, const double* a, const double* b, double* dst);
ZAL_API void Deinterleave(unsigned int len, const float* src, float* a, float* b);
ZAL_API void Deinterleave(unsigned int len, const double* src, double* a, double* b);
ZAL_API void Interleave(unsigned int channels, unsigned int frames, const float* const* src,
                        float* dst);
ZAL_API void Interleave(unsigned int channels, unsigned int frames, const double* const* src,
                        double* dst);
ZAL_API void Deinterleave(unsigned int channels, unsigned int frames, const float* src,
                          float* const* dst);
ZAL_API void Deinterleave(unsigned int channels, unsigned int frames, const double* src,
                          double* const* dst);
// ---- Sample format conversion -------------------------------------------------------------------
// Arrays of samples from one storage format to another, element by element. int24_t is the packed
// 3-byte sample (zalcore/int24.h); half-precision values are binary16 bit patterns in unsigned
// short. Source and destination must not overlap. For each i < len:
//
// Towards floating point, scaled: dst[i] = src[i] * 2^-scale (a positive scale shrinks, a negative
// one enlarges; 15 maps 16-bit full scale to +-1.0). The value is exact in the destination type
// (an int above 2^24 in magnitude rounds to float in the thread's rounding mode, normally to
// nearest), and so is the product unless it leaves the destination's range: then it overflows to
// +-Inf or underflows, to a denormal or, with flush-to-zero on, to 0.
//   Convert(len, const unsigned char*, float*)           unscaled
//   Convert(len, const short*, float* | double*, scale)
//   Convert(len, const int*, float* | double*, scale)
//   Convert(len, const int24_t*, int*)                   sign-extended
//   Convert(len, const int24_t*, float*, scale)          the exact float of the sample, then, for
//                                                        scale != 0, times the float nearest to
//                                                        2^-scale (0 for scales above 149, +Inf
//                                                        below -127; with flush-to-zero on, 0
//                                                        from 127 on)
//   Convert(len, const float*, double*)                  exact
//   Convert(len, const double*, float*)                  rounded in the thread's rounding mode
//
// Towards an integer type: y = x * 2^-scale exactly, then
//   round false: y truncated toward zero;
//   round true:  y first limited from above to the target's maximum (32767.0 for short), then
//                0.5 with the sign of y added in the source's precision and the sum truncated:
//                halves go away from zero (2.5 -> 3, -2.5 -> -3). The addition rounds in the
//                thread's rounding mode: to nearest, a value just below a half rounds up
//                (0.49999997f -> 1), and above 2^23 a float sum rounds to even first;
// and the result saturates to the target's range: 0 .. 255, -32768 .. 32767,
// -2147483648 .. 2147483647. A NaN gives the minimum of the range (0 for unsigned char).
//   Convert(len, const float*, unsigned char* | short* | int*, scale, round)
//   Convert(len, const double*, int*, scale, round)
//   Convert(len, const int*, int24_t*, scale)   y = x * 2^-scale truncated toward zero, saturated
//                                               to -8388608 .. 8388607
//
// Float to int24_t follows one of two rules, chosen by round:
//   round false: with scale 0, x truncated toward zero and saturated (3.0e6 -> 3000000,
//                1.0e7 -> 8388607). With any other scale, x is first limited to +-1.0 (x >= 1.0
//                gives 2^-scale, x <= -1.0 gives -2^-scale) and x * 2^-scale is truncated and
//                saturated: with scale -23, 1.0 -> 8388607 and -1.0 -> -8388608, and 2.0 -> 8388607
//                too. The asymmetry between scale 0 and the others is deliberate. 2^-scale is exact
//                here (a denormal below 2^-126, 0 below 2^-149, +Inf above 2^127).
//   round true:  x * 2^-scale limited to -8388608.0 .. 8388607.0 and rounded to nearest with
//                ties to EVEN (2.5 -> 2, 3.5 -> 4, unlike every other integer target), whatever
//                rounding mode the thread has set.
// A NaN gives -8388608 under both rules. Under round false, a len of 2^31 and more is converted
// whole, not refused.
//   Convert(len, const float*, int24_t*, scale, round)
//
// Scales: the factor 2^-scale of the scaled conversions other than those from and to int24_t
// noted above is built in the exponent field of 1.0, so its reach is limited: float factors take
// scales -127 .. 127 and double factors -1023 .. 1023, and a scale beyond acts as the nearest
// end. At the upper end the field is zero and the factor is 0 (results 0, or NaN -> minimum for
// infinite inputs).
//
// Half precision. These two take (src, dst, len), and their sources are not const:
//   ConvertFloat2Half(src, dst, len)   rounded toward zero to binary16 (1.0009 -> 0x3C00,
//                                      70000.0 -> 0x7BFF: values beyond the range give the
//                                      largest finite half of their sign, infinities stay
//                                      infinite), denormal halves kept whatever the thread's
//                                      flush-to-zero mode; a NaN gives a quiet NaN with the top
//                                      ten bits of its payload
//   ConvertHalf2Float(src, dst, len)   exact; a NaN gives a quiet NaN with its payload
//
// Every conversion leaves the thread's floating-point control state as it found it, and none
// depends on it except where noted (rounding of int and double to float and of the added half,
// flush-to-zero of denormal products and of the int24_t factor).
ZAL_API void Convert(unsigned int len, const unsigned char* src, float* dst);
ZAL_API void Convert(unsigned int len, const short* src, float* dst, int scale);
ZAL_API void Convert(unsigned int len, const short* src, double* dst, int scale);
ZAL_API void Convert(unsigned int len, const int* src, float* dst, int scale);
ZAL_API void Convert(unsigned int len, const int* src, double* dst, int scale);
ZAL_API void Convert(unsigned int len, const int* src, zalcore::utility::int24_t* dst, int scale);
ZAL_API void Convert(unsigned int len, const float* src, unsigned char* dst, int scale, bool round);
ZAL_API void Convert(unsigned int len, const float* src, short* dst, int scale, bool round);
ZAL_API void Convert(unsigned int len, const float* src, int* dst, int scale, bool round);
ZAL_API void Convert(unsigned int len, const float* src, zalcore::utility::int24_t* dst, int scale,
                     bool round);
ZAL_API void Convert(unsigned int len, const double* src, int* dst, int scale, bool round);
ZAL_API void Convert(unsigned int len, const float* src, double* dst);
ZAL_API void Convert(unsigned int len, const double* src, float* dst);
ZAL_API void Convert(unsigned int len, const zalcore::utility::int24_t* src, int* dst);
ZAL_API void Convert(unsigned int len, const zalcore::utility::int24_t* src, float* dst, int scale);
ZAL_API void ConvertFloat2Half(float* src, unsigned short* dst, unsigned int len);
ZAL_API void ConvertHalf2Float(unsigned short* src, float* dst, unsigned int len);

// ---- Conversion with (de)interleaving -----------------------------------------------------------
// From a decoder's interleaved frames to one float array per channel, and back, in one pass:
// frame f of an interleaved buffer holds channels samples, src[f * channels + c] for channel c.
//   DeinterleaveConvert(channels, frames, src, dst, scale)
//       dst[c][f] = src[f * channels + c] converted as Convert(len, src, float*, scale) converts
//       it: short and int sources through the exponent-field factor, int24_t through the float
//       nearest to 2^-scale (only when scale != 0), float sources multiplied by the
//       exponent-field factor (left as they are, bit for bit, with scale 0).
//   InterleaveConvert(channels, frames, src, dst, scale, round)
//       dst[f * channels + c] = src[c][f] converted as the matching Convert(len, const float*, ...,
//       scale, round) converts it; for int24_t that is the rule the round flag chooses above.
// Results are bit-identical to Convert followed by Deinterleave, or Interleave followed by
// Convert. Nothing is allocated. A null buffer or channel pointer, channels or frames of 0 or of
// 2^31 and more make the call a silent no-op.
ZAL_API void DeinterleaveConvert(unsigned int channels, unsigned int frames, const short* src,
                                 float* const* dst, int scale);
ZAL_API void DeinterleaveConvert(unsigned int channels, unsigned int frames,
                                 const zalcore::utility::int24_t* src, float* const* dst,
                                 int scale);
ZAL_API void DeinterleaveConvert(unsigned int channels, unsigned int frames, const int* src,
                                 float* const* dst, int scale);
ZAL_API void DeinterleaveConvert(unsigned int channels, unsigned int frames, const float* src,
                                 float* const* dst, int scale);
ZAL_API void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                               short* dst, int scale, bool round);
ZAL_API void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                               zalcore::utility::int24_t* dst, int scale, bool round);
ZAL_API void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                               int* dst, int scale, bool round);

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

// ---- Window functions ---------------------------------------------------------------------------
// dst[n] = w(n) * src[n] for n < len, N = len: the symmetric forms, with N - 1 in the denominator,
// so that w(n) = w(N - 1 - n). To obtain a window itself, apply it to a vector of ones. src may be
// dst (in place).
//   WindowBartlett  w(n) = 2n / (N - 1) for n <= (N - 1) / 2: 0 at both ends, 1 at the centre
//   WindowHann      w(n) = 0.5 - 0.5 cos(2 pi n / (N - 1))
//   WindowHamming   w(n) = 0.54 - 0.46 cos(2 pi n / (N - 1))
//   WindowBlackman  w(n) = (alpha + 1) / 2 - 0.5 cos(2 pi n / (N - 1))
//                          - alpha / 2 cos(4 pi n / (N - 1))
//                   (alpha = -0.16 is the classic Blackman window; the ends are 0 for every alpha)
//   WindowKaiser    w(n) = I0(alpha sqrt(c^2 - (n - c)^2)) / I0(alpha c), c = (N - 1) / 2, I0 the
//                   modified Bessel function of the first kind of order 0: the usual shape
//                   parameter beta is alpha (N - 1) / 2; alpha = 0 gives all ones
// Silent no-ops, nothing written: a null pointer; Bartlett, Hann, Hamming and Blackman with len
// below 3 (or of 2^31 and more); Kaiser with len 0 (or of 2^31 and more), or with
// |alpha| (N - 1) / 2 above 38, where I0 outgrows single precision. Kaiser of len 1 copies the
// element.
// Accuracy: each weight is within 2 ulp of the exact formula (float windows round a double weight
// once, within half an ulp) and the product is rounded once; every processor level gives the same
// bits. Nothing is allocated, except by the double Bartlett window, which works through a float
// temporary from the core library's recycling allocator (and throws std::bad_alloc if there is no
// memory for it): src is converted to float, windowed as the float Bartlett window does it, and
// converted back, so its results carry single-precision rounding. Its steps run whatever the one
// before did: for len 1 and 2 dst receives src rounded to float, and with a null src and len of 3
// or more, zeros (the temporary's initial values).
// DSPWindowType names a window for filter design; there is no Kaiser member, and a consumer
// treats any value above Hann as Hann.
enum DSPWindowType : int { Bartlett = 0, Blackman = 1, Hamming = 2, Hann = 3 };

ZAL_API void WindowBartlett(unsigned int len, const float* src, float* dst);
ZAL_API void WindowBartlett(unsigned int len, const double* src, double* dst);
ZAL_API void WindowBlackman(unsigned int len, const float* src, float* dst, float alpha);
ZAL_API void WindowBlackman(unsigned int len, const double* src, double* dst, double alpha);
ZAL_API void WindowHamming(unsigned int len, const float* src, float* dst);
ZAL_API void WindowHamming(unsigned int len, const double* src, double* dst);
ZAL_API void WindowHann(unsigned int len, const float* src, float* dst);
ZAL_API void WindowHann(unsigned int len, const double* src, double* dst);
ZAL_API void WindowKaiser(unsigned int len, const float* src, float* dst, float alpha);
ZAL_API void WindowKaiser(unsigned int len, const double* src, double* dst, double alpha);

// ---- Convolution and resampling ----------------------------------------------------------------
// Convolve: dst[k] = sum over i of a[i] * b[k - i] for k < lenA + lenB - 1, terms outside either
// vector taken as zero; dst receives lenA + lenB - 1 elements and must not overlap a or b.
// Silent no-ops, nothing written: a null a, b or dst; lenA or lenB of 0 or of 2^31 and more;
// lenA + lenB - 1 above 2^31 - 1; a null work buffer where the transform method runs.
// Method, chosen from the two lengths alone (M the shorter, L the longer operand):
// - direct summation when M < 64, when no transform block of at most 2^20 points holds 2M - 1
//   points, or when M * L is below the transform's estimated cost;
// - otherwise overlap-add over the library's real FFT, in blocks of N = 2^k points (2M - 1 <= N
//   <= 2^20, and no longer than the whole result), each block taking N - M + 1 inputs of the
//   longer operand. N minimises (blocks + 1/2) * (3 N log2 N + 4400), the transform's estimated
//   cost in units of one multiply-add of direct summation; the transform runs where that is below
//   M * L.
// The rule's constants were fitted to a grid measured on an x86-64 server with AVX-512 (CPUID
// family 26, model 2, avx512 level); docs/convolution.md shows the grid.
// Accuracy, relative to sum|a| * sum|b|, per output: direct summation within M * 2^-24 (float) or
// M * 2^-53 (double), usually far less; the transform within (3 log2 N + 8) * 2^-24 (float) or
// (3 log2 N + 8) * 2^-53 (double). Under the transform a NaN or infinity in the longer operand
// turns every output of its block into NaN (in the shorter operand, every output); under direct
// summation it reaches only the outputs it takes part in.
// ConvolutionWorkBufferSize: the length, in floats, of the work buffer that Convolve of these
// lengths needs (0 when it sums directly, or when the lengths are refused). A double Convolve
// takes a work buffer of that many doubles. The size is that of the processor level in force:
// query it again after forcing another level through the engine. The work buffer needs no
// alignment beyond its element type's; it holds the transform's tables between calls, and a call
// with a buffer whose tables are intact for its block length skips preparing them (a checksum
// guards them, so the caller may use the buffer for anything between calls).
// The overloads with `work` allocate nothing; the others allocate one engine block per call (of
// ConvolutionWorkBufferSize elements, released on every path; they may throw std::bad_alloc for
// its owner) and prepare the transform every call.
ZAL_API unsigned long long ConvolutionWorkBufferSize(unsigned int lenA, unsigned int lenB);
ZAL_API void Convolve(unsigned int lenA, const float* a, unsigned int lenB, const float* b,
                      float* dst, float* work);
ZAL_API void Convolve(unsigned int lenA, const float* a, unsigned int lenB, const float* b,
                      float* dst);
ZAL_API void Convolve(unsigned int lenA, const double* a, unsigned int lenB, const double* b,
                      double* dst, double* work);
ZAL_API void Convolve(unsigned int lenA, const double* a, unsigned int lenB, const double* b,
                      double* dst);

// DownSample keeps every factor-th sample of a stream: with p = *phase, dst[k] = src[p + k factor]
// for every p + k factor < len, ceil((len - p) / factor) outputs (none when p >= len). On return
// *phase is the index, counted from the next block's start, of the next sample to keep, so that
// consecutive blocks decimate one stream exactly as one long block would. factor 1 copies src and
// sets *phase to 0.
// UpSample inserts factor - 1 zeros after each sample: dst receives len * factor elements,
// dst[k factor + *phase] = src[k] and zeros elsewhere; *phase is unchanged.
// Silent no-ops, dst and *phase untouched, checked in this order: a null src, dst or phase; len 0
// or of 2^31 and more; factor 0 or of 2^31 and more; *phase not below factor; for UpSample also
// len * factor above 2^31 - 1. dst must not overlap src.
ZAL_API void DownSample(unsigned int len, const float* src, float* dst, unsigned int factor,
                        unsigned int* phase);
ZAL_API void DownSample(unsigned int len, const double* src, double* dst, unsigned int factor,
                        unsigned int* phase);
ZAL_API void UpSample(unsigned int len, const float* src, float* dst, unsigned int factor,
                      unsigned int* phase);
ZAL_API void UpSample(unsigned int len, const double* src, double* dst, unsigned int factor,
                      unsigned int* phase);

}  // namespace zalaccelerate::utility

// ---- Matrix product ----------------------------------------------------------------------------
namespace zalaccelerate {

// Storage of a dense r x c matrix: element (i, j) at i * c + j by rows, at i + j * r by columns.
enum MatrixDataOrder : int { RowMajor = 0, ColumnMajor = 1 };

}  // namespace zalaccelerate

namespace zalaccelerate::utility {

// c = a b: a is m x k, b is k x n, c is m x n, all three dense (no padding) and stored in `order`.
// m and n are the rows and columns of c, k the inner dimension. Complex matrices are multiplied
// as they stand (no conjugation). c must not overlap a or b.
// ColumnMajor: the product is formed straight into c.
// RowMajor: the product is formed in a column-major m x n temporary, which is copied into c by
// rows and released. If m and n are nonzero and m > (2^63 - 1) / n (only possible with a
// negative n), the temporary cannot exist and std::bad_alloc is thrown, as it is when the heap
// has no room for it.
// Any other order value: nothing is computed and c is left as it is.
// Silent no-ops, nothing written: a null pointer, m or n of 0 or less, or k below 0. k = 0 gives
// the zero matrix.
// Accuracy: each element is a sum of k products, within k eps sum |a_il b_lj| of the exact one
// (eps the type's unit roundoff; for complex elements, twice that); the order of summation, and
// so the last bits, may differ between processor levels and between the two orders. A NaN
// spreads over its row of c (in a) or column (in b); so does an infinity, which in complex
// products may come out as NaN (a 0 * Inf inside). Runs at every level's full vector width.
// Allocation: none by this library in the column-major form beyond what the product kernel
// takes for packing operands of more than 128 KB (large products); the row-major form allocates
// the temporary on every call. Callers in real-time paths use ColumnMajor.
ZAL_API void Multiply(MatrixDataOrder order, int m, int n, int k, const float* a, const float* b,
                      float* c);
ZAL_API void Multiply(MatrixDataOrder order, int m, int n, int k, const double* a, const double* b,
                      double* c);
ZAL_API void Multiply(MatrixDataOrder order, int m, int n, int k, const std::complex<float>* a,
                      const std::complex<float>* b, std::complex<float>* c);
ZAL_API void Multiply(MatrixDataOrder order, int m, int n, int k, const std::complex<double>* a,
                      const std::complex<double>* b, std::complex<double>* c);

}  // namespace zalaccelerate::utility
