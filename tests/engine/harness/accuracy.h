// Whether a kernel's results pass against the portable variant's, by the row's accuracy class.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>

#include "engine/core/shapes.h"
#include "tests/engine/harness/elements.h"

namespace zal::test::harness {

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
    case engine::Accuracy::kService:
      break;
  }
  return 0;  // service rows have no elementwise result and are never compared
}

}  // namespace zal::test::harness
