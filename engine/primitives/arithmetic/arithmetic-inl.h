// The arithmetic kernels, written once against the vector layer. Each reproduces the portable
// variant bit for bit: the same operations in the same order, never fused.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstdint>
#include <type_traits>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

bool IsZeroValue(float x) {
  return x == 0.0f;
}
bool IsZeroValue(double x) {
  return x == 0.0;
}
bool IsZeroValue(Complex32 x) {
  return x.re == 0.0f && x.im == 0.0f;
}
bool IsZeroValue(Complex64 x) {
  return x.re == 0.0 && x.im == 0.0;
}

// x op c for a constant c, broadcast where the kernel runs (the compiler keeps it out of the
// loop): only scalars cross calls, never vectors.
template <class Op, class C>
struct WithConstantOp {
  C c;
  template <class V>
  ZAL_INLINE V operator()(V x) const {
    return Op{}(x, Broadcast(c));
  }
};

// op, with any NaN it passes on made the default NaN (integer results have none).
template <class T, class Op>
ZAL_INLINE auto DefaultNaNs(Op op) {
  if constexpr (std::is_integral_v<T>) {
    return op;
  } else {
    return WithDefaultNaN{op};
  }
}

// Kinds of elementwise kernels. Each runs dst[i] = op(src[i]...) and returns its status.
struct Plain {
  template <bool kLarge, class T, class Op, class... Sources>
  static ZAL_INLINE EngStatus Run(Op op, T* dst, int n, Sources... src) {
    Map<kLarge>(DefaultNaNs<T>(op), dst, n, src...);
    return engStsNoErr;
  }
};

// Division by the first source: completes the whole vector, then warns if any divisor was zero
// (as it was before the call, even where dst overwrites it).
struct Division {
  template <bool kLarge, class T, class Op, class Divisor, class... Others>
  static ZAL_INLINE EngStatus Run(Op divide, T* dst, int n, Divisor divisor, Others... others) {
    typename VectorOf<T>::Mask zero;
    Map<kLarge>(WithDefaultNaN{[divide, &zero](auto d, auto... x) {
                  zero = zero | IsZero(d);
                  return divide(d, x...);
                }},
                dst, n, divisor, others...);
    return AnyLane(zero) ? engStsDivByZero : engStsNoErr;
  }
};

// Division by a constant (a WithConstantOp): warns after the whole vector if it is zero.
struct DivisionByConstant {
  template <bool kLarge, class T, class Op, class... Sources>
  static ZAL_INLINE EngStatus Run(Op op, T* dst, int n, Sources... src) {
    Map<kLarge>(DefaultNaNs<T>(op), dst, n, src...);
    return IsZeroValue(op.c) ? engStsDivByZero : engStsNoErr;
  }
};

// Vectors large enough to stream run in a function of their own, reached by a tail call: the
// threshold lookup it may call would otherwise cost every small call a stack frame.
template <class Kind, class T, class Op, class... Sources>
ZAL_NOINLINE EngStatus RunLarge(Op op, T* dst, int n, Sources... src) {
  return Kind::template Run<true>(op, dst, n, src...);
}

template <class Kind = Plain, class T, class Op, class... Sources>
ZAL_INLINE EngStatus Each(Op op, T* dst, int n, Sources... src) {
  if (const EngStatus status = Check(n, src..., dst)) return status;
  if (MayStream<T>(n)) return RunLarge<Kind>(op, dst, n, src...);
  return Kind::template Run<false>(op, dst, n, src...);
}

template <class Kind = Plain, class T, class Op>
ZAL_INLINE EngStatus EachWith(Op, const T* src, T c, T* dst, int n) {
  return Each<Kind>(WithConstantOp<Op, T>{c}, dst, n, src);
}

constexpr auto kAdd = [](auto a, auto b) { return a + b; };
constexpr auto kSubFromSecond = [](auto a, auto b) { return b - a; };
constexpr auto kMul = [](auto a, auto b) { return a * b; };
constexpr auto kDivSecond = [](auto a, auto b) { return b / a; };
constexpr auto kAddProduct = [](auto a, auto b, auto d) { return d + a * b; };
constexpr auto kSubConstant = [](auto s, auto c) { return s - c; };
constexpr auto kDivByConstant = [](auto s, auto c) { return s / c; };

