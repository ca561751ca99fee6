// How the harness calls each shape: the vector sources it reads, the aliasings it allows, its
// pointer arguments in signature order, how it takes a constant, and the call itself. A new
// shape needs one driver here and nothing else.
#pragma once

#include <cmath>
#include <type_traits>

#include "engine/core/shapes.h"
#include "tests/engine/harness/conversion_drivers.h"
#include "tests/engine/harness/grid.h"

namespace zal::test::harness {

// Pointer arguments, which a primitive may receive null in.
enum class Operand { kFirst, kSecond, kConstant, kDst };

enum class ConstantKind {
  kNone,
  kByValue,
  kByPointer,
  kScaled,  // by value, followed by a scale factor
};

// Every argument a shape may take; each driver passes on the ones its shape has.
template <class T>
struct Operands {
  const T* first = nullptr;
  const T* second = nullptr;
  const T* constant_ref = nullptr;
  T* dst = nullptr;
  T constant{};
  int n = 0;
  int scale = 0;
  T second_constant{};  // for shapes with two scalar parameters
};

// How a shape lays out its result, for the drivers that differ from the elementwise default.
// kResultCells: the destination is that many cells of result (reductions), not one per element.
// kWholeLength: the portable variant runs over the whole length, for results that depend on the
// position (ramps) or are not one destination element per source element.
template <class Driver>
constexpr int ResultCells() {
  if constexpr (requires { Driver::kResultCells; }) {
    return Driver::kResultCells;
  } else {
    return 0;
  }
}
template <class Driver>
constexpr bool WholeLength() {
  if constexpr (requires { Driver::kWholeLength; }) {
    return Driver::kWholeLength;
  } else {
    return ResultCells<Driver>() > 0;
  }
}

// One driver per shape, named after it: shapes with the same function type (Binary and
// WithConstantRef, BinaryInPlace and ConstantRefInPlace) still get drivers of their own, which a
// specialisation on the function type could not tell apart. A row reaches its driver as
// drivers::<shape>.
namespace drivers {

template <class T>
struct Binary {
  using Element = T;
  using Function = engine::Binary<T>;
  static constexpr int kSources = 2;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst,
                                            Aliasing::kDstIsSecond};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kSecond, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.second, o.dst, o.n);
  }
};

template <class T>
struct BinaryInPlace {
  using Element = T;
  using Function = engine::BinaryInPlace<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

template <class T>
struct WithConstant {
  using Element = T;
  using Function = engine::WithConstant<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.constant, o.dst, o.n);
  }
};

template <class T>
struct ConstantInPlace {
  using Element = T;
  using Function = engine::ConstantInPlace<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.constant, o.dst, o.n); }
};

template <class T>
struct WithConstantRef {
  using Element = T;
  using Function = engine::WithConstantRef<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kConstant, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByPointer;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.constant_ref, o.dst, o.n);
  }
};

template <class T>
struct ConstantRefInPlace {
  using Element = T;
  using Function = engine::ConstantRefInPlace<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kConstant, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByPointer;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.constant_ref, o.dst, o.n); }
};

template <class T>
struct WithConstantScaled {
  using Element = T;
  using Function = engine::WithConstantScaled<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kScaled;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.constant, o.dst, o.n, o.scale);
  }
};

// ---- Math functions -----------------------------------------------------------------------------

template <class T>
struct Unary {
  using Element = T;
  using Function = engine::Unary<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

// The destination's values on entry are the operands.
template <class T>
struct UnaryInPlace {
  using Element = T;
  using Function = engine::UnaryInPlace<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.dst, o.n); }
};

// Service shapes have no driver: their rows name the function type itself, which no runner
// instantiates.
using engine::Allocate;
using engine::Release;
using engine::SetFlag;
using engine::SetFlushToZero;
using engine::VersionQuery;
// The transforms are not elementwise: tests/engine/fft_test.cpp covers them at every level.
using engine::FFTGetSize;
using engine::FFTInit;
using engine::FFTSplitTransform;
using engine::FFTTransform;
// The recursive filters keep a state: tests/api/iir_api_test.cpp runs them at every level.
using engine::IIRFilter;
using engine::IIRGetDlyLine;
using engine::IIRGetSize;
using engine::IIRInit;
using engine::IIRSetDlyLine;
// Convolution and resampling keep state across calls or are not elementwise:
// tests/api/convolution_api_test.cpp and tests/engine/convolution_test.cpp cover them.
using engine::Convolution;
using engine::ConvolutionSizeQuery;
using engine::Resampling;

// ---- Reductions, thresholds and complex-domain helpers
// --------------------------------------------

// Reductions write result cells at the destination: values of T, and indices as int in cells of
// their own (float and int have the same size, and the cells are compared byte for byte first).
template <class T>
struct Reduce {
  using Element = T;
  using Function = engine::Reduce<T>;
  static constexpr int kSources = 1;
  static constexpr int kResultCells = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.n, o.dst); }
};

// Odd lengths take the accurate algorithm (hint 2), even ones the default (hint 0).
template <class T>
struct ReduceHinted {
  using Element = T;
  using Function = engine::ReduceHinted<T>;
  static constexpr int kSources = 1;
  static constexpr int kResultCells = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.n, o.dst, o.n % 2 ? 2 : 0);
  }
};

