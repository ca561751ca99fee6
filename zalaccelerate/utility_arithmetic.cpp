#include <complex>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Engine;
using engine_arguments::Length;
using zal::engine::Complex32;
using zal::engine::Complex64;

inline float Constant(float c) {
  return c;
}
inline double Constant(double c) {
  return c;
}
inline Complex32 Constant(std::complex<float> c) {
  return {c.real(), c.imag()};
}

}  // namespace

#define ZAL_TWO_VECTOR_WRAPPERS(T, E)                                        \
  void Add(unsigned int len, const T* a, const T* b, T* dst) {               \
    dispatch::Add##E(Engine(a), Engine(b), Engine(dst), Length(len));        \
  }                                                                          \
  void AddProduct(unsigned int len, const T* a, const T* b, T* dst) {        \
    dispatch::AddProduct##E(Engine(a), Engine(b), Engine(dst), Length(len)); \
  }                                                                          \
  void Sub(unsigned int len, const T* a, const T* b, T* dst) {               \
    dispatch::Sub##E(Engine(a), Engine(b), Engine(dst), Length(len));        \
  }                                                                          \
  void Sub_InPlace(unsigned int len, const T* src, T* srcDst) {              \
    dispatch::Sub##E##InPlace(Engine(src), Engine(srcDst), Length(len));     \
  }                                                                          \
  void Mul(unsigned int len, const T* a, const T* b, T* dst) {               \
    dispatch::Mul##E(Engine(a), Engine(b), Engine(dst), Length(len));        \
  }                                                                          \
  void Mul_InPlace(unsigned int len, const T* src, T* srcDst) {              \
    dispatch::Mul##E##InPlace(Engine(src), Engine(srcDst), Length(len));     \
  }                                                                          \
  void Div(unsigned int len, const T* a, const T* b, T* dst) {               \
    dispatch::Div##E(Engine(a), Engine(b), Engine(dst), Length(len));        \
  }                                                                          \
  void Div_InPlace(unsigned int len, const T* src, T* srcDst) {              \
    dispatch::Div##E##InPlace(Engine(src), Engine(srcDst), Length(len));     \
  }

#define ZAL_CONSTANT_WRAPPERS(T, E)                                                  \
  void AddConstant(unsigned int len, const T* src, T c, T* dst) {                    \
    dispatch::AddConstant##E(Engine(src), Constant(c), Engine(dst), Length(len));    \
  }                                                                                  \
  void AddConstant_InPlace(unsigned int len, T* srcDst, T c) {                       \
    dispatch::AddConstant##E##InPlace(Constant(c), Engine(srcDst), Length(len));     \
  }                                                                                  \
  void SubConstant(unsigned int len, const T* src, T c, T* dst) {                    \
    dispatch::SubConstant##E(Engine(src), Constant(c), Engine(dst), Length(len));    \
  }                                                                                  \
  void SubConstant_InPlace(unsigned int len, T* srcDst, T c) {                       \
    dispatch::SubConstant##E##InPlace(Constant(c), Engine(srcDst), Length(len));     \
  }                                                                                  \
  void SubConstantRev(unsigned int len, const T* src, T c, T* dst) {                 \
    dispatch::SubConstantRev##E(Engine(src), Constant(c), Engine(dst), Length(len)); \
  }                                                                                  \
  void SubConstantRev_InPlace(unsigned int len, T* srcDst, T c) {                    \
    dispatch::SubConstantRev##E##InPlace(Constant(c), Engine(srcDst), Length(len));  \
  }                                                                                  \
  void MulConstant(unsigned int len, const T* src, T* dst, T c) {                    \
    dispatch::MulConstant##E(Engine(src), Constant(c), Engine(dst), Length(len));    \
  }                                                                                  \
  void MulConstant_InPlace(unsigned int len, T* srcDst, T c) {                       \
    dispatch::MulConstant##E##InPlace(Constant(c), Engine(srcDst), Length(len));     \
  }                                                                                  \
  void DivConstant(unsigned int len, const T* src, T* dst, T c) {                    \
    dispatch::DivConstant##E(Engine(src), Constant(c), Engine(dst), Length(len));    \
  }                                                                                  \
  void DivConstant_InPlace(unsigned int len, T* srcDst, T c) {                       \
    dispatch::DivConstant##E##InPlace(Constant(c), Engine(srcDst), Length(len));     \
  }

