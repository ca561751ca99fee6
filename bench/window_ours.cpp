// The library's windows and its Mul, at the level the engine selects.
#include "bench/window_contenders.h"
#include "engine/core/dispatch.h"

namespace zal::bench::window {
namespace {

namespace dispatch = engine::dispatch;

Runners<float> ForFloat() {
  return {
      {[](const float* s, float* d, int n, float) { dispatch::WindowBartlettF32(s, d, n); },
       [](const float* s, float* d, int n, float) { dispatch::WindowHannF32(s, d, n); },
       [](const float* s, float* d, int n, float) { dispatch::WindowHammingF32(s, d, n); },
       [](const float* s, float* d, int n, float a) { dispatch::WindowBlackmanF32(s, d, n, a); },
       [](const float* s, float* d, int n, float a) { dispatch::WindowKaiserF32(s, d, n, a); },
       [](const float* s, float* d, int n, float) { dispatch::MulF32(s, d, d, n); }}};
}

Runners<double> ForDouble() {
  return {
      {nullptr, [](const double* s, double* d, int n, double) { dispatch::WindowHannF64(s, d, n); },
       [](const double* s, double* d, int n, double) { dispatch::WindowHammingF64(s, d, n); },
       [](const double* s, double* d, int n, double a) { dispatch::WindowBlackmanF64(s, d, n, a); },
       [](const double* s, double* d, int n, double a) { dispatch::WindowKaiserF64(s, d, n, a); },
       [](const double* s, double* d, int n, double) { dispatch::MulF64(s, d, d, n); }}};
}

}  // namespace

const Contender* Ours() {
  static const Contender contender = {"ours", "zalaccelerate at the level the engine selects",
                                      ForFloat(), ForDouble()};
  return &contender;
}

}  // namespace zal::bench::window