template <class T>
struct ReduceTwo {
  using Element = T;
  using Function = engine::ReduceTwo<T>;
  static constexpr int kSources = 2;
  static constexpr int kResultCells = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kSecond, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.second, o.n, o.dst);
  }
};

template <class T>
int* IndexCell(T* dst, int cell) {
  static_assert(sizeof(T) == sizeof(int));
  return dst ? reinterpret_cast<int*>(dst + cell) : nullptr;
}
template <class T>
T* ValueCell(T* dst, int cell) {
  return dst ? dst + cell : nullptr;
}

template <class T>
struct ReduceToIndex {
  using Element = T;
  using Function = engine::ReduceToIndex<T>;
  static constexpr int kSources = 1;
  static constexpr int kResultCells = 2;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.n, o.dst, IndexCell(o.dst, 1));
  }
};

template <class T>
struct ReduceToRange {
  using Element = T;
  using Function = engine::ReduceToRange<T>;
  static constexpr int kSources = 1;
  static constexpr int kResultCells = 2;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.n, o.dst, ValueCell(o.dst, 1));
  }
};

template <class T>
struct ReduceToRangeIndex {
  using Element = T;
  using Function = engine::ReduceToRangeIndex<T>;
  static constexpr int kSources = 1;
  static constexpr int kResultCells = 4;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.n, o.dst, IndexCell(o.dst, 1), ValueCell(o.dst, 2), IndexCell(o.dst, 3));
  }
};

template <class T>
struct ThresholdInPlace {
  using Element = T;
  using Function = engine::ThresholdInPlace<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.dst, o.n, o.constant); }
};

template <class T>
struct ThresholdValue {
  using Element = T;
  using Function = engine::ThresholdValue<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.dst, o.n, o.constant, o.second_constant);
  }
};

template <class T>
struct ThresholdValueInPlace {
  using Element = T;
  using Function = engine::ThresholdValueInPlace<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.dst, o.n, o.constant, o.second_constant);
  }
};

// The lower constant as the lower level, so that most cases clamp rather than being refused; the
// values are the constants crosswise.
template <class T>
struct ThresholdTwoSided {
  using Element = T;
  using Function = engine::ThresholdTwoSided<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    const bool ordered = o.constant < o.second_constant;
    const T low = ordered ? o.constant : o.second_constant;
    const T high = ordered ? o.second_constant : o.constant;
    return f(o.first, o.dst, o.n, low, high, high, low);
  }
};

// The level is the constant's magnitude (its real part's, for complex elements), so that most
// cases invert rather than being refused; zero and NaN constants still reach the refusal.
template <class T>
struct InvertThreshold {
  using Element = T;
  using Function = engine::InvertThreshold<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    if constexpr (std::is_class_v<T>) {
      return f(o.dst, o.n, std::fabs(o.constant.re));
    } else {
      return f(o.dst, o.n, std::fabs(o.constant));
    }
  }
};

template <class T>
struct NormalizeShape {
  using Element = T;
  using Function = engine::NormalizeShape<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.dst, o.n, o.second_constant, o.constant);
  }
};

template <class T>
struct Ramp {
  using Element = T;
  using Function = engine::Ramp<T>;
  static constexpr int kSources = 0;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.dst, o.n, o.constant, o.second_constant);
  }
};

// Complex sources, real results in the first half of a destination of complex cells.
template <class C>
struct ComplexToReal {
  using Element = C;
  using Function = engine::ComplexToReal<C>;
  static constexpr int kSources = 1;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<C>& o) {
    return f(o.first, reinterpret_cast<engine::RealOf<C>*>(o.dst), o.n);
  }
};

// Interleaved pairs in; magnitudes in the first n floats of the destination, phases in the next n.
struct CartesianToPolar {
  using Element = engine::Complex32;
  using Function = engine::CartesianToPolar;
  static constexpr int kSources = 1;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<Element>& o) {
    float* magnitude = reinterpret_cast<float*>(o.dst);
    float* phase = magnitude && o.n > 0 ? magnitude + o.n : magnitude;
    return f(reinterpret_cast<const float*>(o.first), magnitude, phase, o.n);
  }
};

// Magnitudes and phases from the first n floats of each source; pairs out.
struct PolarToCartesian {
  using Element = engine::Complex32;
  using Function = engine::PolarToCartesian;
  static constexpr int kSources = 2;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kSecond, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<Element>& o) {
    return f(reinterpret_cast<const float*>(o.first), reinterpret_cast<const float*>(o.second),
             reinterpret_cast<float*>(o.dst), o.n);
  }
};

// Windows: the weights depend on the position and the length, so the portable variant runs over
// the whole length.
template <class T>
struct Window {
  using Element = T;
  using Function = engine::Window<T>;
  static constexpr int kSources = 1;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

// The constant is alpha. For Kaiser, the short lengths and the small constants run the window;
// the rest, with |alpha| (N - 1) / 2 above 38, check that both variants refuse it alike.
template <class T>
struct WindowWithParameter {
  using Element = T;
  using Function = engine::WindowWithParameter<T>;
  static constexpr int kSources = 1;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) {
    return f(o.first, o.dst, o.n, o.constant);
  }
};