ZAL_TWO_VECTOR_WRAPPERS(float, F32)
ZAL_TWO_VECTOR_WRAPPERS(double, F64)
ZAL_TWO_VECTOR_WRAPPERS(std::complex<float>, C32)
ZAL_TWO_VECTOR_WRAPPERS(std::complex<double>, C64)
ZAL_CONSTANT_WRAPPERS(float, F32)
ZAL_CONSTANT_WRAPPERS(double, F64)
ZAL_CONSTANT_WRAPPERS(std::complex<float>, C32)

// The float form reuses the out-of-place primitive with the destination as second operand.
void Add_InPlace(unsigned int len, const float* src, float* srcDst) {
  dispatch::AddF32(src, srcDst, srcDst, Length(len));
}
void Add_InPlace(unsigned int len, const double* src, double* srcDst) {
  dispatch::AddF64InPlace(src, srcDst, Length(len));
}
void Add_InPlace(unsigned int len, const std::complex<float>* src, std::complex<float>* srcDst) {
  dispatch::AddC32InPlace(Engine(src), Engine(srcDst), Length(len));
}
void Add_InPlace(unsigned int len, const std::complex<double>* src, std::complex<double>* srcDst) {
  dispatch::AddC64InPlace(Engine(src), Engine(srcDst), Length(len));
}

// A complex<double> constant does not fit a register: the engine reads it from a temporary.
#define ZAL_COMPLEX64_CONSTANT_WRAPPER(Name, Primitive, Params, Source, Destination) \
  void Name Params {                                                                 \
    const Complex64 constant{c.real(), c.imag()};                                    \
    dispatch::Primitive(Source, &constant, Destination, Length(len));                \
  }
#define ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(Name, Primitive)                      \
  void Name(unsigned int len, std::complex<double>* srcDst, std::complex<double> c) { \
    const Complex64 constant{c.real(), c.imag()};                                     \
    dispatch::Primitive(&constant, Engine(srcDst), Length(len));                      \
  }

using C64 = std::complex<double>;
ZAL_COMPLEX64_CONSTANT_WRAPPER(AddConstant, AddConstantC64,
                               (unsigned int len, const C64* src, C64 c, C64* dst), Engine(src),
                               Engine(dst))
ZAL_COMPLEX64_CONSTANT_WRAPPER(SubConstant, SubConstantC64,
                               (unsigned int len, const C64* src, C64 c, C64* dst), Engine(src),
                               Engine(dst))
ZAL_COMPLEX64_CONSTANT_WRAPPER(SubConstantRev, SubConstantRevC64,
                               (unsigned int len, const C64* src, C64 c, C64* dst), Engine(src),
                               Engine(dst))
ZAL_COMPLEX64_CONSTANT_WRAPPER(MulConstant, MulConstantC64,
                               (unsigned int len, const C64* src, C64* dst, C64 c), Engine(src),
                               Engine(dst))
ZAL_COMPLEX64_CONSTANT_WRAPPER(DivConstant, DivConstantC64,
                               (unsigned int len, const C64* src, C64* dst, C64 c), Engine(src),
                               Engine(dst))
ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(AddConstant_InPlace, AddConstantC64InPlace)
ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(SubConstant_InPlace, SubConstantC64InPlace)
ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(SubConstantRev_InPlace, SubConstantRevC64InPlace)
ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(MulConstant_InPlace, MulConstantC64InPlace)
ZAL_COMPLEX64_CONSTANT_IN_PLACE_WRAPPER(DivConstant_InPlace, DivConstantC64InPlace)

void AddConstantProduct(unsigned int len, const float* src, float* srcDst, float c) {
  dispatch::AddConstantProductF32(src, c, srcDst, Length(len));
}

// Deliberately empty: the double overload has never accumulated, and callers rely on that.
void AddConstantProduct(unsigned int, const double*, double*, double) {}

void DivConstantRev(unsigned int len, float c, const float* src, float* dst) {
  dispatch::DivConstantRevF32(src, c, dst, Length(len));
}

void MulConstant_InPlace(unsigned int len, short* srcDst, short c, int scale) {
  dispatch::MulConstantScaledS16(srcDst, c, srcDst, Length(len), scale);
}

}  // namespace zalaccelerate::utility
