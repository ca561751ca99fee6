#include "tests/engine/harness/values.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace zal::test::harness {
namespace {

using engine::Complex32;
using engine::Complex64;

template <class T, class Draw>
void FillRepeating(std::span<T> values, Draw draw) {
  const std::size_t drawn = std::min(values.size(), std::size_t{kRepeatPeriod});
  for (std::size_t i = 0; i < drawn; ++i) values[i] = draw();
  for (std::size_t i = drawn; i < values.size(); i += drawn) {
    std::copy_n(values.begin(), std::min(drawn, values.size() - i), values.begin() + i);
  }
}

bool OneIn(Random& random, unsigned n) {
  return random() % n == 0;
}

template <class F>
F WithRandomSign(F x, Random& random) {
  return OneIn(random, 2) ? -x : x;
}

// A random mantissa and sign with a biased exponent drawn from [low, high], assembled from one
// draw: biased exponent 0 gives a denormal (or zero).
template <class F>
F FromBits(Random& random, unsigned low, unsigned high) {
  using Bits = std::conditional_t<sizeof(F) == 4, std::uint32_t, std::uint64_t>;
  constexpr int kMantissaBits = std::numeric_limits<F>::digits - 1;
  constexpr int kSignBit = 8 * sizeof(F) - 1;
  const std::uint64_t draw = random();
  const Bits mantissa = static_cast<Bits>(draw) & ((Bits{1} << kMantissaBits) - 1);
  const Bits exponent = low + static_cast<Bits>(((draw >> 52) & 0x7FF) % (high - low + 1));
  const Bits sign = static_cast<Bits>(draw >> 63) << kSignBit;
  return std::bit_cast<F>(static_cast<Bits>(sign | (exponent << kMantissaBits) | mantissa));
}

template <class F>
constexpr unsigned kBias = std::numeric_limits<F>::max_exponent - 1;

// A NaN of either sign with a payload in its low mantissa bits, so that a result whose NaN came
// from the wrong operand, or kept a payload, shows.
template <class F>
F NaNWithPayload(bool negative, unsigned payload) {
  using Bits = std::conditional_t<sizeof(F) == 4, std::uint32_t, std::uint64_t>;
  const Bits sign = Bits{negative} << (8 * sizeof(F) - 1);
  return std::bit_cast<F>(
      static_cast<Bits>(sign | std::bit_cast<Bits>(std::numeric_limits<F>::quiet_NaN()) | payload));
}

// Magnitudes 2^-8 .. 2^9.
template <class F>
F Moderate(Random& random) {
  return FromBits<F>(random, kBias<F> - 8, kBias<F> + 8);
}

// Every finite magnitude, denormals included.
template <class F>
F AnyFinite(Random& random) {
  return FromBits<F>(random, 0, 2 * kBias<F>);
}

template <class F>
F Special(Random& random) {
  using Limits = std::numeric_limits<F>;
  const F specials[] = {
      F{0},
      -F{0},
      Limits::infinity(),
      -Limits::infinity(),
      Limits::quiet_NaN(),
      -Limits::quiet_NaN(),
      Limits::signaling_NaN(),
      NaNWithPayload<F>(false, 1),
      NaNWithPayload<F>(true, 2),
      Limits::denorm_min(),
      -Limits::denorm_min(),
      Limits::min() / 3,
      -Limits::min() * F{0.75},
      Limits::min(),
      -Limits::min(),
      Limits::max(),
      Limits::lowest(),
      Limits::max() / 2,
  };
  return specials[random() % std::size(specials)];
}

template <class F>
F Scalar(ValueProfile profile, Random& random) {
  switch (profile) {
    case ValueProfile::kModerate:
      break;
    case ValueProfile::kWithZeros:
      if (OneIn(random, 8)) return WithRandomSign(F{0}, random);
      break;
    case ValueProfile::kWideRange:
      if (OneIn(random, 32)) return WithRandomSign(F{0}, random);
      return AnyFinite<F>(random);
    case ValueProfile::kSpecial:
      if (OneIn(random, 4)) return Special<F>(random);
      break;
  }
  return Moderate<F>(random);
}

// Complex zeros come whole, so that zero divisors occur as often as for real elements.
template <class C>
C ComplexElement(ValueProfile profile, Random& random) {
  using F = decltype(C::re);
  if (profile == ValueProfile::kWithZeros && OneIn(random, 8)) {
    return {WithRandomSign(F{0}, random), WithRandomSign(F{0}, random)};
  }
  const F re = Scalar<F>(profile, random);
  return {re, Scalar<F>(profile, random)};
}

short Integer(Random& random) {
  constexpr short kExtremes[] = {-32768, -32767, -1, 0, 1, 32766, 32767};
  if (OneIn(random, 8)) return kExtremes[random() % std::size(kExtremes)];
  return static_cast<short>(static_cast<std::uint16_t>(random()));
}

// Any bits, with all-clear, all-set, one and the sign bit alone more frequent than chance.
template <class U>
U AnyBits(Random& random) {
  constexpr U kExtremes[] = {U{0}, static_cast<U>(~U{0}), U{1},
                             static_cast<U>(U{1} << (8 * sizeof(U) - 1))};
  if (OneIn(random, 8)) return kExtremes[random() % std::size(kExtremes)];
  return static_cast<U>(random());
}

engine::Int24 AnyInt24(Random& random) {
  const std::uint64_t bits = random();
  return {{static_cast<unsigned char>(bits), static_cast<unsigned char>(bits >> 8),
           static_cast<unsigned char>(bits >> 16)}};
}

// Index into a constant table, or -1 for a draw from the profile.
int TableIndex(int variant, std::size_t table_size) {
  const int index = variant % kConstantVariants;
  return static_cast<std::size_t>(index) < table_size ? index : -1;
}

template <class F>
F RealConstant(int variant, ValueProfile profile, Random& random) {
  using Limits = std::numeric_limits<F>;
  const F table[] = {F{0},
                     -F{0},
                     F{1},
                     F{-1},
                     F{2},
                     F{0.5},
                     F{3},
                     Limits::infinity(),
                     -Limits::infinity(),
                     NaNWithPayload<F>(true, 3),
                     Limits::denorm_min(),
                     Limits::max(),
                     Limits::min()};
  const int index = TableIndex(variant, std::size(table));
  return index < 0 ? Scalar<F>(profile, random) : table[index];
}

template <class C>
C ComplexConstant(int variant, ValueProfile profile, Random& random) {
  using F = decltype(C::re);
  using Limits = std::numeric_limits<F>;
  const C table[] = {{F{0}, F{0}},
                     {-F{0}, -F{0}},
                     {F{1}, F{0}},
                     {F{0}, F{1}},
                     {F{-1}, F{0}},
                     {F{0}, -F{0}},
                     {F{3}, F{4}},
                     {F{2}, F{-0.5}},
                     {Limits::infinity(), F{0}},
                     {Limits::quiet_NaN(), F{1}},
                     {Limits::denorm_min(), F{1}},
                     {Limits::max(), F{1}},
                     {F{1}, Limits::min()}};
  const int index = TableIndex(variant, std::size(table));
  return index < 0 ? ComplexElement<C>(profile, random) : table[index];
}

}  // namespace

