// What the harness needs to know of each element type: its name, how two results compare bit for
// bit (NaNs included: every level computes the same NaN) and how an element is shown in a
// failure message.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include "engine/core/shapes.h"

namespace zal::test::harness {

using engine::Complex32;
using engine::Complex64;

template <class F>
bool SameBits(F a, F b) {
  if constexpr (sizeof(F) == 4) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  } else {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
  }
}
inline bool SameBits(short a, short b) {
  return a == b;
}
inline bool SameBits(Complex32 a, Complex32 b) {
  return SameBits(a.re, b.re) && SameBits(a.im, b.im);
}
inline bool SameBits(Complex64 a, Complex64 b) {
  return SameBits(a.re, b.re) && SameBits(a.im, b.im);
}

std::string Show(float x);
std::string Show(double x);
std::string Show(short x);
std::string Show(Complex32 x);
std::string Show(Complex64 x);

}  // namespace zal::test::harness
