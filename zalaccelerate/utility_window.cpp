// The window fronts: argument moves and one engine call each; the status is dropped.
#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

}  // namespace

void WindowBartlett(unsigned int len, const float* src, float* dst) {
  dispatch::WindowBartlettF32(src, dst, Length(len));
}
void WindowBlackman(unsigned int len, const float* src, float* dst, float alpha) {
  dispatch::WindowBlackmanF32(src, dst, Length(len), alpha);
}
void WindowBlackman(unsigned int len, const double* src, double* dst, double alpha) {
  dispatch::WindowBlackmanF64(src, dst, Length(len), alpha);
}
void WindowHamming(unsigned int len, const float* src, float* dst) {
  dispatch::WindowHammingF32(src, dst, Length(len));
}
void WindowHamming(unsigned int len, const double* src, double* dst) {
  dispatch::WindowHammingF64(src, dst, Length(len));
}
void WindowHann(unsigned int len, const float* src, float* dst) {
  dispatch::WindowHannF32(src, dst, Length(len));
}
void WindowHann(unsigned int len, const double* src, double* dst) {
  dispatch::WindowHannF64(src, dst, Length(len));
}
void WindowKaiser(unsigned int len, const float* src, float* dst, float alpha) {
  dispatch::WindowKaiserF32(src, dst, Length(len), alpha);
}
void WindowKaiser(unsigned int len, const double* src, double* dst, double alpha) {
  dispatch::WindowKaiserF64(src, dst, Length(len), alpha);
}

}  // namespace zalaccelerate::utility
