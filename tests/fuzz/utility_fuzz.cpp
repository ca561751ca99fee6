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
constexpr Agreement kUlps = Agreement::kUlps;
constexpr NanRule kComputed = NanRule::kComputed;
constexpr NanRule kPassed = NanRule::kPassed;
constexpr unsigned kFirst = 1;
constexpr unsigned kEither = 3;

template <class T>
bool IsZero(T value) {
  return value == T{};
}

// ---- Calls with checks of their own -------------------------------------------------------------

template <class R>
void ReturnOrZero(Call& c, R value) {
  if (c.Refused()) Expect(IsZero(value), "a refused reduction returned other than 0");
  c.Return(value);
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

// ---- The table, family by family ---------------------------------------------------------------
// The order is the table's: the spelled-out inputs of the corpus pick functions by position.

template <class T>
void AddArithmetic(std::vector<Entry>& table, const std::string& type) {
  const std::vector<Operand> binary = {In<T>(), In<T>(), Out<T>()};
  const std::vector<Operand> in_place = {In<T>(), InOut<T>()};
  const std::vector<Operand> unary = {In<T>(), Out<T>()};
  const std::vector<Operand> own = {InOut<T>()};
  table.push_back({"Add/" + type, binary,
                   [](Call& c) { u::Add(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); }, kEither});
  table.push_back({"Sub/" + type, binary,
                   [](Call& c) { u::Sub(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); }, kEither});
  table.push_back({"Mul/" + type, binary,
                   [](Call& c) { u::Mul(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); }, kEither});
  table.push_back({"Div/" + type, binary,
                   [](Call& c) { u::Div(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); }, kEither});
  table.push_back({"AddProduct/" + type,
                   {In<T>(), In<T>(), InOut<T>()},
                   [](Call& c) { u::AddProduct(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); },
                   kEither});
  table.push_back({"Add_InPlace/" + type, in_place,
                   [](Call& c) { u::Add_InPlace(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"Sub_InPlace/" + type, in_place,
                   [](Call& c) { u::Sub_InPlace(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"Mul_InPlace/" + type, in_place,
                   [](Call& c) { u::Mul_InPlace(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"Div_InPlace/" + type, in_place,
                   [](Call& c) { u::Div_InPlace(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"AddConstant/" + type, unary,
                   [](Call& c) { u::AddConstant(c.len(), c.P<T>(0), c.S<T>(0), c.P<T>(1)); },
                   kFirst});
  table.push_back({"SubConstant/" + type, unary,
                   [](Call& c) { u::SubConstant(c.len(), c.P<T>(0), c.S<T>(0), c.P<T>(1)); },
                   kFirst});
  table.push_back({"SubConstantRev/" + type, unary,
                   [](Call& c) { u::SubConstantRev(c.len(), c.P<T>(0), c.S<T>(0), c.P<T>(1)); },
                   kFirst});
  table.push_back({"MulConstant/" + type, unary,
                   [](Call& c) { u::MulConstant(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0)); },
                   kFirst});
  table.push_back({"DivConstant/" + type, unary,
                   [](Call& c) { u::DivConstant(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0)); },
                   kFirst});
  table.push_back({"AddConstant_InPlace/" + type, own,
                   [](Call& c) { u::AddConstant_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }});
  table.push_back({"SubConstant_InPlace/" + type, own,
                   [](Call& c) { u::SubConstant_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }});
  table.push_back({"SubConstantRev_InPlace/" + type, own,
                   [](Call& c) { u::SubConstantRev_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }});
  table.push_back({"MulConstant_InPlace/" + type, own,
                   [](Call& c) { u::MulConstant_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }});
  table.push_back({"DivConstant_InPlace/" + type, own,
                   [](Call& c) { u::DivConstant_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }});
}

void AddArithmeticOthers(std::vector<Entry>& table) {
  table.push_back(
      {"AddConstantProduct/float",
       {In<float>(), InOut<float>()},
       [](Call& c) { u::AddConstantProduct(c.len(), c.P<float>(0), c.P<float>(1), c.S<float>(0)); },
       kFirst});
  table.push_back({"AddConstantProduct/double",
                   {In<double>(), InOut<double>()},
                   [](Call& c) {
                     c.NoOpIf(true);
                     u::AddConstantProduct(c.len(), c.P<double>(0), c.P<double>(1), c.S<double>(0));
                   },
                   kFirst});
  table.push_back(
      {"DivConstantRev/float",
       {In<float>(), Out<float>()},
       [](Call& c) { u::DivConstantRev(c.len(), c.S<float>(0), c.P<float>(0), c.P<float>(1)); },
       kFirst});
  table.push_back({"MulConstant_InPlace/short", {InOut<short>()}, [](Call& c) {
                     u::MulConstant_InPlace(c.len(), c.P<short>(0), c.S<short>(0), c.scale());
                   }});
}

template <class T>
void AddMath(std::vector<Entry>& table, const std::string& type) {
  const std::vector<Operand> unary = {In<T>(), Out<T>()};
  const std::vector<Operand> own = {InOut<T>()};
  table.push_back({"Abs/" + type, unary, [](Call& c) { u::Abs(c.len(), c.P<T>(0), c.P<T>(1)); }, 0,
                   kBits, kPassed});
  table.push_back({"Sqr/" + type, unary, [](Call& c) { u::Sqr(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"Sqrt/" + type, unary, [](Call& c) { u::Sqrt(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back(
      {"Inverse/" + type, unary, [](Call& c) { u::Inverse(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back(
      {"Round/" + type, unary, [](Call& c) { u::Round(c.len(), c.P<T>(0), c.P<T>(1)); }});
  table.push_back({"Exp/" + type, unary, [](Call& c) { u::Exp(c.len(), c.P<T>(0), c.P<T>(1)); },
                   kFirst, kUlps});
  table.push_back({"Abs_InPlace/" + type, own, [](Call& c) { u::Abs_InPlace(c.len(), c.P<T>(0)); },
                   0, kBits, kPassed});
  table.push_back(
      {"Sqr_InPlace/" + type, own, [](Call& c) { u::Sqr_InPlace(c.len(), c.P<T>(0)); }});
  table.push_back(
      {"Sqrt_InPlace/" + type, own, [](Call& c) { u::Sqrt_InPlace(c.len(), c.P<T>(0)); }});
  table.push_back(
      {"Exp_InPlace/" + type, own, [](Call& c) { u::Exp_InPlace(c.len(), c.P<T>(0)); }, 0, kUlps});
  table.push_back({"Pow/" + type,
                   {In<T>(), In<T>(), Out<T>()},
                   [](Call& c) { u::Pow(c.len(), c.P<T>(0), c.P<T>(1), c.P<T>(2)); },
                   0,
                   kUlps,
                   kComputed,
                   std::is_same_v<T, double> ? Reports::kPow64 : Reports::kNone});
}

void AddMathOthers(std::vector<Entry>& table) {
  const std::vector<Operand> unary = {In<float>(), Out<float>()};
  table.push_back({"Ln/float", unary, [](Call& c) { u::Ln(c.len(), c.P<float>(0), c.P<float>(1)); },
                   kFirst, kUlps});
  table.push_back({"Ln/double",
                   {In<double>(), Out<double>()},
                   [](Call& c) { u::Ln(c.len(), c.P<double>(0), c.P<double>(1)); },
                   kFirst,
                   kUlps,
                   NanRule::kQuietened,
                   Reports::kLn64});
  table.push_back({"Ln_InPlace/float",
                   {InOut<float>()},
                   [](Call& c) { u::Ln_InPlace(c.len(), c.P<float>(0)); },
                   0,
                   kUlps});
  table.push_back({"Ln_Prec11/float", unary,
                   [](Call& c) { u::Ln_Prec11(c.len(), c.P<float>(0), c.P<float>(1)); }, 0,
                   Agreement::kPrec11});
  table.push_back({"Ln_Prec21/float", unary,
                   [](Call& c) { u::Ln_Prec21(c.len(), c.P<float>(0), c.P<float>(1)); }, 0,
                   Agreement::kPrec21});
  table.push_back({"Ln_Prec24/float", unary,
                   [](Call& c) { u::Ln_Prec24(c.len(), c.P<float>(0), c.P<float>(1)); }, 0,
                   Agreement::kPrec24});
  table.push_back({"Inverse_Prec26/double",
                   {In<double>(), Out<double>()},
                   [](Call& c) { u::Inverse_Prec26(c.len(), c.P<double>(0), c.P<double>(1)); },
                   0,
                   Agreement::kPrec26});
  table.push_back(
      {"Pow_Prec26/double",
       {In<double>(), In<double>(), Out<double>()},
       [](Call& c) { u::Pow_Prec26(c.len(), c.P<double>(0), c.P<double>(1), c.P<double>(2)); },
       0,
       Agreement::kPrec26,
       kComputed,
       Reports::kPow64});
}

template <class T>
void StandardDeviationCall(Call& c) {
  const T preset = c.S<T>(0);
  T out = preset;
  u::StandardDeviation(c.len(), c.P<T>(0), out);
  if (c.Refused()) {
    Expect(std::memcmp(&out, &preset, sizeof(T)) == 0, "a refused call wrote its output");
  }
  c.Return(out);
}

template <class T>
void AddReductions(std::vector<Entry>& table, const std::string& type) {
  const std::vector<Operand> one = {In<T>()};
  table.push_back(
      {"Sum/" + type, one, [](Call& c) { ReturnOrZero(c, u::Sum(c.len(), c.P<T>(0))); }});
  table.push_back(
      {"Mean/" + type, one, [](Call& c) { ReturnOrZero(c, u::Mean(c.len(), c.P<T>(0))); }});
  table.push_back({"Min/" + type, one, [](Call& c) { ReturnOrZero(c, u::Min(c.len(), c.P<T>(0))); },
                   0, kBits, kPassed});
  table.push_back({"Max/" + type, one, [](Call& c) { ReturnOrZero(c, u::Max(c.len(), c.P<T>(0))); },
                   0, kBits, kPassed});
  table.push_back(
      {"NormL1/" + type, one, [](Call& c) { ReturnOrZero(c, u::NormL1(c.len(), c.P<T>(0))); }});
  table.push_back(
      {"NormL2/" + type, one, [](Call& c) { ReturnOrZero(c, u::NormL2(c.len(), c.P<T>(0))); }});
  table.push_back({"DotProduct/" + type, {In<T>(), In<T>()}, [](Call& c) {
                     ReturnOrZero(c, u::DotProduct(c.len(), c.P<T>(0), c.P<T>(1)));
                   }});
  table.push_back({"StandardDeviation/" + type, one, &StandardDeviationCall<T>});
}

void AddReductionOthers(std::vector<Entry>& table) {
  const std::vector<Operand> one = {In<float>()};
  table.push_back({"MinMax/float", one, &MinMaxCall, 0, kBits, kPassed});
  table.push_back({"MinIndex/float", one, &ExtremeIndex<&u::MinIndex>, 0, kBits, kPassed});
  table.push_back({"MaxIndex/float", one, &ExtremeIndex<&u::MaxIndex>, 0, kBits, kPassed});
  table.push_back({"MinMaxIndex/float", one, &MinMaxIndexCall, 0, kBits, kPassed});
  table.push_back({"MaxAbs/float", one, &MaxAbsCall});
  table.push_back({"Equal/byte", {In<unsigned char>(), In<unsigned char>()}, &EqualCall});
}

template <class T>
void AddThresholds(std::vector<Entry>& table, const std::string& type) {
  const std::vector<Operand> own = {InOut<T>()};
  const std::vector<Operand> unary = {In<T>(), Out<T>()};
  table.push_back({"Threshold_GT_InPlace/" + type, own,
                   [](Call& c) { u::Threshold_GT_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }, 0,
                   kBits, kPassed});
  table.push_back({"Threshold_LT_InPlace/" + type, own,
                   [](Call& c) { u::Threshold_LT_InPlace(c.len(), c.P<T>(0), c.S<T>(0)); }, 0,
                   kBits, kPassed});
  table.push_back(
      {"Threshold_GTVal/" + type, unary,
       [](Call& c) { u::Threshold_GTVal(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1)); },
       kFirst, kBits, kPassed});
  table.push_back(
      {"Threshold_LTVal/" + type, unary,
       [](Call& c) { u::Threshold_LTVal(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1)); },
       kFirst, kBits, kPassed});
  table.push_back(
      {"Threshold_GTVal_InPlace/" + type, own,
       [](Call& c) { u::Threshold_GTVal_InPlace(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1)); }, 0,
       kBits, kPassed});
  table.push_back(
      {"Threshold_LTVal_InPlace/" + type, own,
       [](Call& c) { u::Threshold_LTVal_InPlace(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1)); }, 0,
       kBits, kPassed});
  table.push_back({"Invert_Threshold_InPlace/" + type, own, [](Call& c) {
                     c.NoOpIf(!(c.S<T>(0) > 0));
                     u::Invert_Threshold_InPlace(c.len(), c.P<T>(0), c.S<T>(0));
                   }});
  table.push_back({"Normalize/" + type, unary,
                   [](Call& c) {
                     c.NoOpIf(std::fabs(c.S<T>(1)) < std::numeric_limits<T>::min());
                     u::Normalize(c.len(), c.P<T>(0), c.P<T>(1), c.S<T>(0), c.S<T>(1));
                   },
                   kFirst});
  table.push_back({"VectorSlope/" + type, {Out<T>()}, [](Call& c) {
                     u::VectorSlope(c.len(), c.P<T>(0), c.S<T>(0), c.S<T>(1));
                   }});
}

void AddThresholdOthers(std::vector<Entry>& table) {
  const std::vector<Operand> binary = {In<float>(), In<float>(), Out<float>()};
  const std::vector<Operand> in_place = {In<float>(), InOut<float>()};
  table.push_back(
      {"Invert_Threshold_InPlace/complex float", {InOut<CF>()}, &InvertComplexCall<CF>});
  table.push_back(
      {"Invert_Threshold_InPlace/complex double", {InOut<CD>()}, &InvertComplexCall<CD>});
  table.push_back({"Trim/float",
                   {InOut<float>()},
                   [](Call& c) {
                     c.NoOpIf(c.S<float>(0) > c.S<float>(1));
                     u::Trim(c.len(), c.P<float>(0), c.S<float>(0), c.S<float>(1));
                   },
                   0,
                   kBits,
                   kPassed});
  table.push_back(
      {"MinEvery/float", binary,
       [](Call& c) { u::MinEvery(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2)); }, kEither,
       kBits, kPassed});
  table.push_back(
      {"MaxEvery/float", binary,
       [](Call& c) { u::MaxEvery(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2)); }, kEither,
       kBits, kPassed});
  table.push_back({"MinEvery_InPlace/float", in_place,
                   [](Call& c) { u::MinEvery_InPlace(c.len(), c.P<float>(0), c.P<float>(1)); }, 0,
                   kBits, kPassed});
  table.push_back({"MaxEvery_InPlace/float", in_place,
                   [](Call& c) { u::MaxEvery_InPlace(c.len(), c.P<float>(0), c.P<float>(1)); }, 0,
                   kBits, kPassed});
}

void AddComplexHelpers(std::vector<Entry>& table) {
  table.push_back({"Magnitude/split float", {In<float>(), In<float>(), Out<float>()}, [](Call& c) {
                     u::Magnitude(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2));
                   }});
  table.push_back(
      {"Magnitude/split double", {In<double>(), In<double>(), Out<double>()}, [](Call& c) {
         u::Magnitude(c.len(), c.P<double>(0), c.P<double>(1), c.P<double>(2));
       }});
  table.push_back({"Magnitude/complex float", {In<CF>(), Out<float>()}, [](Call& c) {
                     u::Magnitude(c.len(), c.P<CF>(0), c.P<float>(1));
                   }});
  table.push_back({"Magnitude/complex double", {In<CD>(), Out<double>()}, [](Call& c) {
                     u::Magnitude(c.len(), c.P<CD>(0), c.P<double>(1));
                   }});
  table.push_back({"PowerSpectr/complex float", {In<CF>(), Out<float>()}, [](Call& c) {
                     u::PowerSpectr(c.len(), c.P<CF>(0), c.P<float>(1));
                   }});
  table.push_back({"PowerSpectr/complex double", {In<CD>(), Out<double>()}, [](Call& c) {
                     u::PowerSpectr(c.len(), c.P<CD>(0), c.P<double>(1));
                   }});
  table.push_back({"CartToPolar/float", {In<CF>(), Out<float>(), Out<float>()}, [](Call& c) {
                     u::CartToPolar(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2));
                   }});
  table.push_back({"PolarToCart/float", {In<float>(), In<float>(), Out<CF>()}, [](Call& c) {
                     u::PolarToCart(c.len(), c.P<float>(0), c.P<float>(1), c.P<float>(2));
                   }});
}

void AddMemoryAndModes(std::vector<Entry>& table) {
  // The allocators take a count only: the operand is a stand-in that the call ignores.
  const std::vector<Operand> none = {In<unsigned char>()};
  table.push_back({"Malloc_Byte", none, &MallocCall<unsigned char, &u::Malloc_Byte>});
  table.push_back({"Malloc_Int16", none, &MallocCall<short, &u::Malloc_Int16>});
  table.push_back({"Malloc_Float", none, &MallocCall<float, &u::Malloc_Float>});
  table.push_back({"Malloc_Double", none, &MallocCall<double, &u::Malloc_Double>});
  table.push_back({"Malloc_Complex_Float", none, &MallocCall<CF, &u::Malloc_Complex_Float>});
  table.push_back({"Malloc_Complex_Double", none, &MallocCall<CD, &u::Malloc_Complex_Double>});
  table.push_back(
      {"DenormalModes", none, &DenormalModesCall, 0, kBits, kComputed, Reports::kNone, true});
}

const std::vector<Entry>& Entries() {
  static const std::vector<Entry> table = [] {
    std::vector<Entry> t;
    AddArithmetic<float>(t, "float");
    AddArithmetic<double>(t, "double");
    AddArithmetic<CF>(t, "complex float");
    AddArithmetic<CD>(t, "complex double");
    AddArithmeticOthers(t);
    AddMath<float>(t, "float");
    AddMath<double>(t, "double");
    AddMathOthers(t);
    AddReductions<float>(t, "float");
    AddReductions<double>(t, "double");
    AddReductionOthers(t);
    AddThresholds<float>(t, "float");
    AddThresholds<double>(t, "double");
    AddThresholdOthers(t);
    AddComplexHelpers(t);
    AddMemoryAndModes(t);
    return t;
  }();
  return table;
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
