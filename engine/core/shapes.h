// Function types shared by primitives. A kernel is declared through its shape at every level, so
// one whose signature drifts fails to compile.
#pragma once

#include <cstdint>

#include "zalaccelerate/core.h"

namespace zal::engine {

// Accuracy class of a primitive, which the cross-level tests compare by.
enum class Accuracy {
  kService,  // no elementwise result: tested by its own contract
  kExact,    // the same bits as the portable variant at every level (NaN payloads aside)
  // Math functions. Each level stays within the bound of the exact result; levels may differ.
  kUlp1,           // at most 1 ulp from the exact result
  kCorrectBits11,  // relative error at most 2^-10
  kCorrectBits21,  // relative error at most 2^-20
  kCorrectBits24,  // relative error at most 2^-23
  kCorrectBits26,  // relative error at most 2^-25
};

// Interleaved complex samples, layout-compatible with std::complex (real part first).
struct Complex32 {
  float re;
  float im;
};
struct Complex64 {
  double re;
  double im;
};

// Elementwise primitives. Operand roles follow the engine's convention: a two-operand primitive
// combines its second operand with its first (second - first, second / first).
template <class T>
using Binary = EngStatus(const T* first, const T* second, T* dst, int n);
template <class T>
using BinaryInPlace = EngStatus(const T* src, T* src_dst, int n);
template <class T>
using WithConstant = EngStatus(const T* src, T constant, T* dst, int n);
template <class T>
using ConstantInPlace = EngStatus(T constant, T* src_dst, int n);
// Constants too wide to pass in a register are read through a pointer.
template <class T>
using WithConstantRef = EngStatus(const T* src, const T* constant, T* dst, int n);
template <class T>
using ConstantRefInPlace = EngStatus(const T* constant, T* src_dst, int n);
// Integer product scaled by 2^-scale.
template <class T>
using WithConstantScaled = EngStatus(const T* src, T constant, T* dst, int n, int scale);

// Elementwise functions of one vector; the in-place form reads and writes one array.
template <class T>
using Unary = EngStatus(const T* src, T* dst, int n);
template <class T>
using UnaryInPlace = EngStatus(T* src_dst, int n);
// ---- Reductions, thresholds and complex-domain helpers -----------------------------------------
// Reductions write their result cells only on success (status 0).
template <class T>
using Reduce = EngStatus(const T* src, int n, T* result);
// hint: 2 asks for the accurate algorithm (double accumulation of float data); any other value
// takes the default one.
template <class T>
using ReduceHinted = EngStatus(const T* src, int n, T* result, int hint);
template <class T>
using ReduceTwo = EngStatus(const T* first, const T* second, int n, T* result);
template <class T>
using ReduceToIndex = EngStatus(const T* src, int n, T* value, int* index);
template <class T>
using ReduceToRange = EngStatus(const T* src, int n, T* min, T* max);
template <class T>
using ReduceToRangeIndex = EngStatus(const T* src, int n, T* min, int* min_index, T* max,
                                     int* max_index);
using CompareBytes = EngStatus(const unsigned char* first, const unsigned char* second, int n,
                               int* equal);

template <class T>
using ThresholdInPlace = EngStatus(T* src_dst, int n, T level);
template <class T>
using ThresholdValue = EngStatus(const T* src, T* dst, int n, T level, T value);
template <class T>
using ThresholdValueInPlace = EngStatus(T* src_dst, int n, T level, T value);
// Below level_lt becomes value_lt, above level_gt becomes value_gt.
template <class T>
using ThresholdTwoSided = EngStatus(const T* src, T* dst, int n, T level_lt, T value_lt, T level_gt,
                                    T value_gt);
// The real type of an element: itself, or the type of a complex element's parts.
template <class T>
struct RealOfElement {
  using Type = T;
};
template <>
struct RealOfElement<Complex32> {
  using Type = float;
};
template <>
struct RealOfElement<Complex64> {
  using Type = double;
};
template <class T>
using RealOf = typename RealOfElement<T>::Type;

// The level of a complex inversion is a real magnitude.
template <class T>
using InvertThreshold = EngStatus(T* src_dst, int n, RealOf<T> level);
template <class T>
using NormalizeShape = EngStatus(const T* src, T* dst, int n, T sub, T div);
template <class T>
using Ramp = EngStatus(T* dst, int n, T offset, T slope);

// Complex elements in, one real per element out.
template <class C>
using ComplexToReal = EngStatus(const C* src, RealOf<C>* dst, int n);
// Interleaved (re, im) pairs to magnitudes and phases, and back.
using CartesianToPolar = EngStatus(const float* src, float* magnitude, float* phase, int n);
using PolarToCartesian = EngStatus(const float* magnitude, const float* phase, float* dst, int n);

// A packed 24-bit two's-complement little-endian sample: three bytes, least significant first, no
// padding; layout-compatible with the framework's int24_t.
struct Int24 {
  unsigned char bytes[3];
};

// ---- Data movement -----------------------------------------------------------------------------
// Copies need separate arrays; moves give the result of copying through a temporary, for any
// overlap; reversals write src backwards and may run in place (dst == src).
template <class T>
using Copy = EngStatus(const T* src, T* dst, int n);
template <class T>
using Move = EngStatus(const T* src, T* dst, int n);
template <class T>
using Reversal = EngStatus(const T* src, T* dst, int n);
template <class T>
using Fill = EngStatus(T value, T* dst, int n);
template <class T>
using Clear = EngStatus(T* dst, int n);
// Tapering windows: dst[i] = w(i) * src[i], with weights that depend on the position and the
// length, so these are not elementwise shapes. src may be dst.
template <class T>
using Window = EngStatus(const T* src, T* dst, int n);
template <class T>
using WindowWithParameter = EngStatus(const T* src, T* dst, int n, T alpha);

// Fast Fourier transforms. A prepared transform (FFTSpec, opaque here) lives inside a block
// the caller allocates to the queried size; preparation writes its address through `spec`.
struct FFTSpec;
using FFTGetSize = EngStatus(int order, int flag, int hint, int* spec_size, int* init_size,
                             int* work_size);
using FFTInit = EngStatus(FFTSpec** spec, int order, int flag, int hint, unsigned char* block,
                          unsigned char* init_buffer);
template <class T>
using FFTTransform = EngStatus(const T* src, T* dst, const FFTSpec* spec, unsigned char* work);
template <class T>
using FFTSplitTransform = EngStatus(const T* src_re, const T* src_im, T* dst_re, T* dst_im,
                                    const FFTSpec* spec, unsigned char* work);

// ---- Sample format conversion ------------------------------------------------------------------
// Element by element from one type to another. Scaled forms multiply by 2^-scale; `mode` selects
// the rounding of integer targets: 0 toward zero, 2 to nearest with halves away from zero.
template <class From, class To>
using Conversion = EngStatus(const From* src, To* dst, int n);
template <class From, class To>
using ConversionScaled = EngStatus(const From* src, To* dst, int n, int scale);
template <class From, class To>
using ConversionRounded = EngStatus(const From* src, To* dst, int n, int mode, int scale);
// Float to binary16 bit patterns: mode 0 toward zero, 1 to nearest even.
using HalfConversion = EngStatus(const float* src, unsigned short* dst, int n, int mode);

// The conversions of the list by name: a row's shape must be one token.
using ConversionU8F32 = Conversion<unsigned char, float>;
using ScaledS16F32 = ConversionScaled<short, float>;
using ScaledS16F64 = ConversionScaled<short, double>;
using ScaledS32F32 = ConversionScaled<int, float>;
using ScaledS32F64 = ConversionScaled<int, double>;
using ScaledS32S24 = ConversionScaled<int, Int24>;
using RoundedF32U8 = ConversionRounded<float, unsigned char>;
using RoundedF32S16 = ConversionRounded<float, short>;
using RoundedF32S32 = ConversionRounded<float, int>;
using RoundedF64S32 = ConversionRounded<double, int>;
using ScaledF32S24 = ConversionScaled<float, Int24>;
using RoundedF32S24 = ConversionRounded<float, Int24>;
using ConversionF32F64 = Conversion<float, double>;
using ConversionF64F32 = Conversion<double, float>;
using ConversionS24S32 = Conversion<Int24, int>;
using ConversionS24F32 = Conversion<Int24, float>;
using ConversionF16F32 = Conversion<unsigned short, float>;

// Interleaved frames of `channels` samples to one float array per channel, each sample times
// `factor`; and planar floats to interleaved samples, converted as ConversionRounded does.
template <class From>
using DeinterleaveConversion = EngStatus(const From* src, float* const* dst, int channels,
                                         int frames, float factor);
template <class To>
using InterleaveConversion = EngStatus(const float* const* src, To* dst, int channels, int frames,
                                       int mode, int scale);

using DeinterleaveS16 = DeinterleaveConversion<short>;
using DeinterleaveS24 = DeinterleaveConversion<Int24>;
using DeinterleaveS32 = DeinterleaveConversion<int>;
using DeinterleaveF32 = DeinterleaveConversion<float>;
using InterleaveS16 = InterleaveConversion<short>;
using InterleaveS24 = InterleaveConversion<Int24>;
using InterleaveS32 = InterleaveConversion<int>;

// ---- Single-rate FIR filter and lowpass design --------------------------------------------------
// A prepared filter lives in a block of the queried size, laid out by the level that prepares
// it; filtering reads the delay line dly_src (null: silence) and writes the stream's last
// taps_len - 1 inputs to dly_dst (null: not kept). The lowpass design writes taps_len doubles.
using FIRGetSize = EngStatus(int taps_len, int data_type, int* spec_size, int* work_size);
using FIRInit = EngStatus(const float* taps, int taps_len, int algorithm, unsigned char* spec);
using FIRFilter = EngStatus(const float* src, float* dst, int n, const unsigned char* spec,
                            const float* dly_src, float* dly_dst, unsigned char* work);
using LowpassBufferSize = EngStatus(int taps_len, int* buffer_size);
using LowpassDesign = EngStatus(double rfreq, double* taps, int taps_len, int window, int normalize,
                                unsigned char* buffer);
// ---- Convolution and resampling ----------------------------------------------------------------
// Linear convolution: dst[k] = sum of a[i] * b[k - i], lenA + lenB - 1 outputs. `method` 0 lets
// the engine choose, 1 sums directly, 2 runs the transform; `data_type` 13 is float, 19 double.
// The work size is in bytes; the transform keeps its prepared tables in the work buffer.
using ConvolutionSizeQuery = EngStatus(int len_a, int len_b, int data_type, int method, int* bytes);
template <class T>
using Convolution = EngStatus(const T* a, int len_a, const T* b, int len_b, T* dst, int method,
                              unsigned char* work);
// Stream decimation and zero insertion by an integer factor; `phase` carries the stream position
// from one block to the next, `dst_len` receives the outputs written.
template <class T>
using Resampling = EngStatus(const T* src, int len, T* dst, int* dst_len, int factor, int* phase);

using Allocate = void*(int count);
using Release = void(void* block);
using SetFlushToZero = EngStatus(int flag, unsigned int* saved_underflow_mask);
using SetFlag = EngStatus(int flag);
using VersionQuery = const EngLibraryVersion*();

// ---- Multirate FIR filter ----------------------------------------------------------------------
// A prepared polyphase filter (MRFSpec, opaque here) lives in a block the caller allocates to
// the queried size, with a work buffer of the queried size beside it. `data_type` is the engine's
// element code: 13 float, 19 double. Each call runs `iters` periods of down_factor inputs and
// up_factor outputs; the delay lines (optional, null for silence) hold the last inputs, oldest
// first, and may be one array.
struct MRFSpec;
using MRFGetSize = EngStatus(int up_factor, int down_factor, int taps_len, int data_type,
                             int* spec_size, int* buf_size);
template <class T>
using MRFInit = EngStatus(MRFSpec** spec, const T* taps, int taps_len, int up_factor, int up_phase,
                          int down_factor, int down_phase, unsigned char* block);
template <class T>
using MRFFilter = EngStatus(const T* src, T* dst, int iters, const MRFSpec* spec, const T* dly_src,
                            T* dly_dst, unsigned char* work);
// ---- IIR filter --------------------------------------------------------------------------------
// A prepared recursive filter (IIRSpec, opaque here) lives in a block the caller allocates to the
// queried size; preparation writes its address through `spec`. The filter updates the spec.
struct IIRSpec;
using IIRGetSize = EngStatus(int order, int* size);
template <class T>
using IIRInit = EngStatus(IIRSpec** spec, const T* taps, int order, const T* dly_line,
                          unsigned char* block);
template <class T>
using IIRFilter = EngStatus(const T* src, T* dst, int n, IIRSpec* spec);
template <class T>
using IIRGetDlyLine = EngStatus(const IIRSpec* spec, T* dly_line);
template <class T>
using IIRSetDlyLine = EngStatus(IIRSpec* spec, const T* dly_line);
// Matrix product
// c = a b with a m x k, b k x n and c m x n, c stored by columns; a and b are stored by columns,
// or by rows when `rows` is nonzero. k may be 0 (c is then zero).
template <class T>
using MatrixProduct = EngStatus(const T* a, const T* b, T* c, int m, int n, int k, int rows);

}  // namespace zal::engine