// Division takes complex elements two registers at a time (see Paired), so that one division
// serves both; real ones as they are.
template <class T>
ZAL_INLINE auto ForDivision(T* p) {
  if constexpr (std::is_class_v<T>) {
    return InPairs(p);
  } else {
    return p;
  }
}

// dst = dividends / divisors.
template <class T>
ZAL_INLINE EngStatus Quotients(const T* divisors, const T* dividends, T* dst, int n) {
  return Each<Division>(kDivSecond, ForDivision(dst), n, ForDivision(divisors),
                        ForDivision(dividends));
}

// x / c for a complex constant c: 1 / (rr + ss) once, in the portable variant's order, then each
// quotient is its numerator times that, the bits a vector of divisors gives.
template <class C>
struct ComplexQuotientOp {
  explicit ComplexQuotientOp(C divisor)
      : c(divisor), reciprocal_norm(1 / (c.re * c.re + c.im * c.im)) {}
  template <class V>
  ZAL_INLINE V operator()(V x) const {
    return QuotientNumerator(x, Broadcast(c)) * Broadcast(reciprocal_norm);
  }
  C c;
  decltype(C::re) reciprocal_norm;
};

// The operation x / c, for DivisionByConstant.
template <class T>
ZAL_INLINE auto QuotientByConstant(T c) {
  if constexpr (std::is_class_v<T>) {
    return ComplexQuotientOp<T>(c);
  } else {
    return WithConstantOp<decltype(kDivByConstant), T>{c};
  }
}

}  // namespace

#define ZAL_ARITHMETIC_KERNELS(T, E)                             \
  EngStatus Add##E(const T* a, const T* b, T* d, int n) {        \
    return Each(kAdd, d, n, a, b);                               \
  }                                                              \
  EngStatus Sub##E(const T* a, const T* b, T* d, int n) {        \
    return Each(kSubFromSecond, d, n, a, b);                     \
  }                                                              \
  EngStatus Mul##E(const T* a, const T* b, T* d, int n) {        \
    return Each(kMul, d, n, a, b);                               \
  }                                                              \
  EngStatus Div##E(const T* a, const T* b, T* d, int n) {        \
    return Quotients(a, b, d, n);                                \
  }                                                              \
  EngStatus AddProduct##E(const T* a, const T* b, T* d, int n) { \
    return Each(kAddProduct, d, n, a, b, d);                     \
  }                                                              \
  EngStatus Sub##E##InPlace(const T* s, T* d, int n) {           \
    return Each(kSubFromSecond, d, n, s, d);                     \
  }                                                              \
  EngStatus Mul##E##InPlace(const T* s, T* d, int n) {           \
    return Each(kMul, d, n, s, d);                               \
  }                                                              \
  EngStatus Div##E##InPlace(const T* s, T* d, int n) {           \
    return Quotients(s, d, d, n);                                \
  }

#define ZAL_CONSTANT_KERNELS(T, E, ConstantType, value)                     \
  EngStatus AddConstant##E(const T* s, ConstantType c, T* d, int n) {       \
    if (!(value)) return engStsNullPtrErr;                                  \
    return EachWith(kAdd, s, *(value), d, n);                               \
  }                                                                         \
  EngStatus SubConstant##E(const T* s, ConstantType c, T* d, int n) {       \
    if (!(value)) return engStsNullPtrErr;                                  \
    return EachWith(kSubConstant, s, *(value), d, n);                       \
  }                                                                         \
  EngStatus SubConstantRev##E(const T* s, ConstantType c, T* d, int n) {    \
    if (!(value)) return engStsNullPtrErr;                                  \
    return EachWith(kSubFromSecond, s, *(value), d, n);                     \
  }                                                                         \
  EngStatus MulConstant##E(const T* s, ConstantType c, T* d, int n) {       \
    if (!(value)) return engStsNullPtrErr;                                  \
    return EachWith(kMul, s, *(value), d, n);                               \
  }                                                                         \
  EngStatus DivConstant##E(const T* s, ConstantType c, T* d, int n) {       \
    if (!(value)) return engStsNullPtrErr;                                  \
    return Each<DivisionByConstant>(QuotientByConstant(*(value)), d, n, s); \
  }                                                                         \
  EngStatus AddConstant##E##InPlace(ConstantType c, T* d, int n) {          \
    return AddConstant##E(d, c, d, n);                                      \
  }                                                                         \
  EngStatus SubConstant##E##InPlace(ConstantType c, T* d, int n) {          \
    return SubConstant##E(d, c, d, n);                                      \
  }                                                                         \
  EngStatus SubConstantRev##E##InPlace(ConstantType c, T* d, int n) {       \
    return SubConstantRev##E(d, c, d, n);                                   \
  }                                                                         \
  EngStatus MulConstant##E##InPlace(ConstantType c, T* d, int n) {          \
    return MulConstant##E(d, c, d, n);                                      \
  }                                                                         \
  EngStatus DivConstant##E##InPlace(ConstantType c, T* d, int n) {          \
    return DivConstant##E(d, c, d, n);                                      \
  }

