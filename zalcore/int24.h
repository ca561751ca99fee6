// The packed 24-bit audio sample: three bytes, two's complement, little-endian (byte 0 holds bits
// 0-7, byte 2 bits 16-23 with the sign), no padding, so arrays sit at a 3-byte stride exactly as
// a 24-bit stream lays them out. Range -8388608 .. 8388607.
#pragma once

#include <compare>
#include <cstdint>

namespace zalcore::utility {

class int24_t {
 public:
  static constexpr int kMin = -8388608;
  static constexpr int kMax = 8388607;

  constexpr int24_t() = default;

  // Keeps the low 24 bits of value: values outside the range wrap, as a narrowing integer
  // conversion does. Saturating conversions are the library's Convert functions.
  constexpr int24_t(int value)  // NOLINT(google-explicit-constructor): behaves as an integer type
      : bytes_{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
               static_cast<std::uint8_t>(value >> 16)} {}

  // Sign-extends bit 23.
  constexpr operator int() const {  // NOLINT(google-explicit-constructor)
    const std::uint32_t low =
        bytes_[0] | (std::uint32_t{bytes_[1]} << 8) | (std::uint32_t{bytes_[2]} << 16);
    return static_cast<int>(low ^ 0x800000u) - 0x800000;
  }

  friend constexpr bool operator==(int24_t a, int24_t b) { return int{a} == int{b}; }
  friend constexpr auto operator<=>(int24_t a, int24_t b) { return int{a} <=> int{b}; }

 private:
  std::uint8_t bytes_[3] = {0, 0, 0};
};

static_assert(sizeof(int24_t) == 3, "int24_t must be exactly three bytes");
static_assert(alignof(int24_t) == 1, "int24_t arrays must pack at a 3-byte stride");
static_assert(sizeof(int24_t[4]) == 12, "int24_t arrays must pack at a 3-byte stride");

}  // namespace zalcore::utility
