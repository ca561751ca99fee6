// How the harness calls each shape: the vector sources it reads, the aliasings it allows, its
// pointer arguments in signature order, how it takes a constant, and the call itself. A new
// shape needs one driver here and nothing else.
#pragma once

#include "engine/core/shapes.h"
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
};

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

}  // namespace drivers
}  // namespace zal::test::harness
