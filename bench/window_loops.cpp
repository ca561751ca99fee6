// The windows as a user writes them without the library: one loop, each weight from the C
// library's cos (or the standard library's Bessel function) at every element, built with the
// project's default flags.
#include <cmath>
#include <numbers>

#include "bench/window_contenders.h"

namespace zal::bench::window {
namespace {

template <class T>
void Bartlett(const T* src, T* dst, int n, T) {
  const T half = static_cast<T>(n - 1) / 2;
  for (int i = 0; i < n; ++i) dst[i] = src[i] * (1 - std::fabs((i - half) / half));
}

template <class T>
void Hann(const T* src, T* dst, int n, T) {
  const T step = 2 * std::numbers::pi_v<T> / static_cast<T>(n - 1);
  for (int i = 0; i < n; ++i) dst[i] = src[i] * (T(0.5) - T(0.5) * std::cos(step * i));
}

template <class T>
void Hamming(const T* src, T* dst, int n, T) {
  const T step = 2 * std::numbers::pi_v<T> / static_cast<T>(n - 1);
  for (int i = 0; i < n; ++i) dst[i] = src[i] * (T(0.54) - T(0.46) * std::cos(step * i));
}

template <class T>
void Blackman(const T* src, T* dst, int n, T alpha) {
  const T step = 2 * std::numbers::pi_v<T> / static_cast<T>(n - 1);
  for (int i = 0; i < n; ++i) {
    dst[i] = src[i] *
             ((alpha + 1) / 2 - T(0.5) * std::cos(step * i) - alpha / 2 * std::cos(2 * step * i));
  }
}

template <class T>
void Kaiser(const T* src, T* dst, int n, T alpha) {
  const T centre = static_cast<T>(n - 1) / 2;
  const T normaliser = std::cyl_bessel_i(T(0), alpha * centre);
  for (int i = 0; i < n; ++i) {
    const T offset = i - centre;
    dst[i] = src[i] *
             std::cyl_bessel_i(T(0), alpha * std::sqrt(centre * centre - offset * offset)) /
             normaliser;
  }
}

template <class T>
Runners<T> Loops() {
  return {{Bartlett<T>, Hann<T>, Hamming<T>, Blackman<T>, Kaiser<T>, nullptr}};
}

}  // namespace

const Contender* PlainLoops() {
  static const Contender contender = {
      "loop", "one loop, weights from the C library's cos / std::cyl_bessel_i, default flags",
      Loops<float>(), Loops<double>()};
  return &contender;
}

}  // namespace zal::bench::window