const char* ProfileName(ValueProfile profile) {
  switch (profile) {
    case ValueProfile::kModerate:
      return "moderate";
    case ValueProfile::kWithZeros:
      return "with zeros";
    case ValueProfile::kWideRange:
      return "wide range";
    case ValueProfile::kSpecial:
      return "special";
  }
  return "?";
}

void Fill(std::span<float> values, ValueProfile profile, Random& random) {
  FillRepeating(values, [&] { return Scalar<float>(profile, random); });
}
void Fill(std::span<double> values, ValueProfile profile, Random& random) {
  FillRepeating(values, [&] { return Scalar<double>(profile, random); });
}
void Fill(std::span<Complex32> values, ValueProfile profile, Random& random) {
  FillRepeating(values, [&] { return ComplexElement<Complex32>(profile, random); });
}
void Fill(std::span<Complex64> values, ValueProfile profile, Random& random) {
  FillRepeating(values, [&] { return ComplexElement<Complex64>(profile, random); });
}
void Fill(std::span<short> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return Integer(random); });
}

void Fill(std::span<unsigned char> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return AnyBits<unsigned char>(random); });
}
void Fill(std::span<std::uint16_t> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return AnyBits<std::uint16_t>(random); });
}
void Fill(std::span<std::int32_t> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return static_cast<std::int32_t>(AnyBits<std::uint32_t>(random)); });
}
void Fill(std::span<std::uint32_t> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return AnyBits<std::uint32_t>(random); });
}
void Fill(std::span<std::uint64_t> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return AnyBits<std::uint64_t>(random); });
}
void Fill(std::span<engine::Int24> values, ValueProfile, Random& random) {
  FillRepeating(values, [&] { return AnyInt24(random); });
}

template <>
float ConstantOperand<float>(int variant, ValueProfile profile, Random& random) {
  return RealConstant<float>(variant, profile, random);
}
template <>
double ConstantOperand<double>(int variant, ValueProfile profile, Random& random) {
  return RealConstant<double>(variant, profile, random);
}
template <>
Complex32 ConstantOperand<Complex32>(int variant, ValueProfile profile, Random& random) {
  return ComplexConstant<Complex32>(variant, profile, random);
}
template <>
Complex64 ConstantOperand<Complex64>(int variant, ValueProfile profile, Random& random) {
  return ComplexConstant<Complex64>(variant, profile, random);
}
template <>
short ConstantOperand<short>(int variant, ValueProfile, Random& random) {
  constexpr short kTable[] = {0, 1, -1, 2, -2, 3, 32767, -32768, 16384, -16384, 181, 12345};
  const int index = TableIndex(variant, std::size(kTable));
  return index < 0 ? Integer(random) : kTable[index];
}

// Fill values: the bits matter, not the value, so any draw serves.
template <>
unsigned char ConstantOperand<unsigned char>(int, ValueProfile, Random& random) {
  return AnyBits<unsigned char>(random);
}
template <>
std::uint16_t ConstantOperand<std::uint16_t>(int, ValueProfile, Random& random) {
  return AnyBits<std::uint16_t>(random);
}
template <>
std::int32_t ConstantOperand<std::int32_t>(int, ValueProfile, Random& random) {
  return static_cast<std::int32_t>(AnyBits<std::uint32_t>(random));
}
template <>
std::uint32_t ConstantOperand<std::uint32_t>(int, ValueProfile, Random& random) {
  return AnyBits<std::uint32_t>(random);
}
template <>
std::uint64_t ConstantOperand<std::uint64_t>(int, ValueProfile, Random& random) {
  return AnyBits<std::uint64_t>(random);
}
template <>
engine::Int24 ConstantOperand<engine::Int24>(int, ValueProfile, Random& random) {
  return AnyInt24(random);
}

}  // namespace zal::test::harness
