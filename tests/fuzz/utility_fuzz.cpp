// Fuzz target for the vector utilities. The input picks a function and draws its call: length
// (0, short, long, huge), null pointers, element-aligned offsets, in-place operands where the
// header allows them, operand values (special values weighted in), scalars and the
// floating-point modes. The call runs at every level this processor has, and each promise of the
// header is checked: see docs/fuzzing.md.
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include "tests/fuzz/utility_call.h"
#include "zalaccelerate/utility.h"

namespace zal::fuzz {
namespace {

namespace u = zalaccelerate::utility;
using CF = std::complex<float>;
using CD = std::complex<double>;

constexpr Agreement kBits = Agreement::kBits;
constexpr NanRule kComputed = NanRule::kComputed;
constexpr NanRule kPassed = NanRule::kPassed;
constexpr unsigned kNoAlias = 0;
constexpr unsigned kFirst = 1;
constexpr unsigned kEither = 3;

template <class T>
bool IsZero(T value) {
  return value == T{};
}

// ---- Arithmetic ---------------------------------------------------------------------------------

#define ZAL_FUZZ_BINARY_NAN(Name, T, nan)                                              \
  Entry {                                                                              \
#Name "/" #T, {In < T>(), In < T>(), Out < T>() }, kEither, kBits, nan,            \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); } \
  }
#define ZAL_FUZZ_IN_PLACE_NAN(Name, T, nan)                                 \
  Entry {                                                                   \
#Name "/" #T, {In < T>(), InOut < T>() }, kNoAlias, kBits, nan,         \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.P<T>(1)); } \
  }
#define ZAL_FUZZ_BINARY(Name, T) ZAL_FUZZ_BINARY_NAN(Name, T, kComputed)
#define ZAL_FUZZ_IN_PLACE(Name, T) ZAL_FUZZ_IN_PLACE_NAN(Name, T, kComputed)
#define ZAL_FUZZ_CONSTANT_FIRST(Name, T)                                               \
  Entry {                                                                              \
#Name "/" #T, {In < T>(), Out < T>() }, kFirst, kBits, kComputed,                  \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.S<T>(0), c.P<T>(1)); } \
  }
#define ZAL_FUZZ_CONSTANT_LAST(Name, T)                                                \
  Entry {                                                                              \
#Name "/" #T, {In < T>(), Out < T>() }, kFirst, kBits, kComputed,                  \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0)); } \
  }
#define ZAL_FUZZ_CONSTANT_IN_PLACE(Name, T)                                 \
  Entry {                                                                   \
#Name "/" #T, {InOut < T>() }, kNoAlias, kBits, kComputed,              \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.S<T>(0)); } \
  }

#define ZAL_FUZZ_ARITHMETIC(T)                                                                    \
  ZAL_FUZZ_BINARY(Add, T), ZAL_FUZZ_BINARY(Sub, T), ZAL_FUZZ_BINARY(Mul, T),                      \
      ZAL_FUZZ_BINARY(Div, T), Entry{"AddProduct/" #T,                                            \
                                     {In<T>(), In<T>(), InOut<T>()},                              \
                                     kEither,                                                     \
                                     kBits,                                                       \
                                     kComputed,                                                   \
                                     [](Call& c) { u::AddProduct(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); }},                                            \
      ZAL_FUZZ_IN_PLACE(Add_InPlace, T), ZAL_FUZZ_IN_PLACE(Sub_InPlace, T),                       \
      ZAL_FUZZ_IN_PLACE(Mul_InPlace, T), ZAL_FUZZ_IN_PLACE(Div_InPlace, T),                       \
      ZAL_FUZZ_CONSTANT_FIRST(AddConstant, T), ZAL_FUZZ_CONSTANT_FIRST(SubConstant, T),           \
      ZAL_FUZZ_CONSTANT_FIRST(SubConstantRev, T), ZAL_FUZZ_CONSTANT_LAST(MulConstant, T),         \
      ZAL_FUZZ_CONSTANT_LAST(DivConstant, T), ZAL_FUZZ_CONSTANT_IN_PLACE(AddConstant_InPlace, T), \
      ZAL_FUZZ_CONSTANT_IN_PLACE(SubConstant_InPlace, T),                                         \
      ZAL_FUZZ_CONSTANT_IN_PLACE(SubConstantRev_InPlace, T),                                      \
      ZAL_FUZZ_CONSTANT_IN_PLACE(MulConstant_InPlace, T),                                         \
      ZAL_FUZZ_CONSTANT_IN_PLACE(DivConstant_InPlace, T)

// ---- Math ---------------------------------------------------------------------------------------

#define ZAL_FUZZ_UNARY(Name, T, alias, agreement, nan)                      \
  Entry {                                                                   \
#Name "/" #T, {In < T>(), Out < T>() }, alias, agreement, nan,          \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0), c.P<T>(1)); } \
  }
#define ZAL_FUZZ_UNARY_IN_PLACE(Name, T, agreement, nan)         \
  Entry {                                                        \
#Name "/" #T, {InOut < T>() }, kNoAlias, agreement, nan,     \
                   [](Call & c) { u::Name(c.len(), c.P<T>(0)); } \
  }

#define ZAL_FUZZ_MATH(T)                                                            \
  ZAL_FUZZ_UNARY(Abs, T, kNoAlias, kBits, kPassed),                                 \
      ZAL_FUZZ_UNARY(Sqr, T, kNoAlias, kBits, kComputed),                           \
      ZAL_FUZZ_UNARY(Sqrt, T, kNoAlias, kBits, kComputed),                          \
      ZAL_FUZZ_UNARY(Inverse, T, kNoAlias, kBits, kComputed),                       \
      ZAL_FUZZ_UNARY(Round, T, kNoAlias, kBits, kComputed),                         \
      ZAL_FUZZ_UNARY(Exp, T, kFirst, Agreement::kUlps, kComputed),                  \
      ZAL_FUZZ_UNARY_IN_PLACE(Abs_InPlace, T, kBits, kPassed),                      \
      ZAL_FUZZ_UNARY_IN_PLACE(Sqr_InPlace, T, kBits, kComputed),                    \
      ZAL_FUZZ_UNARY_IN_PLACE(Sqrt_InPlace, T, kBits, kComputed),                   \
      ZAL_FUZZ_UNARY_IN_PLACE(Exp_InPlace, T, Agreement::kUlps, kComputed), Entry { \
    "Pow/" #T, {In<T>(), In<T>(), Out<T>()}, kNoAlias, Agreement::kUlps, kComputed, \
        [](Call& c) { u::Pow(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); },          \
        std::is_same_v<T, double> ? Reports::kPow64 : Reports::kNone                \
  }

// ---- Reductions ---------------------------------------------------------------------------------

template <class R>
void ReturnOrZero(Call& c, R value) {
  if (c.Refused()) Expect(IsZero(value), "a refused reduction returned other than 0");
  c.Return(value);
}

#define ZAL_FUZZ_REDUCTION(Name, T, nan)                                          \
  Entry {                                                                         \
#Name "/" #T, {In < T>() }, kNoAlias, kBits, nan,                             \
                   [](Call & c) { ReturnOrZero(c, u::Name(c.len(), c.P<T>(0))); } \
  }

#define ZAL_FUZZ_REDUCTIONS(T)                                                                 \
  ZAL_FUZZ_REDUCTION(Sum, T, kComputed), ZAL_FUZZ_REDUCTION(Mean, T, kComputed),               \
      ZAL_FUZZ_REDUCTION(Min, T, kPassed), ZAL_FUZZ_REDUCTION(Max, T, kPassed),                \
      ZAL_FUZZ_REDUCTION(NormL1, T, kComputed), ZAL_FUZZ_REDUCTION(NormL2, T, kComputed),      \
      Entry{"DotProduct/" #T,                                                                  \
            {In<T>(), In<T>()},                                                                \
            kNoAlias,                                                                          \
            kBits,                                                                             \
            kComputed,                                                                         \
            [](Call& c) { ReturnOrZero(c, u::DotProduct(c.len(), c.P<T>(0), c.P<T>(1))); }},                                                                  \
      Entry {                                                                                  \
    "StandardDeviation/" #T, {In<T>()}, kNoAlias, kBits, kComputed, [](Call& c) {              \
      const T preset = c.S<T>(0);                                                              \
      T out = preset;                                                                          \
      u::StandardDeviation(c.len(), c.P<T>(0), out);                                           \
      if (c.Refused()) {                                                                       \
        Expect(std::memcmp(&out, &preset, sizeof(T)) == 0, "a refused call wrote its output"); \
      }                                                                                        \
      c.Return(out);                                                                           \
    }                                                                                          \
  }

template <int (*kIndex)(unsigned int, const float*, float*)>
void ExtremeIndex(Call& c) {
  float value = c.S<float>(0);
  const int index = kIndex(c.len(), c.P<float>(0), c.flag() ? &value : nullptr);
  if (c.Refused()) {
    Expect(index == 0, "a refused call returned an index other than 0");
    if (c.flag()) Expect(std::bit_cast<std::uint32_t>(value) == 0, "a refused call stored not +0");
  }
  if (!c.Refused()) Expect(index >= 0 && index < static_cast<int>(c.len()), "index out of range");
  c.Return(index);
  c.Return(value);
}

void MinMaxIndexCall(Call& c) {
  float min = c.S<float>(0);
  float max = c.S<float>(1);
  int min_index = -7;
  int max_index = -7;
  u::MinMaxIndex(c.len(), c.P<float>(0), min, max, min_index, max_index);
  if (c.Refused()) {
    Expect(min_index == 0 && max_index == 0, "a refused call wrote indices other than 0");
  } else {
    Expect(min_index >= 0 && min_index < static_cast<int>(c.len()) && max_index >= 0 &&
               max_index < static_cast<int>(c.len()),
           "index out of range");
  }
  c.Return(min);
  c.Return(max);
  c.Return(min_index);
  c.Return(max_index);
}

void MinMaxCall(Call& c) {
  const float presets[2] = {c.S<float>(0), c.S<float>(1)};
  float min = presets[0];
  float max = presets[1];
  u::MinMax(c.len(), c.P<float>(0), min, max);
  if (c.Refused()) {
    Expect(std::memcmp(&min, &presets[0], 4) == 0 && std::memcmp(&max, &presets[1], 4) == 0,
           "a refused call wrote its outputs");
  }
  c.Return(min);
  c.Return(max);
}

void MaxAbsCall(Call& c) {
  const float result = u::MaxAbs(c.P<float>(0), c.len());
  if (c.Refused())
    Expect(std::bit_cast<std::uint32_t>(result) == 0, "refused MaxAbs returned not +0");
  Expect(!std::isnan(result), "MaxAbs returned NaN");
  c.Return(result);
}

void EqualCall(Call& c) {
  const bool equal = u::Equal(c.len(), c.P<unsigned char>(0), c.P<unsigned char>(1));
  if (c.Refused()) Expect(!equal, "a refused Equal returned true");
  if (!c.Refused()) {
    Expect(equal == (std::memcmp(c.P<unsigned char>(0), c.P<unsigned char>(1), c.len()) == 0),
           "Equal disagrees with memcmp");
  }
  c.Return(equal);
}

// ---- Thresholds ---------------------------------------------------------------------------------

#define ZAL_FUZZ_THRESHOLDS(T)                                                                    \
  Entry{"Threshold_GT_InPlace/" #T,                                                               \
        {InOut<T>()},                                                                             \
        kNoAlias,                                                                                 \
        kBits,                                                                                    \
        kPassed,                                                                                  \
        [](Call& c) { u::Threshold_GT_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }},                 \
      Entry{"Threshold_LT_InPlace/" #T,                                                           \
            {InOut<T>()},                                                                         \
            kNoAlias,                                                                             \
            kBits,                                                                                \
            kPassed,                                                                              \
            [](Call& c) { u::Threshold_LT_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }},             \
      Entry{"Threshold_GTVal/" #T,                                                                \
            {In<T>(), Out<T>()},                                                                  \
            kFirst,                                                                               \
            kBits,                                                                                \
            kPassed,                                                                              \
            [](Call& c) {                                                                         \
              u::Threshold_GTVal(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1));            \
            }},                                                                                   \
      Entry{"Threshold_LTVal/" #T,                                                                \
            {In<T>(), Out<T>()},                                                                  \
            kFirst,                                                                               \
            kBits,                                                                                \
            kPassed,                                                                              \
            [](Call& c) {                                                                         \
              u::Threshold_LTVal(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1));            \
            }},                                                                                   \
      Entry{                                                                                      \
          "Threshold_GTVal_InPlace/" #T,                                                          \
          {InOut<T>()},                                                                           \
          kNoAlias,                                                                               \
          kBits,                                                                                  \
          kPassed,                                                                                \
          [](Call& c) { u::Threshold_GTVal_InPlace(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1)); }}, \
      Entry{                                                                                      \
          "Threshold_LTVal_InPlace/" #T,                                                          \
          {InOut<T>()},                                                                           \
          kNoAlias,                                                                               \
          kBits,                                                                                  \
          kPassed,                                                                                \
          [](Call& c) { u::Threshold_LTVal_InPlace(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1)); }}, \
      Entry{"Invert_Threshold_InPlace/" #T,                                                       \
            {InOut<T>()},                                                                         \
            kNoAlias,                                                                             \
            kBits,                                                                                \
            kComputed,                                                                            \
            [](Call& c) {                                                                         \
              c.NoOpIf(!(c.S<T>(0) > 0));                                                         \
              u::Invert_Threshold_InPlace(c.len(), c.P<T>(0), c.S<T>(0));                         \
            }},                                                                                   \
      Entry{"Normalize/" #T,                                                                      \
            {In<T>(), Out<T>()},                                                                  \
            kFirst,                                                                               \
            kBits,                                                                                \
            kComputed,                                                                            \
            [](Call& c) {                                                                         \
              c.NoOpIf(std::fabs(c.S<T>(1)) < std::numeric_limits<T>::min());                     \
              u::Normalize(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1));                  \
            }},                                                                                   \
      Entry {                                                                                     \
    "VectorSlope/" #T, {Out<T>()}, kNoAlias, kBits, kComputed,                                    \
        [](Call& c) { u::VectorSlope(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1)); }                 \
  }

