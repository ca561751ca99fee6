// Operand values for the cross-level cases, reproducible from a seed.
#pragma once

#include <cstdint>
#include <span>

#include "engine/core/shapes.h"

namespace zal::test::harness {

// SplitMix64: statistically sound for test data and far cheaper to draw from than a Mersenne
// twister, whose refills would dominate the run time.
class Random {
 public:
  using result_type = std::uint64_t;
  explicit Random(std::uint64_t seed) : state_(seed) {}
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return ~result_type{0}; }
  result_type operator()() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
  }

 private:
  std::uint64_t state_;
};

// How a case draws its values. Integer elements draw from their full range in every profile,
// with the extremes more frequent than chance would make them.
enum class ValueProfile {
  kModerate,   // finite, non-zero, magnitudes 2^-8 .. 2^8, both signs
  kWithZeros,  // moderate, with +0 and -0 sprinkled in (zero divisors)
  kWideRange,  // the whole finite range: results overflow and underflow into denormals
  kSpecial,    // moderate mixed with +-0, +-Inf, NaNs, denormals and the extremes of the range
};
inline constexpr ValueProfile kValueProfiles[] = {ValueProfile::kModerate, ValueProfile::kWithZeros,
                                                  ValueProfile::kWideRange, ValueProfile::kSpecial};
const char* ProfileName(ValueProfile profile);

// Values repeat with this period: drawing every element of a multi-megabyte operand would
// dominate the run time, and a block this long already feeds every lane different values. An
// elementwise result of a long operand therefore repeats too.
inline constexpr int kRepeatPeriod = 8191;

void Fill(std::span<float> values, ValueProfile profile, Random& random);
void Fill(std::span<double> values, ValueProfile profile, Random& random);
void Fill(std::span<engine::Complex32> values, ValueProfile profile, Random& random);
void Fill(std::span<engine::Complex64> values, ValueProfile profile, Random& random);
void Fill(std::span<short> values, ValueProfile profile, Random& random);
void Fill(std::span<unsigned char> values, ValueProfile profile, Random& random);
void Fill(std::span<std::uint16_t> values, ValueProfile profile, Random& random);
void Fill(std::span<std::int32_t> values, ValueProfile profile, Random& random);
void Fill(std::span<std::uint32_t> values, ValueProfile profile, Random& random);
void Fill(std::span<std::uint64_t> values, ValueProfile profile, Random& random);
void Fill(std::span<engine::Int24> values, ValueProfile profile, Random& random);

// A constant operand: variants walk through the interesting constants (zero of both signs, one,
// infinities, NaN, denormal, the extremes of the range ...) with a few draws from the profile in
// between, so that consecutive variants cover them all.
template <class T>
T ConstantOperand(int variant, ValueProfile profile, Random& random);
template <>
float ConstantOperand<float>(int variant, ValueProfile profile, Random& random);
template <>
double ConstantOperand<double>(int variant, ValueProfile profile, Random& random);
template <>
engine::Complex32 ConstantOperand<engine::Complex32>(int variant, ValueProfile profile,
                                                     Random& random);
template <>
engine::Complex64 ConstantOperand<engine::Complex64>(int variant, ValueProfile profile,
                                                     Random& random);
template <>
short ConstantOperand<short>(int variant, ValueProfile profile, Random& random);
template <>
unsigned char ConstantOperand<unsigned char>(int variant, ValueProfile profile, Random& random);
template <>
std::uint16_t ConstantOperand<std::uint16_t>(int variant, ValueProfile profile, Random& random);
template <>
std::int32_t ConstantOperand<std::int32_t>(int variant, ValueProfile profile, Random& random);
template <>
std::uint32_t ConstantOperand<std::uint32_t>(int variant, ValueProfile profile, Random& random);
template <>
std::uint64_t ConstantOperand<std::uint64_t>(int variant, ValueProfile profile, Random& random);
template <>
engine::Int24 ConstantOperand<engine::Int24>(int variant, ValueProfile profile, Random& random);

// Variants 0 .. kConstantVariants - 1 include every interesting constant of every element type.
inline constexpr int kConstantVariants = 16;

// Scale factors of the integer scaled forms: ties and saturation around the product's width, and
// shifts far outside any useful range.
inline constexpr int kScales[] = {-40, -17, -16, -15, -3, -1, 0,   1,          2,
                                  15,  16,  17,  30,  31, 32, 100, 0x7FFFFFFF, -0x7FFFFFFF - 1};

}  // namespace zal::test::harness
