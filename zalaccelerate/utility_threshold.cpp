// The threshold, normalisation and ramp fronts: argument moves and one engine call each; the
// status is dropped.
#include <complex>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

}  // namespace

#define ZAL_THRESHOLD_WRAPPERS(T, E)                                               \
  void Threshold_GT_InPlace(unsigned int len, T* p, T level) {                     \
    dispatch::ThresholdGT##E##InPlace(p, Length(len), level);                      \
  }                                                                                \
  void Threshold_LT_InPlace(unsigned int len, T* p, T level) {                     \
    dispatch::ThresholdLT##E##InPlace(p, Length(len), level);                      \
  }                                                                                \
  void Threshold_GTVal(unsigned int len, const T* src, T* dst, T level, T value) { \
    dispatch::ThresholdGTVal##E(src, dst, Length(len), level, value);              \
  }                                                                                \
  void Threshold_GTVal_InPlace(unsigned int len, T* p, T level, T value) {         \
    dispatch::ThresholdGTVal##E##InPlace(p, Length(len), level, value);            \
  }                                                                                \
  void Threshold_LTVal(unsigned int len, const T* src, T* dst, T level, T value) { \
    dispatch::ThresholdLTVal##E(src, dst, Length(len), level, value);              \
  }                                                                                \
  void Threshold_LTVal_InPlace(unsigned int len, T* p, T level, T value) {         \
    dispatch::ThresholdLTVal##E##InPlace(p, Length(len), level, value);            \
  }                                                                                \
  void Invert_Threshold_InPlace(unsigned int len, T* p, T level) {                 \
    dispatch::InvertThreshold##E##InPlace(p, Length(len), level);                  \
  }                                                                                \
  void Normalize(unsigned int len, const T* src, T* dst, T sub, T div) {           \
    dispatch::Normalize##E(src, dst, Length(len), sub, div);                       \
  }                                                                                \
  void VectorSlope(unsigned int len, T* p, T offset, T slope) {                    \
    dispatch::VectorSlope##E(p, Length(len), offset, slope);                       \
  }

ZAL_THRESHOLD_WRAPPERS(float, F32)
ZAL_THRESHOLD_WRAPPERS(double, F64)
#undef ZAL_THRESHOLD_WRAPPERS

void Invert_Threshold_InPlace(unsigned int len, std::complex<float>* p, float level) {
  dispatch::InvertThresholdC32InPlace(reinterpret_cast<zal::engine::Complex32*>(p), Length(len),
                                      level);
}
void Invert_Threshold_InPlace(unsigned int len, std::complex<double>* p, double level) {
  dispatch::InvertThresholdC64InPlace(reinterpret_cast<zal::engine::Complex64*>(p), Length(len),
                                      level);
}

// The two-sided threshold with each level as its own replacement value, in place.
void Trim(unsigned int len, float* p, float low, float high) {
  dispatch::ThresholdLTValGTValF32(p, p, Length(len), low, low, high, high);
}

void MinEvery(unsigned int len, const float* a, const float* b, float* dst) {
  dispatch::MinEveryF32(a, b, dst, Length(len));
}
void MinEvery_InPlace(unsigned int len, const float* src, float* srcDst) {
  dispatch::MinEveryF32InPlace(src, srcDst, Length(len));
}
void MaxEvery(unsigned int len, const float* a, const float* b, float* dst) {
  dispatch::MaxEveryF32(a, b, dst, Length(len));
}
void MaxEvery_InPlace(unsigned int len, const float* src, float* srcDst) {
  dispatch::MaxEveryF32InPlace(src, srcDst, Length(len));
}

}  // namespace zalaccelerate::utility