template <class T>
void InvertComplexCall(Call& c) {
  using R = typename T::value_type;
  c.NoOpIf(!(c.S<R>(0) > 0));
  u::Invert_Threshold_InPlace(c.len(), c.P<T>(0), c.S<R>(0));
}

// ---- Aligned memory and denormal modes ----------------------------------------------------------

template <class T, T* (*kMalloc)(unsigned int)>
void MallocCall(Call& c) {
  // The count: the length drawn, or one near the largest block.
  constexpr std::uint64_t kLargest = 0x7FFFFFFFu - 72;
  const unsigned int count = c.flag() ? c.len()
                                      : static_cast<unsigned int>(kLargest / sizeof(T)) +
                                            static_cast<unsigned int>(c.S<short>(0) % 3);
  T* block = kMalloc(count);
  const bool refused =
      count == 0 || count >= 0x80000000u || std::uint64_t{count} * sizeof(T) > kLargest;
  if (refused) Expect(block == nullptr, "allocated a block it must refuse");
  if (!refused && std::uint64_t{count} * sizeof(T) <= (1u << 20)) {
    Expect(block != nullptr, "refused a small block");
  }
  if (block) {
    Expect(reinterpret_cast<std::uintptr_t>(block) % 64 == 0, "block not aligned to 64 bytes");
    unsigned char* bytes = reinterpret_cast<unsigned char*>(block);
    const std::size_t size = std::size_t{count} * sizeof(T);
    bytes[0] = 1;
    bytes[size - 1] = 1;
    if (size <= (1u << 20)) std::memset(bytes, 0x5A, size);
  }
  u::Free(block);
}

