// The window fronts: argument moves and one engine call each; the status is dropped. The double
// Bartlett window goes through a float temporary and the float primitive.
#include <zalcore/stl_allocator.h>

#include <vector>

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
// Each step runs whatever the previous one did: a refused Bartlett (len 1 or 2) leaves the
// temporary holding src rounded to float, which then reaches dst. Lengths of 2^31 and more are
// refused by every step, so they skip the temporary, which would change nothing.
void WindowBartlett(unsigned int len, const double* src, double* dst) {
  if (Length(len) < 0) return;
  std::vector<float, zalcore::STLAllocator<float>> single(len);
  Convert(len, src, single.data());
  dispatch::WindowBartlettF32(single.data(), single.data(), Length(len));
  Convert(len, single.data(), dst);
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
