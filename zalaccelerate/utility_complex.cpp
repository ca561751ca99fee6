// The complex-domain fronts: argument moves and one engine call each; the status is dropped.
#include <complex>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Engine;
using engine_arguments::Length;

}  // namespace

void Magnitude(unsigned int len, const float* re, const float* im, float* dst) {
  dispatch::MagnitudeSplitF32(re, im, dst, Length(len));
}
void Magnitude(unsigned int len, const double* re, const double* im, double* dst) {
  dispatch::MagnitudeSplitF64(re, im, dst, Length(len));
}
void Magnitude(unsigned int len, const std::complex<float>* src, float* dst) {
  dispatch::MagnitudeC32(Engine(src), dst, Length(len));
}
void Magnitude(unsigned int len, const std::complex<double>* src, double* dst) {
  dispatch::MagnitudeC64(Engine(src), dst, Length(len));
}
void PowerSpectr(unsigned int len, const std::complex<float>* src, float* dst) {
  dispatch::PowerSpectrC32(Engine(src), dst, Length(len));
}
void PowerSpectr(unsigned int len, const std::complex<double>* src, double* dst) {
  dispatch::PowerSpectrC64(Engine(src), dst, Length(len));
}
void CartToPolar(unsigned int len, const float* src, float* mag, float* phase) {
  dispatch::CartToPolarF32(src, mag, phase, Length(len));
}
void PolarToCart(unsigned int len, const float* mag, const float* phase, float* dst) {
  dispatch::PolarToCartF32(mag, phase, dst, Length(len));
}

}  // namespace zalaccelerate::utility