// The setters change the register on purpose: they run outside the mode check.
void DenormalModesCall(Call& c) {
  constexpr unsigned kFtz = 0x8000;
  constexpr unsigned kDaz = 0x40;
  constexpr unsigned kUnderflowMask = 0x800;
  const unsigned saved = ReadMxcsr();
  const unsigned start = 0x1F80 ^ (c.S<short>(0) & 1 ? kUnderflowMask : 0) ^
                         (c.S<short>(0) & 2 ? kFtz : 0) ^ (c.S<short>(0) & 4 ? kDaz : 0);
  const bool enable = c.flag();
  unsigned expected = start;
  WriteMxcsr(start);
  switch (c.scale() & 3) {
    case 0:
      u::SetFlushDenormalsToZero(enable);
      expected = enable ? (start | kFtz | kUnderflowMask) : (start & ~kFtz);
      break;
    case 1:
      u::SetDenormalsAreZero(enable);
      expected = enable ? (start | kDaz) : (start & ~kDaz);
      break;
    case 2:
      u::SetDenormalExceptionsEnabled(enable);
      break;
    default:
      Expect(!u::GetFlushDenormalsToZero() && !u::GetDenormalsAreZero() &&
                 !u::GetDenormalExceptionsEnabled(),
             "a denormal-mode getter returned true");
  }
  const unsigned after = ReadMxcsr();
  WriteMxcsr(saved);
  Expect(ControlBits(after) == ControlBits(expected), "left the register other than promised");
}

