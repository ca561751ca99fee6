// Typed operand arrays for the stateful and two-operand targets (filters, convolution, matrix
// product): values drawn as a repeated pattern, either moderate (where accuracy bounds are checked)
// or anything the value draws give, in a canaried Buffer whose contents at creation are kept.
#pragma once

#include <complex>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "tests/fuzz/fuzz_support.h"

namespace zal::fuzz {

template <class T>
struct Real {
  using type = T;
};
template <class T>
struct Real<std::complex<T>> {
  using type = T;
};
template <class T>
using RealOf = typename Real<T>::type;

template <class T>
constexpr Lane LaneOf() {
  return sizeof(RealOf<T>) == 4 ? Lane::kFloat : Lane::kDouble;
}

// A count as a caller may pass it: 0, 1 .. small (most often), small .. large, or 2^31 and more.
inline std::uint32_t DrawCount(FuzzedDataProvider& input, std::uint32_t small,
                               std::uint32_t large) {
  switch (input.ConsumeIntegralInRange<int>(0, 9)) {
    case 0:
      return 0;
    case 1: {
      const auto k = input.ConsumeIntegral<std::uint16_t>();
      return input.ConsumeBool() ? 0x80000000u + k : 0xFFFFFFFFu - k;
    }
    case 2:
      return input.ConsumeIntegralInRange<std::uint32_t>(small, large);
    default:
      return input.ConsumeIntegralInRange<std::uint32_t>(1, small);
  }
}

inline bool IsHuge(std::uint32_t count) {
  return count >= 0x80000000u;
}

// Elements a buffer holds for `count`: a few where the count is huge (the call must not touch
// them beyond what the header allows).
inline std::size_t HeldFor(std::uint64_t count) {
  return count >= 0x80000000u ? 16 : count;
}

// n values, a pattern of 1 .. 64 repeated: multiples of 2^-15 in (-1, 1) when `moderate`,
// otherwise anything DrawFloat/DrawDouble give (NaNs, infinities, subnormals, extremes).
template <class T>
std::vector<T> DrawValues(FuzzedDataProvider& input, std::size_t n, bool moderate) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = sizeof(T) / sizeof(R);
  std::vector<R> pattern(input.ConsumeIntegralInRange<std::size_t>(1, 64));
  for (R& value : pattern) {
    if (moderate) {
      value = static_cast<R>(input.ConsumeIntegral<std::int16_t>()) / 32768;
    } else if constexpr (std::is_same_v<R, float>) {
      value = DrawFloat(input);
    } else {
      value = DrawDouble(input);
    }
  }
  std::vector<T> values(n);
  auto* parts = reinterpret_cast<R*>(values.data());
  for (std::size_t i = 0; i < n * kParts; ++i) parts[i] = pattern[i % pattern.size()];
  return values;
}

// A caller's array of T at an element-aligned offset, canaried, remembering what it held.
template <class T>
class Array {
 public:
  Array(const std::vector<T>& values, int offset_bytes)
      : buffer_(LaneOf<T>(), values.size() * (sizeof(T) / sizeof(RealOf<T>)), offset_bytes) {
    if (!values.empty()) std::memcpy(buffer_.data(), values.data(), values.size() * sizeof(T));
    before_ = buffer_.Contents();
  }

  T* data() const { return buffer_.As<T>(); }
  std::size_t size() const { return buffer_.bytes() / sizeof(T); }
  bool Intact() const { return buffer_.CanariesIntact(); }
  bool Unchanged() const { return buffer_.Contents() == before_; }
  std::vector<T> Values() const { return {data(), data() + size()}; }
  std::vector<unsigned char> Bytes() const { return buffer_.Contents(); }

 private:
  Buffer buffer_;
  std::vector<unsigned char> before_;
};

}  // namespace zal::fuzz
