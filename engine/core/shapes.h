// Function types shared by primitives. A kernel is declared through its shape at every level, so
// one whose signature drifts fails to compile.
#pragma once

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

using Allocate = void*(int count);
using Release = void(void* block);
using SetFlushToZero = EngStatus(int flag, unsigned int* saved_underflow_mask);
using SetFlag = EngStatus(int flag);
using VersionQuery = const EngLibraryVersion*();

}  // namespace zal::engine
