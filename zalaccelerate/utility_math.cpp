#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

}  // namespace

#define ZAL_MATH_WRAPPERS(T, E)                                          \
  void Abs(unsigned int len, const T* src, T* dst) {                     \
    dispatch::Abs##E(src, dst, Length(len));                             \
  }                                                                      \
  void Abs_InPlace(unsigned int len, T* srcDst) {                        \
    dispatch::Abs##E##InPlace(srcDst, Length(len));                      \
  }                                                                      \
  void Sqr(unsigned int len, const T* src, T* dst) {                     \
    dispatch::Sqr##E(src, dst, Length(len));                             \
  }                                                                      \
  void Sqr_InPlace(unsigned int len, T* srcDst) {                        \
    dispatch::Sqr##E##InPlace(srcDst, Length(len));                      \
  }                                                                      \
  void Sqrt(unsigned int len, const T* src, T* dst) {                    \
    dispatch::Sqrt##E(src, dst, Length(len));                            \
  }                                                                      \
  void Sqrt_InPlace(unsigned int len, T* srcDst) {                       \
    dispatch::Sqrt##E##InPlace(srcDst, Length(len));                     \
  }                                                                      \
  void Exp(unsigned int len, const T* src, T* dst) {                     \
    dispatch::Exp##E(src, dst, Length(len));                             \
  }                                                                      \
  void Exp_InPlace(unsigned int len, T* srcDst) {                        \
    dispatch::Exp##E(srcDst, srcDst, Length(len));                       \
  }                                                                      \
  void Ln(unsigned int len, const T* src, T* dst) {                      \
    dispatch::Ln##E(src, dst, Length(len));                              \
  }                                                                      \
  void Pow(unsigned int len, const T* base, const T* exponent, T* dst) { \
    dispatch::Pow##E(base, exponent, dst, Length(len));                  \
  }                                                                      \
  void Inverse(unsigned int len, const T* src, T* dst) {                 \
    dispatch::Inverse##E(src, dst, Length(len));                         \
  }                                                                      \
  void Round(unsigned int len, const T* src, T* dst) {                   \
    dispatch::Round##E(src, dst, Length(len));                           \
  }

ZAL_MATH_WRAPPERS(float, F32)
ZAL_MATH_WRAPPERS(double, F64)
#undef ZAL_MATH_WRAPPERS

void Ln_InPlace(unsigned int len, float* srcDst) {
  dispatch::LnF32(srcDst, srcDst, Length(len));
}
void Ln_Prec11(unsigned int len, const float* src, float* dst) {
  dispatch::LnF32Prec11(src, dst, Length(len));
}
void Ln_Prec21(unsigned int len, const float* src, float* dst) {
  dispatch::LnF32Prec21(src, dst, Length(len));
}
void Ln_Prec24(unsigned int len, const float* src, float* dst) {
  dispatch::LnF32Prec24(src, dst, Length(len));
}
void Pow_Prec26(unsigned int len, const double* base, const double* exponent, double* dst) {
  dispatch::PowF64Prec26(base, exponent, dst, Length(len));
}
void Inverse_Prec26(unsigned int len, const double* src, double* dst) {
  dispatch::InverseF64Prec26(src, dst, Length(len));
}

}  // namespace zalaccelerate::utility