using engine::CompareBytes;

// ---- Data movement
// -------------------------------------------------------------------------------

template <class T>
struct Copy {
  using Element = T;
  using Function = engine::Copy<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

// Overlaps from either side at shifts of a few elements, and the source as destination.
template <class T>
struct Move {
  using Element = T;
  using Function = engine::Move<T>;
  static constexpr int kSources = 1;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstOverlapsBelowFirst,
                                            Aliasing::kDstOverlapsAboveFirst,
                                            Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

// Results depend on the position: the portable variant runs over the whole length.
template <class T>
struct Reversal {
  using Element = T;
  using Function = engine::Reversal<T>;
  static constexpr int kSources = 1;
  static constexpr bool kWholeLength = true;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone, Aliasing::kDstIsFirst};
  static constexpr Operand kPointers[] = {Operand::kFirst, Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.first, o.dst, o.n); }
};

template <class T>
struct Fill {
  using Element = T;
  using Function = engine::Fill<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kByValue;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.constant, o.dst, o.n); }
};

template <class T>
struct Clear {
  using Element = T;
  using Function = engine::Clear<T>;
  static constexpr int kSources = 0;
  static constexpr Aliasing kAliasings[] = {Aliasing::kNone};
  static constexpr Operand kPointers[] = {Operand::kDst};
  static constexpr ConstantKind kConstant = ConstantKind::kNone;
  static EngStatus Call(Function* f, const Operands<T>& o) { return f(o.dst, o.n); }
};
// ---- Conversions: sources and destinations of different types (ConversionRunner)
// -----------------
using ConversionU8F32 = ElementwiseConversion<engine::ConversionU8F32, conversion_kinds::Plain>;
using ScaledS16F32 = ElementwiseConversion<engine::ScaledS16F32, conversion_kinds::Scaled>;
using ScaledS16F64 = ElementwiseConversion<engine::ScaledS16F64, conversion_kinds::Scaled>;
using ScaledS32F32 = ElementwiseConversion<engine::ScaledS32F32, conversion_kinds::Scaled>;
using ScaledS32F64 = ElementwiseConversion<engine::ScaledS32F64, conversion_kinds::Scaled>;
using ScaledS32S24 = ElementwiseConversion<engine::ScaledS32S24, conversion_kinds::Scaled>;
using RoundedF32U8 = ElementwiseConversion<engine::RoundedF32U8, conversion_kinds::Rounded>;
using RoundedF32S16 = ElementwiseConversion<engine::RoundedF32S16, conversion_kinds::Rounded>;
using RoundedF32S32 = ElementwiseConversion<engine::RoundedF32S32, conversion_kinds::Rounded>;
using RoundedF64S32 = ElementwiseConversion<engine::RoundedF64S32, conversion_kinds::Rounded>;
using ScaledF32S24 = ElementwiseConversion<engine::ScaledF32S24, conversion_kinds::Scaled>;
using RoundedF32S24 = ElementwiseConversion<engine::RoundedF32S24, conversion_kinds::Rounded>;
using ConversionF32F64 = ElementwiseConversion<engine::ConversionF32F64, conversion_kinds::Plain>;
using ConversionF64F32 = ElementwiseConversion<engine::ConversionF64F32, conversion_kinds::Plain>;
using ConversionS24S32 = ElementwiseConversion<engine::ConversionS24S32, conversion_kinds::Plain>;
using ConversionS24F32 = ElementwiseConversion<engine::ConversionS24F32, conversion_kinds::Plain>;
using HalfConversion = ElementwiseConversion<engine::HalfConversion, conversion_kinds::HalfMode>;
using ConversionF16F32 = ElementwiseConversion<engine::ConversionF16F32, conversion_kinds::Plain>;
using DeinterleaveS16 = DeinterleaveConversionDriver<short>;
using DeinterleaveS24 = DeinterleaveConversionDriver<engine::Int24>;
using DeinterleaveS32 = DeinterleaveConversionDriver<int>;
using DeinterleaveF32 = DeinterleaveConversionDriver<float>;
using InterleaveS16 = InterleaveConversionDriver<short>;
using InterleaveS24 = InterleaveConversionDriver<engine::Int24>;
using InterleaveS32 = InterleaveConversionDriver<int>;

// ---- Multirate FIR filter
// Not elementwise: tests/engine/multirate_test.cpp covers it at every level.
using engine::MRFFilter;
using engine::MRFGetSize;
using engine::MRFInit;
// ---- Single-rate FIR filter and lowpass design
// Not elementwise: tests/engine/fir_test.cpp runs them at every level.
using engine::FIRFilter;
using engine::FIRGetSize;
using engine::FIRInit;
using engine::LowpassBufferSize;
using engine::LowpassDesign;
// ---- Matrix product
// Not elementwise: tests/api/matrix_api_test.cpp holds it to a long double product at every level.
using engine::MatrixProduct;

}  // namespace drivers
}  // namespace zal::test::harness
