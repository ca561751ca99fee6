// Every engine primitive, declared once. Per-level declarations, dispatch tables, dispatchers and
// the cross-level tests are all generated from these rows:
//   X(family, name, shape, accuracy)
// Adding a primitive means a row here, its kernel, and its wrapper.
#pragma once

#define ZAL_MEMORY_PRIMITIVES(X)           \
  X(memory, Malloc, Allocate, kService)    \
  X(memory, MallocU8, Allocate, kService)  \
  X(memory, MallocS16, Allocate, kService) \
  X(memory, MallocF32, Allocate, kService) \
  X(memory, MallocF64, Allocate, kService) \
  X(memory, MallocC32, Allocate, kService) \
  X(memory, MallocC64, Allocate, kService) \
  X(memory, Free, Release, kService)

#define ZAL_FP_CONTROL_PRIMITIVES(X)                          \
  X(fp_control, SetFlushToZeroMode, SetFlushToZero, kService) \
  X(fp_control, SetDenormalsAreZeroMode, SetFlag, kService)

#define ZAL_VERSION_PRIMITIVES(X) X(version, LibraryVersion, VersionQuery, kService)

// Elementwise arithmetic: dst = first + second, second - first, first * second, second / first;
// AddProduct accumulates first * second into dst. Constant forms: src + c, src - c, c - src
// (Rev), src * c, src / c, c / src (DivConstantRev). InPlace forms read and write src_dst.
#define ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, T, E)                     \
  X(arithmetic, Add##E, Binary<T>, kExact)                              \
  X(arithmetic, Sub##E, Binary<T>, kExact)                              \
  X(arithmetic, Mul##E, Binary<T>, kExact)                              \
  X(arithmetic, Div##E, Binary<T>, kExact)                              \
  X(arithmetic, AddProduct##E, Binary<T>, kExact)                       \
  X(arithmetic, Sub##E##InPlace, BinaryInPlace<T>, kExact)              \
  X(arithmetic, Mul##E##InPlace, BinaryInPlace<T>, kExact)              \
  X(arithmetic, Div##E##InPlace, BinaryInPlace<T>, kExact)              \
  X(arithmetic, AddConstant##E, WithConstant<T>, kExact)                \
  X(arithmetic, SubConstant##E, WithConstant<T>, kExact)                \
  X(arithmetic, SubConstantRev##E, WithConstant<T>, kExact)             \
  X(arithmetic, MulConstant##E, WithConstant<T>, kExact)                \
  X(arithmetic, DivConstant##E, WithConstant<T>, kExact)                \
  X(arithmetic, AddConstant##E##InPlace, ConstantInPlace<T>, kExact)    \
  X(arithmetic, SubConstant##E##InPlace, ConstantInPlace<T>, kExact)    \
  X(arithmetic, SubConstantRev##E##InPlace, ConstantInPlace<T>, kExact) \
  X(arithmetic, MulConstant##E##InPlace, ConstantInPlace<T>, kExact)    \
  X(arithmetic, DivConstant##E##InPlace, ConstantInPlace<T>, kExact)

#define ZAL_ARITHMETIC_PRIMITIVES(X)                                             \
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, float, F32)                              \
  X(arithmetic, AddConstantProductF32, WithConstant<float>, kExact)              \
  X(arithmetic, DivConstantRevF32, WithConstant<float>, kExact)                  \
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, double, F64)                             \
  X(arithmetic, AddF64InPlace, BinaryInPlace<double>, kExact)                    \
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, Complex32, C32)                          \
  X(arithmetic, AddC32InPlace, BinaryInPlace<Complex32>, kExact)                 \
  X(arithmetic, AddC64, Binary<Complex64>, kExact)                               \
  X(arithmetic, SubC64, Binary<Complex64>, kExact)                               \
  X(arithmetic, MulC64, Binary<Complex64>, kExact)                               \
  X(arithmetic, DivC64, Binary<Complex64>, kExact)                               \
  X(arithmetic, AddProductC64, Binary<Complex64>, kExact)                        \
  X(arithmetic, AddC64InPlace, BinaryInPlace<Complex64>, kExact)                 \
  X(arithmetic, SubC64InPlace, BinaryInPlace<Complex64>, kExact)                 \
  X(arithmetic, MulC64InPlace, BinaryInPlace<Complex64>, kExact)                 \
  X(arithmetic, DivC64InPlace, BinaryInPlace<Complex64>, kExact)                 \
  X(arithmetic, AddConstantC64, WithConstantRef<Complex64>, kExact)              \
  X(arithmetic, SubConstantC64, WithConstantRef<Complex64>, kExact)              \
  X(arithmetic, SubConstantRevC64, WithConstantRef<Complex64>, kExact)           \
  X(arithmetic, MulConstantC64, WithConstantRef<Complex64>, kExact)              \
  X(arithmetic, DivConstantC64, WithConstantRef<Complex64>, kExact)              \
  X(arithmetic, AddConstantC64InPlace, ConstantRefInPlace<Complex64>, kExact)    \
  X(arithmetic, SubConstantC64InPlace, ConstantRefInPlace<Complex64>, kExact)    \
  X(arithmetic, SubConstantRevC64InPlace, ConstantRefInPlace<Complex64>, kExact) \
  X(arithmetic, MulConstantC64InPlace, ConstantRefInPlace<Complex64>, kExact)    \
  X(arithmetic, DivConstantC64InPlace, ConstantRefInPlace<Complex64>, kExact)    \
  X(arithmetic, MulConstantScaledS16, WithConstantScaled<short>, kExact)

// Elementwise math functions. Pow raises the first operand (base) to the second (exponent).
// The PrecN forms trade accuracy for speed; Exp and Ln run in place by passing src as dst.
#define ZAL_MATH_BY_TYPE_PRIMITIVES(X, T, E)         \
  X(math, Abs##E, Unary<T>, kExact)                  \
  X(math, Abs##E##InPlace, UnaryInPlace<T>, kExact)  \
  X(math, Sqr##E, Unary<T>, kExact)                  \
  X(math, Sqr##E##InPlace, UnaryInPlace<T>, kExact)  \
  X(math, Sqrt##E, Unary<T>, kExact)                 \
  X(math, Sqrt##E##InPlace, UnaryInPlace<T>, kExact) \
  X(math, Exp##E, Unary<T>, kUlp1)                   \
  X(math, Ln##E, Unary<T>, kUlp1)                    \
  X(math, Pow##E, Binary<T>, kUlp1)                  \
  X(math, Inverse##E, Unary<T>, kExact)              \
  X(math, Round##E, Unary<T>, kExact)

#define ZAL_MATH_PRIMITIVES(X)                          \
  ZAL_MATH_BY_TYPE_PRIMITIVES(X, float, F32)            \
  X(math, LnF32Prec11, Unary<float>, kCorrectBits11)    \
  X(math, LnF32Prec21, Unary<float>, kCorrectBits21)    \
  X(math, LnF32Prec24, Unary<float>, kCorrectBits24)    \
  ZAL_MATH_BY_TYPE_PRIMITIVES(X, double, F64)           \
  X(math, PowF64Prec26, Binary<double>, kCorrectBits26) \
  X(math, InverseF64Prec26, Unary<double>, kCorrectBits26)
// Reductions and statistics: fixed summation order, bit-identical at every level (see
// engine/primitives/statistics/statistics-inl.h).
#define ZAL_STATISTICS_BY_TYPE_PRIMITIVES(X, T, E) \
  X(statistics, Min##E, Reduce<T>, kExact)         \
  X(statistics, Max##E, Reduce<T>, kExact)         \
  X(statistics, NormL1##E, Reduce<T>, kExact)      \
  X(statistics, NormL2##E, Reduce<T>, kExact)      \
  X(statistics, DotProduct##E, ReduceTwo<T>, kExact)

#define ZAL_STATISTICS_PRIMITIVES(X)                               \
  ZAL_STATISTICS_BY_TYPE_PRIMITIVES(X, float, F32)                 \
  ZAL_STATISTICS_BY_TYPE_PRIMITIVES(X, double, F64)                \
  X(statistics, SumF32, ReduceHinted<float>, kExact)               \
  X(statistics, MeanF32, ReduceHinted<float>, kExact)              \
  X(statistics, StdDevF32, ReduceHinted<float>, kExact)            \
  X(statistics, SumF64, Reduce<double>, kExact)                    \
  X(statistics, MeanF64, Reduce<double>, kExact)                   \
  X(statistics, StdDevF64, Reduce<double>, kExact)                 \
  X(statistics, MinMaxF32, ReduceToRange<float>, kExact)           \
  X(statistics, MinIndexF32, ReduceToIndex<float>, kExact)         \
  X(statistics, MaxIndexF32, ReduceToIndex<float>, kExact)         \
  X(statistics, MinMaxIndexF32, ReduceToRangeIndex<float>, kExact) \
  X(statistics, EqualU8, CompareBytes, kService)

// Thresholds, clamping, normalisation, ramps and elementwise extremes.
#define ZAL_THRESHOLD_BY_TYPE_PRIMITIVES(X, T, E)                            \
  X(threshold, ThresholdGT##E##InPlace, ThresholdInPlace<T>, kExact)         \
  X(threshold, ThresholdLT##E##InPlace, ThresholdInPlace<T>, kExact)         \
  X(threshold, ThresholdGTVal##E, ThresholdValue<T>, kExact)                 \
  X(threshold, ThresholdLTVal##E, ThresholdValue<T>, kExact)                 \
  X(threshold, ThresholdGTVal##E##InPlace, ThresholdValueInPlace<T>, kExact) \
  X(threshold, ThresholdLTVal##E##InPlace, ThresholdValueInPlace<T>, kExact) \
  X(threshold, InvertThreshold##E##InPlace, InvertThreshold<T>, kExact)      \
  X(threshold, Normalize##E, NormalizeShape<T>, kExact)                      \
  X(threshold, VectorSlope##E, Ramp<T>, kExact)

#define ZAL_THRESHOLD_PRIMITIVES(X)                                           \
  ZAL_THRESHOLD_BY_TYPE_PRIMITIVES(X, float, F32)                             \
  ZAL_THRESHOLD_BY_TYPE_PRIMITIVES(X, double, F64)                            \
  X(threshold, ThresholdLTValGTValF32, ThresholdTwoSided<float>, kExact)      \
  X(threshold, InvertThresholdC32InPlace, InvertThreshold<Complex32>, kExact) \
  X(threshold, InvertThresholdC64InPlace, InvertThreshold<Complex64>, kExact) \
  X(threshold, MinEveryF32, Binary<float>, kExact)                            \
  X(threshold, MaxEveryF32, Binary<float>, kExact)                            \
  X(threshold, MinEveryF32InPlace, BinaryInPlace<float>, kExact)              \
  X(threshold, MaxEveryF32InPlace, BinaryInPlace<float>, kExact)

// Complex-domain helpers: magnitudes, power spectra and polar coordinates.
#define ZAL_COMPLEX_PRIMITIVES(X)                              \
  X(complex, MagnitudeSplitF32, Binary<float>, kExact)         \
  X(complex, MagnitudeSplitF64, Binary<double>, kExact)        \
  X(complex, MagnitudeC32, ComplexToReal<Complex32>, kExact)   \
  X(complex, MagnitudeC64, ComplexToReal<Complex64>, kExact)   \
  X(complex, PowerSpectrC32, ComplexToReal<Complex32>, kExact) \
  X(complex, PowerSpectrC64, ComplexToReal<Complex64>, kExact) \
  X(complex, CartToPolarF32, CartesianToPolar, kExact)         \
  X(complex, PolarToCartF32, PolarToCartesian, kExact)

// Data movement: copies, overlap-safe moves, fills, clears, reversal and byte-order swaps. One
// 32-bit move serves unsigned int and float, one 32-bit fill int and unsigned int.
#define ZAL_SWAP_BYTES_PRIMITIVES(X, T, E)    \
  X(movement, SwapBytes##E, Unary<T>, kExact) \
  X(movement, SwapBytes##E##InPlace, UnaryInPlace<T>, kExact)

#define ZAL_MOVEMENT_PRIMITIVES(X)                  \
  X(movement, CopyU8, Copy<unsigned char>, kExact)  \
  X(movement, CopyS16, Copy<short>, kExact)         \
  X(movement, CopyU32, Copy<std::uint32_t>, kExact) \
  X(movement, CopyF32, Copy<float>, kExact)         \
  X(movement, CopyF64, Copy<double>, kExact)        \
  X(movement, MoveU8, Move<unsigned char>, kExact)  \
  X(movement, MoveS16, Move<short>, kExact)         \
  X(movement, MoveU32, Move<std::uint32_t>, kExact) \
  X(movement, MoveF64, Move<double>, kExact)        \
  X(movement, SetU8, Fill<unsigned char>, kExact)   \
  X(movement, SetS16, Fill<short>, kExact)          \
  X(movement, SetS32, Fill<std::int32_t>, kExact)   \
  X(movement, SetF32, Fill<float>, kExact)          \
  X(movement, SetF64, Fill<double>, kExact)         \
  X(movement, ZeroU8, Clear<unsigned char>, kExact) \
  X(movement, ZeroS16, Clear<short>, kExact)        \
  X(movement, ZeroF32, Clear<float>, kExact)        \
  X(movement, ZeroF64, Clear<double>, kExact)       \
  X(movement, FlipF32, Reversal<float>, kExact)     \
  X(movement, FlipF64, Reversal<double>, kExact)    \
  ZAL_SWAP_BYTES_PRIMITIVES(X, std::uint16_t, U16)  \
  ZAL_SWAP_BYTES_PRIMITIVES(X, Int24, U24)          \
  ZAL_SWAP_BYTES_PRIMITIVES(X, std::uint32_t, U32)  \
  ZAL_SWAP_BYTES_PRIMITIVES(X, std::uint64_t, U64)
// Symmetric tapering windows (N - 1 in the denominator) applied to a vector. The double
// Bartlett window is built from the float one by its wrapper.
#define ZAL_WINDOW_BY_TYPE_PRIMITIVES(X, T, E)                 \
  X(window, WindowHann##E, Window<T>, kExact)                  \
  X(window, WindowHamming##E, Window<T>, kExact)               \
  X(window, WindowBlackman##E, WindowWithParameter<T>, kExact) \
  X(window, WindowKaiser##E, WindowWithParameter<T>, kExact)

#define ZAL_WINDOW_PRIMITIVES(X)                      \
  X(window, WindowBartlettF32, Window<float>, kExact) \
  ZAL_WINDOW_BY_TYPE_PRIMITIVES(X, float, F32)        \
  ZAL_WINDOW_BY_TYPE_PRIMITIVES(X, double, F64)

// Fast Fourier transforms of 2^order points, per kind: real (packed N + 2 spectrum), complex
// interleaved, complex split. GetSize gives the prepared block, initialisation scratch and work
// sizes; Init prepares a spec in a block of that size; Fwd/Inv run it (inverse divided by N).
#define ZAL_FFT_KIND_PRIMITIVES(X, K, Transform) \
  X(fft, FFTGetSize##K, FFTGetSize, kService)    \
  X(fft, FFTInit##K, FFTInit, kService)          \
  X(fft, FFTFwd##K, Transform, kService)         \
  X(fft, FFTInv##K, Transform, kService)

#define ZAL_FFT_PRIMITIVES(X)                                     \
  ZAL_FFT_KIND_PRIMITIVES(X, RealF32, FFTTransform<float>)        \
  ZAL_FFT_KIND_PRIMITIVES(X, RealF64, FFTTransform<double>)       \
  ZAL_FFT_KIND_PRIMITIVES(X, ComplexF32, FFTTransform<Complex32>) \
  ZAL_FFT_KIND_PRIMITIVES(X, ComplexF64, FFTTransform<Complex64>) \
  ZAL_FFT_KIND_PRIMITIVES(X, SplitF32, FFTSplitTransform<float>)  \
  ZAL_FFT_KIND_PRIMITIVES(X, SplitF64, FFTSplitTransform<double>)

// Sample format conversion. Integer targets saturate; the 24-bit float conversions come in two
// rules: Even (limited to the range, ties to even) and Limited (inputs limited to +-1.0 when
// scaled, truncation or halves away from zero).
#define ZAL_CONVERSION_PRIMITIVES(X)                                  \
  X(conversion, ConvertU8ToF32, ConversionU8F32, kExact)              \
  X(conversion, ConvertS16ToF32Scaled, ScaledS16F32, kExact)          \
  X(conversion, ConvertS16ToF64Scaled, ScaledS16F64, kExact)          \
  X(conversion, ConvertS32ToF32Scaled, ScaledS32F32, kExact)          \
  X(conversion, ConvertS32ToF64Scaled, ScaledS32F64, kExact)          \
  X(conversion, ConvertS32ToS24Scaled, ScaledS32S24, kExact)          \
  X(conversion, ConvertF32ToU8, RoundedF32U8, kExact)                 \
  X(conversion, ConvertF32ToS16, RoundedF32S16, kExact)               \
  X(conversion, ConvertF32ToS32, RoundedF32S32, kExact)               \
  X(conversion, ConvertF64ToS32, RoundedF64S32, kExact)               \
  X(conversion, ConvertF32ToS24Even, ScaledF32S24, kExact)            \
  X(conversion, ConvertF32ToS24Limited, RoundedF32S24, kExact)        \
  X(conversion, ConvertF32ToF64, ConversionF32F64, kExact)            \
  X(conversion, ConvertF64ToF32, ConversionF64F32, kExact)            \
  X(conversion, ConvertS24ToS32, ConversionS24S32, kExact)            \
  X(conversion, ConvertS24ToF32, ConversionS24F32, kExact)            \
  X(conversion, ConvertF32ToF16, HalfConversion, kExact)              \
  X(conversion, ConvertF16ToF32, ConversionF16F32, kExact)            \
  X(conversion, DeinterleaveConvertS16ToF32, DeinterleaveS16, kExact) \
  X(conversion, DeinterleaveConvertS24ToF32, DeinterleaveS24, kExact) \
  X(conversion, DeinterleaveConvertS32ToF32, DeinterleaveS32, kExact) \
  X(conversion, DeinterleaveConvertF32ToF32, DeinterleaveF32, kExact) \
  X(conversion, InterleaveConvertF32ToS16, InterleaveS16, kExact)     \
  X(conversion, InterleaveConvertF32ToS24, InterleaveS24, kExact)     \
  X(conversion, InterleaveConvertF32ToS32, InterleaveS32, kExact)

// Multirate polyphase FIR filter: size query for either element type, preparation of the phase
// bank, and the filter itself.
#define ZAL_MULTIRATE_PRIMITIVES(X)                            \
  X(multirate, MultirateFirGetSize, MRFGetSize, kService)      \
  X(multirate, MultirateFirInitF32, MRFInit<float>, kService)  \
  X(multirate, MultirateFirInitF64, MRFInit<double>, kService) \
  X(multirate, MultirateFirF32, MRFFilter<float>, kService)    \
  X(multirate, MultirateFirF64, MRFFilter<double>, kService)
// ---- Single-rate FIR filter and lowpass design
// Direct-form FIR: size query, preparation, filtering with optional delay lines. The lowpass
// design is a windowed sinc in double.
#define ZAL_FIR_PRIMITIVES(X)                                     \
  X(fir, FIRGetSizeF32, FIRGetSize, kService)                     \
  X(fir, FIRInitF32, FIRInit, kService)                           \
  X(fir, FIRF32, FIRFilter, kService)                             \
  X(fir, FIRGenLowpassGetBufferSize, LowpassBufferSize, kService) \
  X(fir, FIRGenLowpassF64, LowpassDesign, kService)
// IIR filter: a direct form of one order, or a cascade of second-order sections. GetSize gives the
// block for an order or a section count; Init prepares a spec in it from taps and an optional delay
// line; the filter runs a stream; the delay line reads and writes where the stream stands.
#define ZAL_IIR_BY_TYPE_PRIMITIVES(X, T, E)            \
  X(iir, IIRGetSize##E, IIRGetSize, kService)          \
  X(iir, IIRGetSizeBiQuad##E, IIRGetSize, kService)    \
  X(iir, IIRInit##E, IIRInit<T>, kService)             \
  X(iir, IIRInitBiQuad##E, IIRInit<T>, kService)       \
  X(iir, IIR##E, IIRFilter<T>, kService)               \
  X(iir, IIRGetDlyLine##E, IIRGetDlyLine<T>, kService) \
  X(iir, IIRSetDlyLine##E, IIRSetDlyLine<T>, kService)

#define ZAL_IIR_PRIMITIVES(X)               \
  ZAL_IIR_BY_TYPE_PRIMITIVES(X, float, F32) \
  ZAL_IIR_BY_TYPE_PRIMITIVES(X, double, F64)
// Convolution and resampling: the work-size query, the convolution of two vectors, and the
// stream decimator and zero inserter.
#define ZAL_CONVOLUTION_PRIMITIVES(X)                                \
  X(convolution, ConvolutionGetSize, ConvolutionSizeQuery, kService) \
  X(convolution, ConvolveF32, Convolution<float>, kService)          \
  X(convolution, ConvolveF64, Convolution<double>, kService)         \
  X(convolution, DownSampleF32, Resampling<float>, kService)         \
  X(convolution, DownSampleF64, Resampling<double>, kService)        \
  X(convolution, UpSampleF32, Resampling<float>, kService)           \
  X(convolution, UpSampleF64, Resampling<double>, kService)
// Matrix product
// c = a b, a m x k, b k x n, c m x n stored by columns; a and b by rows when `rows` is nonzero.
#define ZAL_MATRIX_PRIMITIVES(X)                                  \
  X(matrix, MatrixProductF32, MatrixProduct<float>, kService)     \
  X(matrix, MatrixProductF64, MatrixProduct<double>, kService)    \
  X(matrix, MatrixProductC32, MatrixProduct<Complex32>, kService) \
  X(matrix, MatrixProductC64, MatrixProduct<Complex64>, kService)

#define ZAL_PRIMITIVES(X)       \
  ZAL_MEMORY_PRIMITIVES(X)      \
  ZAL_FP_CONTROL_PRIMITIVES(X)  \
  ZAL_VERSION_PRIMITIVES(X)     \
  ZAL_ARITHMETIC_PRIMITIVES(X)  \
  ZAL_MATH_PRIMITIVES(X)        \
  ZAL_STATISTICS_PRIMITIVES(X)  \
  ZAL_THRESHOLD_PRIMITIVES(X)   \
  ZAL_COMPLEX_PRIMITIVES(X)     \
  ZAL_MOVEMENT_PRIMITIVES(X)    \
  ZAL_CONVERSION_PRIMITIVES(X)  \
  ZAL_WINDOW_PRIMITIVES(X)      \
  ZAL_FFT_PRIMITIVES(X)         \
  ZAL_MULTIRATE_PRIMITIVES(X)   \
  ZAL_FIR_PRIMITIVES(X)         \
  ZAL_IIR_PRIMITIVES(X)         \
  ZAL_CONVOLUTION_PRIMITIVES(X) \
  ZAL_MATRIX_PRIMITIVES(X)