ZAL_ARITHMETIC_KERNELS(float, F32)
ZAL_ARITHMETIC_KERNELS(double, F64)
ZAL_ARITHMETIC_KERNELS(Complex32, C32)
ZAL_ARITHMETIC_KERNELS(Complex64, C64)
ZAL_CONSTANT_KERNELS(float, F32, float, &c)
ZAL_CONSTANT_KERNELS(double, F64, double, &c)
ZAL_CONSTANT_KERNELS(Complex32, C32, Complex32, &c)
ZAL_CONSTANT_KERNELS(Complex64, C64, const Complex64*, c)

#undef ZAL_ARITHMETIC_KERNELS
#undef ZAL_CONSTANT_KERNELS

EngStatus AddF64InPlace(const double* s, double* d, int n) {
  return Each(kAdd, d, n, s, d);
}
EngStatus AddC32InPlace(const Complex32* s, Complex32* d, int n) {
  return Each(kAdd, d, n, s, d);
}
EngStatus AddC64InPlace(const Complex64* s, Complex64* d, int n) {
  return Each(kAdd, d, n, s, d);
}

EngStatus AddConstantProductF32(const float* s, float c, float* d, int n) {
  return Each([c](VF32 x, VF32 acc) { return kAddProduct(x, Broadcast(c), acc); }, d, n, s, d);
}

EngStatus DivConstantRevF32(const float* s, float c, float* d, int n) {
  return Each<Division>([c](VF32 divisor) { return Broadcast(c) / divisor; }, d, n, s);
}

// Rounds to nearest with ties to even and saturates; a negative scale enlarges.
EngStatus MulConstantScaledS16(const short* s, short c, short* d, int n, int scale) {
  if (scale > 0) {
    // |product| <= 2^30: every shift from 31 on gives 0, and 31 itself still computes it.
    const int shift = scale > 31 ? 31 : scale;
    return Each(
        [c, shift](VS16 x) {
          // Adding half - 1, plus 1 when the floored quotient is odd, carries into the quotient
          // exactly when the remainder passes half, or meets it with an odd quotient.
          const VS32 bias = Broadcast(static_cast<std::int32_t>((1u << (shift - 1)) - 1));
          const VS32 one = Broadcast(std::int32_t{1});
          const auto round = [bias, one, shift](VS32 p) {
            return ShiftRightArithmetic(p + bias + (ShiftRightArithmetic(p, shift) & one), shift);
          };
          const VS32Pair p = MulWide(x, Broadcast(c));
          return PackSat({round(p.lo), round(p.hi)});
        },
        d, n, s);
  }
  if (scale < 0) {
    // Once saturated to 16 bits, a nonzero product saturates again after 16 doublings at most.
    const int doublings = scale < -16 ? 16 : -scale;
    return Each(
        [c, doublings](VS16 x) {
          const VS32Pair p = Widen(PackSat(MulWide(x, Broadcast(c))));
          return PackSat({ShiftLeft(p.lo, doublings), ShiftLeft(p.hi, doublings)});
        },
        d, n, s);
  }
  return Each([c](VS16 x) { return PackSat(MulWide(x, Broadcast(c))); }, d, n, s);
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_ARITHMETIC_PRIMITIVES(ZAL_CHECK_SHAPE)
