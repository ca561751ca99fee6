// Function types shared by primitives. A kernel is declared through its shape at every level, so
// one whose signature drifts fails to compile.
#pragma once

#include "zalaccelerate/core.h"

namespace zal::engine {

// Accuracy class of a primitive, which the cross-level tests compare by.
enum class Accuracy {
  kService,  // no elementwise result: tested by its own contract
  kExact,    // the same bits as the portable variant at every level (NaN payloads aside)
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

// Fast Fourier transforms. A prepared transform (FFTSpec, opaque here) lives inside a spec block
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

using Allocate = void*(int count);
using Release = void(void* block);
using SetFlushToZero = EngStatus(int flag, unsigned int* saved_underflow_mask);
using SetFlag = EngStatus(int flag);
using VersionQuery = const EngLibraryVersion*();

}  // namespace zal::engine
