// What the harness needs to know of each element type: its name, how two results compare bit for
// bit (NaNs included: every level computes the same NaN) and how an element is shown in a
// failure message.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "engine/core/shapes.h"

namespace zal::test::harness {

using engine::Complex32;
using engine::Complex64;
using engine::Int24;

// Elements with floating-point parts, which denormal modes may affect.
template <class T>
constexpr bool kFloating =
    std::is_floating_point_v<T> || std::is_same_v<T, Complex32> || std::is_same_v<T, Complex64>;

template <class F>
bool SameBits(F a, F b) {
  if constexpr (sizeof(F) == 4) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  } else {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
  }
}
template <class I>
requires std::is_integral_v<I>
bool SameBits(I a, I b) {
  return a == b;
}
inline bool SameBits(Int24 a, Int24 b) {
  return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
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
std::string Show(unsigned char x);
std::string Show(std::uint16_t x);
std::string Show(std::int32_t x);
std::string Show(std::uint32_t x);
std::string Show(std::uint64_t x);
std::string Show(Int24 x);
std::string Show(Complex32 x);
std::string Show(Complex64 x);

}  // namespace zal::test::harness
