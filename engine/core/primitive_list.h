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
#define ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, T, E)                         \
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
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, float, F32)                                  \
  X(arithmetic, AddConstantProductF32, WithConstant<float>, kExact)              \
  X(arithmetic, DivConstantRevF32, WithConstant<float>, kExact)                  \
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, double, F64)                                 \
  X(arithmetic, AddF64InPlace, BinaryInPlace<double>, kExact)                    \
  ZAL_ARITHMETIC_BY_VALUE_PRIMITIVES(X, Complex32, C32)                              \
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

// Fast Fourier transforms of 2^order points, per kind: real (packed N + 2 spectrum), complex
// interleaved, complex split. GetSize gives the spec block, initialisation scratch and work
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

#define ZAL_PRIMITIVES(X)      \
  ZAL_MEMORY_PRIMITIVES(X)     \
  ZAL_FP_CONTROL_PRIMITIVES(X) \
  ZAL_VERSION_PRIMITIVES(X)    \
  ZAL_ARITHMETIC_PRIMITIVES(X) \
  ZAL_FFT_PRIMITIVES(X)
