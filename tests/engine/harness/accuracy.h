// Whether a kernel's results pass against the portable variant's, by the row's accuracy class.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

#include "engine/core/shapes.h"
#include "tests/engine/harness/elements.h"

namespace zal::test::harness {

// Math functions: the portable variant and the kernel are each within the class's bound of the
// exact result, so they may be twice that apart. In ulps of the result type: 2 for kUlp1, and
// 2 * 2^(p - N) for N correct bits out of p (1 + 2^-(N-1) relative error spans that many ulps).
template <class T>
std::uint64_t AllowedUlps(engine::Accuracy accuracy) {
  constexpr int kDigits = std::numeric_limits<T>::digits;
  const auto for_bits = [](int bits) { return std::uint64_t{2} << (kDigits - bits); };
  switch (accuracy) {
    case engine::Accuracy::kCorrectBits11:
      return for_bits(11);
    case engine::Accuracy::kCorrectBits21:
      return for_bits(21);
    case engine::Accuracy::kCorrectBits24:
      return for_bits(24);
    case engine::Accuracy::kCorrectBits26:
      return for_bits(26);
    default:
      return 2;
  }
}

// Distance in representable values (+0 and -0 one apart), a NaN matching only the same NaN. Results
// below the normal range count as equal: flush-to-zero modes and the C library's subnormal paths
// may round them differently.
template <class T>
bool WithinUlps(T expected, T got, std::uint64_t allowed) {
  if (std::isnan(expected) || std::isnan(got)) return SameBits(expected, got);
  if (std::fabs(expected) < std::numeric_limits<T>::min() &&
      std::fabs(got) < std::numeric_limits<T>::min()) {
    return true;
  }
  using Bits = std::conditional_t<sizeof(T) == 4, std::int32_t, std::int64_t>;
  const auto ordered = [](T x) {
    const Bits bits = std::bit_cast<Bits>(x);
    return bits < 0 ? static_cast<std::int64_t>(std::numeric_limits<Bits>::min() - bits) - 1
                    : static_cast<std::int64_t>(bits);
  };
  const std::int64_t a = ordered(expected);
  const std::int64_t b = ordered(got);
  const std::uint64_t distance =
      a > b ? static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b)
            : static_cast<std::uint64_t>(b) - static_cast<std::uint64_t>(a);
  return distance <= allowed;
}

// Index of the first element where `got` departs from `expected` further than the class allows,
// or -1. A new accuracy class (a bound in ulps, one scaled by the sum of magnitudes ...) gets
// its case here; the switch has no default, so the compiler names every class left out.
template <class T>
std::ptrdiff_t FirstDeparture(engine::Accuracy accuracy, std::span<const T> expected,
                              std::span<const T> got) {
  // Identical bits pass every class; the element loop runs only where something differs.
  if (expected.empty() || std::memcmp(expected.data(), got.data(), expected.size_bytes()) == 0) {
    return -1;
  }
  switch (accuracy) {
    case engine::Accuracy::kExact:
      for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!SameBits(expected[i], got[i])) return static_cast<std::ptrdiff_t>(i);
      }
      return -1;
    case engine::Accuracy::kUlp1:
    case engine::Accuracy::kCorrectBits11:
    case engine::Accuracy::kCorrectBits21:
    case engine::Accuracy::kCorrectBits24:
    case engine::Accuracy::kCorrectBits26:
      if constexpr (std::is_floating_point_v<T>) {
        const std::uint64_t allowed = AllowedUlps<T>(accuracy);
        for (std::size_t i = 0; i < expected.size(); ++i) {
          if (!WithinUlps(expected[i], got[i], allowed)) return static_cast<std::ptrdiff_t>(i);
        }
        return -1;
      }
      return 0;
    case engine::Accuracy::kService:
      break;
  }
  return 0;  // service rows have no elementwise result and are never compared
}

}  // namespace zal::test::harness