// ---- The table ----------------------------------------------------------------------------------

const std::vector<Entry>& Entries() {
  static const std::vector<Entry> entries = {
      ZAL_FUZZ_ARITHMETIC(float),
      ZAL_FUZZ_ARITHMETIC(double),
      ZAL_FUZZ_ARITHMETIC(CF),
      ZAL_FUZZ_ARITHMETIC(CD),
      Entry{"AddConstantProduct/float",
            {In<float>(), InOut<float>()},
            kFirst,
            kBits,
            kComputed,
            [](Call& c) {
              u::AddConstantProduct(c.len(), c.P<float>(0), c.P<float>(1), c.S<float>(0));
            }},
      Entry{"AddConstantProduct/double",
            {In<double>(), InOut<double>()},
            kFirst,
            kBits,
            kComputed,
            [](Call& c) {
              c.NoOpIf(true);
              u::AddConstantProduct(c.len(), c.P<double>(0), c.P<double>(1), c.S<double>(0));
            }},
      Entry{
          "DivConstantRev/float",
          {In<float>(), Out<float>()},
          kFirst,
          kBits,
          kComputed,
          [](Call& c) { u::DivConstantRev(c.len(), c.S<float>(0), c.P<float>(0), c.P<float>(1)); }},
      Entry{"MulConstant_InPlace/short",
            {InOut<short>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) {
              u::MulConstant_InPlace(c.len(), c.P<short>(0), c.S<short>(0), c.scale());
            }},

      ZAL_FUZZ_MATH(float),
      ZAL_FUZZ_MATH(double),
      Entry{"Ln/float",
            {In<float>(), Out<float>()},
            kFirst,
            Agreement::kUlps,
            kComputed,
            [](Call& c) { u::Ln(c.len(), c.P<float>(0), c.P<float>(1)); }},
      Entry{"Ln/double",
            {In<double>(), Out<double>()},
            kFirst,
            Agreement::kUlps,
            kComputed,
            [](Call& c) { u::Ln(c.len(), c.P<double>(0), c.P<double>(1)); },
            Reports::kLn64},
      ZAL_FUZZ_UNARY_IN_PLACE(Ln_InPlace, float, Agreement::kUlps, kComputed),
      ZAL_FUZZ_UNARY(Ln_Prec11, float, kNoAlias, Agreement::kPrec11, kComputed),
      ZAL_FUZZ_UNARY(Ln_Prec21, float, kNoAlias, Agreement::kPrec21, kComputed),
      ZAL_FUZZ_UNARY(Ln_Prec24, float, kNoAlias, Agreement::kPrec24, kComputed),
      ZAL_FUZZ_UNARY(Inverse_Prec26, double, kNoAlias, Agreement::kPrec26, kComputed),
      Entry{"Pow_Prec26/double",
            {In<double>(), In<double>(), Out<double>()},
            kNoAlias,
            Agreement::kPrec26,
            kComputed,
            [](Call& c) { u::Pow_Prec26(c.len(), c.P<double>(0), c.P<double>(1), c.P<double>(2)); },
            Reports::kPow64},

      ZAL_FUZZ_REDUCTIONS(float),
      ZAL_FUZZ_REDUCTIONS(double),
      Entry{"MinMax/float", {In<float>()}, kNoAlias, kBits, kPassed, &MinMaxCall},
      Entry{"MinIndex/float", {In<float>()}, kNoAlias, kBits, kPassed, &ExtremeIndex<&u::MinIndex>},
      Entry{"MaxIndex/float", {In<float>()}, kNoAlias, kBits, kPassed, &ExtremeIndex<&u::MaxIndex>},
      Entry{"MinMaxIndex/float", {In<float>()}, kNoAlias, kBits, kPassed, &MinMaxIndexCall},
      Entry{"MaxAbs/float", {In<float>()}, kNoAlias, kBits, kComputed, &MaxAbsCall},
      Entry{"Equal/byte",
            {In<unsigned char>(), In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &EqualCall},

      ZAL_FUZZ_THRESHOLDS(float),
      ZAL_FUZZ_THRESHOLDS(double),
      Entry{"Invert_Threshold_InPlace/CF",
            {InOut<CF>()},
            kNoAlias,
            kBits,
            kComputed,
            &InvertComplexCall<CF>},
      Entry{"Invert_Threshold_InPlace/CD",
            {InOut<CD>()},
            kNoAlias,
            kBits,
            kComputed,
            &InvertComplexCall<CD>},
      Entry{"Trim/float",
            {InOut<float>()},
            kNoAlias,
            kBits,
            kPassed,
            [](Call& c) {
              c.NoOpIf(c.S<float>(0) > c.S<float>(1));
              u::Trim(c.len(), c.P<float>(0), c.S<float>(0), c.S<float>(1));
            }},
      ZAL_FUZZ_BINARY_NAN(MinEvery, float, kPassed),
      ZAL_FUZZ_BINARY_NAN(MaxEvery, float, kPassed),
      ZAL_FUZZ_IN_PLACE_NAN(MinEvery_InPlace, float, kPassed),
      ZAL_FUZZ_IN_PLACE_NAN(MaxEvery_InPlace, float, kPassed),

      Entry{"Magnitude/split float",
            {In<float>(), In<float>(), Out<float>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::Magnitude(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2)); }},
      Entry{"Magnitude/split double",
            {In<double>(), In<double>(), Out<double>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::Magnitude(c.len(), c.P<double>(0), c.P<double>(1), c.P<double>(2)); }},
      Entry{"Magnitude/CF",
            {In<CF>(), Out<float>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::Magnitude(c.len(), c.P<CF>(0), c.P<float>(1)); }},
      Entry{"Magnitude/CD",
            {In<CD>(), Out<double>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::Magnitude(c.len(), c.P<CD>(0), c.P<double>(1)); }},
      Entry{"PowerSpectr/CF",
            {In<CF>(), Out<float>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::PowerSpectr(c.len(), c.P<CF>(0), c.P<float>(1)); }},
      Entry{"PowerSpectr/CD",
            {In<CD>(), Out<double>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::PowerSpectr(c.len(), c.P<CD>(0), c.P<double>(1)); }},
      Entry{"CartToPolar/float",
            {In<CF>(), Out<float>(), Out<float>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::CartToPolar(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2)); }},
      Entry{"PolarToCart/float",
            {In<float>(), In<float>(), Out<CF>()},
            kNoAlias,
            kBits,
            kComputed,
            [](Call& c) { u::PolarToCart(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2)); }},

      Entry{"Malloc_Byte",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<unsigned char, &u::Malloc_Byte>},
      Entry{"Malloc_Int16",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<short, &u::Malloc_Int16>},
      Entry{"Malloc_Float",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<float, &u::Malloc_Float>},
      Entry{"Malloc_Double",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<double, &u::Malloc_Double>},
      Entry{"Malloc_Complex_Float",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<CF, &u::Malloc_Complex_Float>},
      Entry{"Malloc_Complex_Double",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &MallocCall<CD, &u::Malloc_Complex_Double>},
      Entry{"DenormalModes",
            {In<unsigned char>()},
            kNoAlias,
            kBits,
            kComputed,
            &DenormalModesCall,
            Reports::kNone,
            true},
  };
  return entries;
}

}  // namespace
}  // namespace zal::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zal::fuzz;
  FuzzedDataProvider input(data, size);
  const std::vector<Entry>& entries = Entries();
  const Entry& entry = entries[input.ConsumeIntegralInRange<std::size_t>(0, entries.size() - 1)];
  Call call(entry, input);
  call.Run();
  return 0;
}
