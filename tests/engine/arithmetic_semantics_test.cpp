// The decisions of the arithmetic primitives, through the dispatched engine at the run's level:
// operand roles, accumulation, in-place forms, the rounding and saturation of the scaled int16
// product, complex accuracy, zero divisors, and IEEE specials under every denormal mode.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/core/fp_support.h"
#include "tests/engine/harness/elements.h"
#include "tests/engine/harness/fp_environment.h"

namespace zal::engine {
namespace {

using test::harness::FpModes;
using test::harness::kDenormalsAreZero;
using test::harness::kFlushToZero;
using test::harness::SameBits;
using test::harness::Show;

// Enough copies of a case to fill whole registers at every level and leave a partial tail.
constexpr int kCopies = 37;

// The dispatched primitives of one element type under common names. Constants are passed by
// value here; the double complex primitives read theirs through a pointer.
template <class T>
struct Ops;

#define ZAL_VECTOR_OPS(E)                                        \
  static constexpr auto& Add = dispatch::Add##E;                 \
  static constexpr auto& Sub = dispatch::Sub##E;                 \
  static constexpr auto& Mul = dispatch::Mul##E;                 \
  static constexpr auto& Div = dispatch::Div##E;                 \
  static constexpr auto& AddProduct = dispatch::AddProduct##E;   \
  static constexpr auto& SubInPlace = dispatch::Sub##E##InPlace; \
  static constexpr auto& MulInPlace = dispatch::Mul##E##InPlace; \
  static constexpr auto& DivInPlace = dispatch::Div##E##InPlace;

#define ZAL_BY_VALUE_CONSTANT_OPS(E)                                                   \
  static constexpr auto& AddConstant = dispatch::AddConstant##E;                       \
  static constexpr auto& SubConstant = dispatch::SubConstant##E;                       \
  static constexpr auto& SubConstantRev = dispatch::SubConstantRev##E;                 \
  static constexpr auto& MulConstant = dispatch::MulConstant##E;                       \
  static constexpr auto& DivConstant = dispatch::DivConstant##E;                       \
  static constexpr auto& AddConstantInPlace = dispatch::AddConstant##E##InPlace;       \
  static constexpr auto& SubConstantInPlace = dispatch::SubConstant##E##InPlace;       \
  static constexpr auto& SubConstantRevInPlace = dispatch::SubConstantRev##E##InPlace; \
  static constexpr auto& MulConstantInPlace = dispatch::MulConstant##E##InPlace;       \
  static constexpr auto& DivConstantInPlace = dispatch::DivConstant##E##InPlace;

#define ZAL_BY_REFERENCE_CONSTANT_OP(Name, T, E)        \
  static EngStatus Name(const T* s, T c, T* d, int n) { \
    return dispatch::Name##E(s, &c, d, n);              \
  }                                                     \
  static EngStatus Name##InPlace(T c, T* d, int n) {    \
    return dispatch::Name##E##InPlace(&c, d, n);        \
  }

template <>
struct Ops<float> {
  ZAL_VECTOR_OPS(F32)
  ZAL_BY_VALUE_CONSTANT_OPS(F32)
  // The float sum has no in-place primitive: the destination is also the second operand.
  static EngStatus AddInPlace(const float* s, float* d, int n) {
    return dispatch::AddF32(s, d, d, n);
  }
};
template <>
struct Ops<double> {
  ZAL_VECTOR_OPS(F64)
  ZAL_BY_VALUE_CONSTANT_OPS(F64)
  static constexpr auto& AddInPlace = dispatch::AddF64InPlace;
};
template <>
struct Ops<Complex32> {
  ZAL_VECTOR_OPS(C32)
  ZAL_BY_VALUE_CONSTANT_OPS(C32)
  static constexpr auto& AddInPlace = dispatch::AddC32InPlace;
};
template <>
struct Ops<Complex64> {
  ZAL_VECTOR_OPS(C64)
  ZAL_BY_REFERENCE_CONSTANT_OP(AddConstant, Complex64, C64)
  ZAL_BY_REFERENCE_CONSTANT_OP(SubConstant, Complex64, C64)
  ZAL_BY_REFERENCE_CONSTANT_OP(SubConstantRev, Complex64, C64)
  ZAL_BY_REFERENCE_CONSTANT_OP(MulConstant, Complex64, C64)
  ZAL_BY_REFERENCE_CONSTANT_OP(DivConstant, Complex64, C64)
  static constexpr auto& AddInPlace = dispatch::AddC64InPlace;
};

#undef ZAL_VECTOR_OPS
#undef ZAL_BY_VALUE_CONSTANT_OPS
#undef ZAL_BY_REFERENCE_CONSTANT_OP

template <class T>
constexpr bool kIsComplex = std::is_same_v<T, Complex32> || std::is_same_v<T, Complex64>;

template <class T>
T Make(double re, double im = 0) {
  if constexpr (kIsComplex<T>) {
    using F = decltype(T::re);
    return {static_cast<F>(re), static_cast<F>(im)};
  } else {
    return static_cast<T>(re);
  }
}

// Complex values get -re / 2 as their imaginary part, so that both halves take part.
template <class T>
std::vector<T> Values(std::initializer_list<double> re) {
  std::vector<T> values;
  for (double x : re) values.push_back(Make<T>(x, -x / 2));
  return values;
}

template <class T>
void ExpectSame(const std::vector<T>& expected, const std::vector<T>& got) {
  ASSERT_EQ(expected.size(), got.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_TRUE(SameBits(expected[i], got[i]))
        << "element " << i << ": expected " << Show(expected[i]) << ", got " << Show(got[i]);
  }
}

// -- Operand roles ---------------------------------------------------------------------------

template <class T>
class ArithmeticRoles : public testing::Test {};
using ElementTypes = testing::Types<float, double, Complex32, Complex64>;
TYPED_TEST_SUITE(ArithmeticRoles, ElementTypes);

TYPED_TEST(ArithmeticRoles, SubtractsFirstFromSecond) {
  using T = TypeParam;
  const std::vector<T> a = Values<T>({1, 2, 3});
  const std::vector<T> b = Values<T>({10, 20, 30});
  std::vector<T> dst(3);
  EXPECT_EQ(Ops<T>::Sub(a.data(), b.data(), dst.data(), 3), engStsNoErr);
  ExpectSame(Values<T>({9, 18, 27}), dst);

  std::vector<T> src_dst = b;
  EXPECT_EQ(Ops<T>::SubInPlace(a.data(), src_dst.data(), 3), engStsNoErr);
  ExpectSame(Values<T>({9, 18, 27}), src_dst);
}

TYPED_TEST(ArithmeticRoles, DividesSecondByFirst) {
  using T = TypeParam;
  const std::vector<T> a = {Make<T>(2), Make<T>(4)};
  const std::vector<T> b = {Make<T>(10), Make<T>(20)};
  std::vector<T> dst(2);
  EXPECT_EQ(Ops<T>::Div(a.data(), b.data(), dst.data(), 2), engStsNoErr);
  ExpectSame({Make<T>(5), Make<T>(5)}, dst);

  std::vector<T> src_dst = b;
  EXPECT_EQ(Ops<T>::DivInPlace(a.data(), src_dst.data(), 2), engStsNoErr);
  ExpectSame({Make<T>(5), Make<T>(5)}, src_dst);
}

TYPED_TEST(ArithmeticRoles, ConstantFormsTakeTheConstantAsNamed) {
  using T = TypeParam;
  const std::vector<T> src = Values<T>({3, -0.5, 8});
  std::vector<T> dst(3);
  // src - 1, 1 - src and src / 2 (imaginary parts are dropped for real data).
  EXPECT_EQ(Ops<T>::SubConstant(src.data(), Make<T>(1), dst.data(), 3), engStsNoErr);
  ExpectSame({Make<T>(2, -1.5), Make<T>(-1.5, 0.25), Make<T>(7, -4)}, dst);
  EXPECT_EQ(Ops<T>::SubConstantRev(src.data(), Make<T>(1), dst.data(), 3), engStsNoErr);
  ExpectSame({Make<T>(-2, 1.5), Make<T>(1.5, -0.25), Make<T>(-7, 4)}, dst);
  EXPECT_EQ(Ops<T>::DivConstant(src.data(), Make<T>(2), dst.data(), 3), engStsNoErr);
  ExpectSame({Make<T>(1.5, -0.75), Make<T>(-0.25, 0.125), Make<T>(4, -2)}, dst);
}

TYPED_TEST(ArithmeticRoles, AddProductAccumulatesIntoTheDestination) {
  using T = TypeParam;
  const std::vector<T> a = Values<T>({1, 2, 3});
  const std::vector<T> b = {Make<T>(4), Make<T>(5), Make<T>(6)};
  std::vector<T> dst = {Make<T>(100), Make<T>(200), Make<T>(300)};
  EXPECT_EQ(Ops<T>::AddProduct(a.data(), b.data(), dst.data(), 3), engStsNoErr);
  ExpectSame({Make<T>(104, -2), Make<T>(210, -5), Make<T>(318, -9)}, dst);

  std::vector<T> zeroed(3, Make<T>(0));
  EXPECT_EQ(Ops<T>::AddProduct(a.data(), b.data(), zeroed.data(), 3), engStsNoErr);
  std::vector<T> product(3);
  EXPECT_EQ(Ops<T>::Mul(a.data(), b.data(), product.data(), 3), engStsNoErr);
  ExpectSame(product, zeroed);
}

TEST(ArithmeticRoles, DivConstantRevOfOneGivesReciprocals) {
  const std::vector<float> src = {3.0f, -7.0f, 0.1f, 1e-30f, -65504.0f, 0.5f, 1.0f / 3.0f};
  std::vector<float> dst(src.size());
  ASSERT_EQ(dispatch::DivConstantRevF32(src.data(), 1.0f, dst.data(), static_cast<int>(src.size())),
            engStsNoErr);
  for (std::size_t i = 0; i < src.size(); ++i) EXPECT_EQ(dst[i], 1.0f / src[i]) << src[i];
}

TEST(ArithmeticRoles, AddConstantProductAccumulatesTheScaledSource) {
  const std::vector<float> src = {1, 2, 3};
  std::vector<float> dst = {10, 20, 30};
  ASSERT_EQ(dispatch::AddConstantProductF32(src.data(), 0.5f, dst.data(), 3), engStsNoErr);
  ExpectSame({10.5f, 21.0f, 31.5f}, dst);
}

// -- In place and out of place ----------------------------------------------------------------

// One in-place primitive and the out-of-place one it must agree with bit for bit.
template <class T>
struct InPlacePair {
  const char* name;
  std::function<EngStatus(T* src_dst, int n)> in_place;
  std::function<EngStatus(const T* src, T* dst, int n)> out_of_place;
};

template <class T>
std::vector<InPlacePair<T>> InPlacePairs(const T* other, T c) {
  using O = Ops<T>;
  return {
      {"Add", [=](T* d, int n) { return O::AddInPlace(other, d, n); },
       [=](const T* s, T* d, int n) { return O::Add(other, s, d, n); }},
      {"Sub", [=](T* d, int n) { return O::SubInPlace(other, d, n); },
       [=](const T* s, T* d, int n) { return O::Sub(other, s, d, n); }},
      {"Mul", [=](T* d, int n) { return O::MulInPlace(other, d, n); },
       [=](const T* s, T* d, int n) { return O::Mul(other, s, d, n); }},
      {"Div", [=](T* d, int n) { return O::DivInPlace(other, d, n); },
       [=](const T* s, T* d, int n) { return O::Div(other, s, d, n); }},
      {"AddConstant", [=](T* d, int n) { return O::AddConstantInPlace(c, d, n); },
       [=](const T* s, T* d, int n) { return O::AddConstant(s, c, d, n); }},
      {"SubConstant", [=](T* d, int n) { return O::SubConstantInPlace(c, d, n); },
       [=](const T* s, T* d, int n) { return O::SubConstant(s, c, d, n); }},
      {"SubConstantRev", [=](T* d, int n) { return O::SubConstantRevInPlace(c, d, n); },
       [=](const T* s, T* d, int n) { return O::SubConstantRev(s, c, d, n); }},
      {"MulConstant", [=](T* d, int n) { return O::MulConstantInPlace(c, d, n); },
       [=](const T* s, T* d, int n) { return O::MulConstant(s, c, d, n); }},
      {"DivConstant", [=](T* d, int n) { return O::DivConstantInPlace(c, d, n); },
       [=](const T* s, T* d, int n) { return O::DivConstant(s, c, d, n); }},
  };
}

template <class T>
std::vector<T> Ramp(int n, double start, double step) {
  std::vector<T> values;
  for (int i = 0; i < n; ++i) {
    const double x = start + step * i;
    values.push_back(Make<T>(x, 1 / (x + 0.25)));
  }
  return values;
}

TYPED_TEST(ArithmeticRoles, InPlaceFormsMatchOutOfPlace) {
  using T = TypeParam;
  constexpr int kLength = 131;
  const std::vector<T> other = Ramp<T>(kLength, -3.7, 0.061);
  const std::vector<T> data = Ramp<T>(kLength, 5.3, -0.083);
  for (const InPlacePair<T>& pair : InPlacePairs(other.data(), Make<T>(0.3, -1.7))) {
    SCOPED_TRACE(pair.name);
    std::vector<T> in_place = data;
    std::vector<T> out_of_place(kLength);
    EXPECT_EQ(pair.in_place(in_place.data(), kLength),
              pair.out_of_place(data.data(), out_of_place.data(), kLength));
    ExpectSame(out_of_place, in_place);
  }
}

TEST(ArithmeticRoles, ScaledInt16InPlaceMatchesOutOfPlace) {
  std::vector<short> data;
  for (int i = 0; i < 131; ++i) data.push_back(static_cast<short>(i * 499 - 32768));
  for (int scale : {-3, 0, 5, 16}) {
    std::vector<short> out_of_place(data.size());
    std::vector<short> in_place = data;
    dispatch::MulConstantScaledS16(data.data(), -1234, out_of_place.data(), 131, scale);
    dispatch::MulConstantScaledS16(in_place.data(), -1234, in_place.data(), 131, scale);
    EXPECT_EQ(in_place, out_of_place) << "scale " << scale;
  }
}

// -- The scaled int16 product -----------------------------------------------------------------

struct ScaledCase {
  short src;
  short c;
  int scale;
  short expected;  // src * c / 2^scale, rounded to nearest with ties to even, saturated
};

constexpr ScaledCase kScaledCases[] = {
    // Ties go to the even neighbour, on both sides of zero.
    {3, 1, 1, 2},
    {5, 1, 1, 2},
    {-3, 1, 1, -2},
    {-5, 1, 1, -2},
    {6, 1, 2, 2},
    {10, 1, 2, 2},
    {-6, 1, 2, -2},
    {-10, 1, 2, -2},
    {3, 16384, 15, 2},
    {5, 16384, 15, 2},
    {-3, 16384, 15, -2},
    {-5, 16384, 15, -2},
    // Off the tie, to nearest.
    {7, 1, 2, 2},
    {-7, 1, 2, -2},
    {5, 1, 2, 1},
    {-5, 1, 2, -1},
    {32767, 32767, 16, 16383},
    {32767, 32767, 15, 32766},
    {-32768, 32767, 15, -32767},
    {-32768, 32767, 30, -1},
    {-32768, 32767, 31, 0},
    // -32768 * -32768 = 2^30: the quotient by 2^31 is exactly one half.
    {-32768, -32768, 31, 0},
    {-32768, -32768, 30, 1},
    {-32768, -32768, 17, 8192},
    {-32768, -32768, 32, 0},
    {-32768, -32768, 100, 0},
    {-32768, -32768, INT_MAX, 0},
    // Saturation at both ends.
    {-32768, -32768, 15, 32767},
    {-32768, -1, 0, 32767},
    {32767, 2, 0, 32767},
    {-32768, 2, 0, -32768},
    {200, 200, 0, 32767},
    {-200, 200, 0, -32768},
    {100, 200, 0, 20000},
    // Negative scales enlarge, and saturate.
    {3, 5, -2, 60},
    {1, 1, -14, 16384},
    {1, 1, -15, 32767},
    {-1, 1, -15, -32768},
    {1000, 100, -1, 32767},
    {1, 1, -40, 32767},
    {-1, 1, -40, -32768},
    {0, 32767, -40, 0},
    {1, 1, INT_MIN, 32767},
    {-1, 1, INT_MIN, -32768},
    {0, -32768, INT_MIN, 0},
};

TEST(ScaledInt16Product, RoundsTiesToEvenAndSaturates) {
  for (const ScaledCase& c : kScaledCases) {
    SCOPED_TRACE(std::to_string(c.src) + " * " + std::to_string(c.c) + " / 2^" +
                 std::to_string(c.scale));
    const std::vector<short> src(kCopies, c.src);
    std::vector<short> dst(kCopies);
    ASSERT_EQ(dispatch::MulConstantScaledS16(src.data(), c.c, dst.data(), kCopies, c.scale),
              engStsNoErr);
    EXPECT_EQ(dst, std::vector<short>(kCopies, c.expected));
  }
}

// -- Complex products and quotients -----------------------------------------------------------

template <class C>
class ComplexAccuracy : public testing::Test {};
using ComplexTypes = testing::Types<Complex32, Complex64>;
TYPED_TEST_SUITE(ComplexAccuracy, ComplexTypes);

struct Wide {
  long double re;
  long double im;
};

template <class C>
Wide Widen(C x) {
  return {x.re, x.im};
}
Wide Times(Wide a, Wide b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
Wide Over(Wide a, Wide b) {
  const long double den = b.re * b.re + b.im * b.im;
  return {(a.re * b.re + a.im * b.im) / den, (a.im * b.re - a.re * b.im) / den};
}
long double Magnitude(Wide x) {
  return std::sqrt(x.re * x.re + x.im * x.im);
}

// Deterministic operands over several magnitudes and both signs.
template <class C>
std::vector<C> ComplexOperands(int n, unsigned seed) {
  std::vector<C> values;
  unsigned state = seed;
  auto next = [&state] {
    state = state * 1664525u + 1013904223u;
    const double unit = (state >> 8) / 16777216.0;
    return (unit - 0.5) * std::ldexp(1.0, static_cast<int>(state % 13) - 6);
  };
  for (int i = 0; i < n; ++i) {
    const double re = next();
    values.push_back(Make<C>(re, next()));
  }
  return values;
}

// Normwise: |got - exact| within `ulps` units of the precision's epsilon, relative to |exact|.
template <class C>
void ExpectNear(Wide exact, C got, double ulps) {
  using F = decltype(C::re);
  const Wide error = {got.re - exact.re, got.im - exact.im};
  const long double bound = ulps * std::numeric_limits<F>::epsilon() * Magnitude(exact);
  EXPECT_LE(Magnitude(error), bound) << "exact " << static_cast<double>(exact.re) << " + i "
                                     << static_cast<double>(exact.im) << ", got " << Show(got);
}

// The textbook formulas: the product's normwise error stays within sqrt(5) units of rounding,
// the quotient's within a few more.
constexpr double kProductUlps = 2;
constexpr double kQuotientUlps = 4;

TYPED_TEST(ComplexAccuracy, ProductsAndQuotientsMatchAWiderOracle) {
  using C = TypeParam;
  constexpr int kLength = 257;
  const std::vector<C> a = ComplexOperands<C>(kLength, 7);
  const std::vector<C> b = ComplexOperands<C>(kLength, 11);
  std::vector<C> product(kLength);
  std::vector<C> quotient(kLength);
  std::vector<C> by_constant(kLength);
  std::vector<C> over_constant(kLength);
  ASSERT_EQ(Ops<C>::Mul(a.data(), b.data(), product.data(), kLength), engStsNoErr);
  ASSERT_EQ(Ops<C>::Div(a.data(), b.data(), quotient.data(), kLength), engStsNoErr);
  ASSERT_EQ(Ops<C>::MulConstant(b.data(), a[0], by_constant.data(), kLength), engStsNoErr);
  ASSERT_EQ(Ops<C>::DivConstant(b.data(), a[0], over_constant.data(), kLength), engStsNoErr);
  for (int i = 0; i < kLength; ++i) {
    SCOPED_TRACE("element " + std::to_string(i));
    ExpectNear(Times(Widen(a[i]), Widen(b[i])), product[i], kProductUlps);
    ExpectNear(Over(Widen(b[i]), Widen(a[i])), quotient[i], kQuotientUlps);
    ExpectNear(Times(Widen(b[i]), Widen(a[0])), by_constant[i], kProductUlps);
    ExpectNear(Over(Widen(b[i]), Widen(a[0])), over_constant[i], kQuotientUlps);
  }
}

TYPED_TEST(ComplexAccuracy, SmallIntegerCasesAreExact) {
  using C = TypeParam;
  const std::vector<C> a(kCopies, Make<C>(1, 2));
  const std::vector<C> b(kCopies, Make<C>(3, 4));
  std::vector<C> product(kCopies);
  ASSERT_EQ(Ops<C>::Mul(a.data(), b.data(), product.data(), kCopies), engStsNoErr);
  ExpectSame(std::vector<C>(kCopies, Make<C>(-5, 10)), product);

  std::vector<C> quotient(kCopies);
  ASSERT_EQ(Ops<C>::Div(b.data(), product.data(), quotient.data(), kCopies), engStsNoErr);
  ExpectSame(a, quotient);
  ASSERT_EQ(Ops<C>::DivConstant(product.data(), Make<C>(3, 4), quotient.data(), kCopies),
            engStsNoErr);
  ExpectSame(a, quotient);
  ASSERT_EQ(Ops<C>::MulConstant(a.data(), Make<C>(3, 4), product.data(), kCopies), engStsNoErr);
  ExpectSame(std::vector<C>(kCopies, Make<C>(-5, 10)), product);
}

// -- Zero divisors ----------------------------------------------------------------------------

template <class T>
class ZeroDivisors : public testing::Test {};
TYPED_TEST_SUITE(ZeroDivisors, ElementTypes);

bool IsZero(Complex32 x) {
  return x.re == 0 && x.im == 0;
}
bool IsZero(Complex64 x) {
  return x.re == 0 && x.im == 0;
}

// Every element written: real data gets the IEEE quotient, zero divisors included; complex
// data gets the quotient to a few ulps, and NaN in both parts where the divisor is zero (a zero
// numerator times the infinite reciprocal of the zero norm).
template <class T>
void ExpectQuotients(const std::vector<T>& dividends, const std::vector<T>& divisors,
                     const std::vector<T>& got) {
  for (std::size_t i = 0; i < got.size(); ++i) {
    SCOPED_TRACE("element " + std::to_string(i));
    if constexpr (kIsComplex<T>) {
      if (IsZero(divisors[i])) {
        EXPECT_TRUE(std::isnan(got[i].re) && std::isnan(got[i].im)) << Show(got[i]);
      } else {
        ExpectNear(Over(Widen(dividends[i]), Widen(divisors[i])), got[i], kQuotientUlps);
      }
    } else {
      const T expected = dividends[i] / divisors[i];
      EXPECT_TRUE(SameBits(expected, got[i]))
          << "expected " << Show(expected) << ", got " << Show(got[i]);
    }
  }
}

// 45 quotients with zero divisors of both signs, early and late in the vector.
template <class T>
struct DivisionData {
  std::vector<T> dividends = Ramp<T>(45, -11, 0.5);
  std::vector<T> divisors = Ramp<T>(45, 3.5, 0.25);
  explicit DivisionData(bool with_zeros) {
    dividends[9] = Make<T>(0);  // 0 / 0
    if (!with_zeros) return;
    divisors[1] = Make<T>(0);
    divisors[9] = Make<T>(0);
    divisors[40] = Make<T>(-0.0, -0.0);
  }
};

TYPED_TEST(ZeroDivisors, VectorDivisorsWarnAfterWritingEveryQuotient) {
  using T = TypeParam;
  for (bool with_zeros : {true, false}) {
    SCOPED_TRACE(with_zeros ? "zero divisors" : "no zero divisor, a zero dividend");
    const DivisionData<T> data(with_zeros);
    const int n = static_cast<int>(data.divisors.size());
    const EngStatus expected = with_zeros ? engStsDivByZero : engStsNoErr;

    std::vector<T> dst(data.divisors.size(), Make<T>(123));
    EXPECT_EQ(Ops<T>::Div(data.divisors.data(), data.dividends.data(), dst.data(), n), expected);
    ExpectQuotients(data.dividends, data.divisors, dst);

    std::vector<T> src_dst = data.dividends;
    EXPECT_EQ(Ops<T>::DivInPlace(data.divisors.data(), src_dst.data(), n), expected);
    ExpectQuotients(data.dividends, data.divisors, src_dst);

    // The warning concerns the divisors as given, even where the quotients overwrite them.
    std::vector<T> divisors_then_quotients = data.divisors;
    EXPECT_EQ(Ops<T>::Div(divisors_then_quotients.data(), data.dividends.data(),
                          divisors_then_quotients.data(), n),
              expected);
    ExpectQuotients(data.dividends, data.divisors, divisors_then_quotients);
  }
}

TYPED_TEST(ZeroDivisors, ConstantZeroOfEitherSignWarnsAfterWritingEveryQuotient) {
  using T = TypeParam;
  const DivisionData<T> data(false);
  const int n = static_cast<int>(data.dividends.size());
  std::vector<T> zeros = {Make<T>(0), Make<T>(-0.0, -0.0)};
  if constexpr (kIsComplex<T>) zeros.push_back(Make<T>(0, -0.0));
  for (T zero : zeros) {
    SCOPED_TRACE(Show(zero));
    const std::vector<T> divisors(data.dividends.size(), zero);
    std::vector<T> dst(data.dividends.size(), Make<T>(123));
    EXPECT_EQ(Ops<T>::DivConstant(data.dividends.data(), zero, dst.data(), n), engStsDivByZero);
    ExpectQuotients(data.dividends, divisors, dst);

    std::vector<T> src_dst = data.dividends;
    EXPECT_EQ(Ops<T>::DivConstantInPlace(zero, src_dst.data(), n), engStsDivByZero);
    ExpectQuotients(data.dividends, divisors, src_dst);
  }
}

TEST(ZeroDivisors, ReciprocalsOfZeroWarnAfterWritingEveryQuotient) {
  DivisionData<float> data(true);
  const int n = static_cast<int>(data.divisors.size());
  const std::vector<float> ones(data.divisors.size(), 1.0f);
  std::vector<float> dst(data.divisors.size(), 123.0f);
  EXPECT_EQ(dispatch::DivConstantRevF32(data.divisors.data(), 1.0f, dst.data(), n),
            engStsDivByZero);
  ExpectQuotients(ones, data.divisors, dst);

  std::vector<float> in_place = data.divisors;
  EXPECT_EQ(dispatch::DivConstantRevF32(in_place.data(), 1.0f, in_place.data(), n),
            engStsDivByZero);
  ExpectQuotients(ones, data.divisors, in_place);
}

// -- IEEE specials under every denormal mode --------------------------------------------------

enum class Op { kAdd, kSub, kMul, kDiv };

// Indexed by mode: default, FTZ, DAZ, FTZ and DAZ.
constexpr unsigned kModes[] = {0, kFlushToZero, kDenormalsAreZero,
                               kFlushToZero | kDenormalsAreZero};

template <class F>
struct IeeeCase {
  const char* name;
  Op op;
  F first;
  F second;  // the result is second - first, second / first
  std::array<F, 4> expected;
  std::array<EngStatus, 4> status;
};

template <class F>
std::vector<IeeeCase<F>> IeeeCases() {
  using L = std::numeric_limits<F>;
  const F inf = L::infinity();
  // Every NaN computed is the default NaN, whatever NaN the operands held.
  const F nan = -L::quiet_NaN();
  using Bits = std::conditional_t<sizeof(F) == 4, std::uint32_t, std::uint64_t>;
  const F nan_one = std::bit_cast<F>(static_cast<Bits>(std::bit_cast<Bits>(L::quiet_NaN()) | 1));
  const F nan_two = -std::bit_cast<F>(static_cast<Bits>(std::bit_cast<Bits>(L::quiet_NaN()) | 2));
  const F min = L::min();
  const F tiny = L::denorm_min() * 4;  // a denormal operand
  const F lift = std::ldexp(F{1}, L::digits);
  constexpr std::array<EngStatus, 4> kOk = {};
  constexpr std::array<EngStatus, 4> kWarn = {2, 2, 2, 2};
  auto all = [](F x) { return std::array<F, 4>{x, x, x, x}; };
  return {
      {"Inf + -Inf", Op::kAdd, inf, -inf, all(nan), kOk},
      {"NaN + 1", Op::kAdd, L::quiet_NaN(), 1, all(nan), kOk},
      {"NaN 1 + -NaN 2", Op::kAdd, nan_one, nan_two, all(nan), kOk},
      {"-NaN 2 + NaN 1", Op::kAdd, nan_two, nan_one, all(nan), kOk},
      {"NaN 1 - -NaN 2", Op::kSub, nan_one, nan_two, all(nan), kOk},
      {"NaN 1 * -NaN 2", Op::kMul, nan_one, nan_two, all(nan), kOk},
      {"-NaN 2 * NaN 1", Op::kMul, nan_two, nan_one, all(nan), kOk},
      {"signalling NaN * 1", Op::kMul, L::signaling_NaN(), 1, all(nan), kOk},
      {"+0 + -0", Op::kAdd, 0, -F{0}, all(0), kOk},
      {"-0 + -0", Op::kAdd, -F{0}, -F{0}, all(-F{0}), kOk},
      {"Inf + denormal", Op::kAdd, inf, tiny, all(inf), kOk},
      {"1.5 - 1.5", Op::kSub, F{1.5}, F{1.5}, all(0), kOk},
      {"-0 - +0", Op::kSub, 0, -F{0}, all(-F{0}), kOk},
      {"0 * Inf", Op::kMul, 0, inf, all(nan), kOk},
      {"-2 * Inf", Op::kMul, -2, inf, all(-inf), kOk},
      {"max * 2 overflows", Op::kMul, L::max(), 2, all(inf), kOk},
      {"NaN * denormal", Op::kMul, nan_one, tiny, all(nan), kOk},
      {"1 / Inf", Op::kDiv, inf, 1, all(0), kOk},
      {"-1 / Inf", Op::kDiv, inf, -1, all(-F{0}), kOk},
      {"Inf / Inf", Op::kDiv, inf, inf, all(nan), kOk},
      {"0 / 0", Op::kDiv, 0, 0, all(nan), kWarn},
      {"1 / -0", Op::kDiv, -F{0}, 1, all(-inf), kWarn},
      {"NaN / 0", Op::kDiv, 0, nan_two, all(nan), kWarn},
      {"NaN 1 / -NaN 2", Op::kDiv, nan_two, nan_one, all(nan), kOk},
      // Denormal results flush to zero of their sign under FTZ; denormal operands read as zero
      // of their sign under DAZ.
      {"min * 0.5", Op::kMul, min, F{0.5}, {min / 2, 0, min / 2, 0}, kOk},
      {"-min * 0.5", Op::kMul, -min, F{0.5}, {-min / 2, -F{0}, -min / 2, -F{0}}, kOk},
      {"1.5 min - min", Op::kSub, min, min * F{1.5}, {min / 2, 0, min / 2, 0}, kOk},
      {"min / 4", Op::kDiv, 4, min, {min / 4, 0, min / 4, 0}, kOk},
      {"min + denormal", Op::kAdd, tiny, min, {min + tiny, min + tiny, min, min}, kOk},
      {"denormal lifted to normal", Op::kMul, tiny, lift, {tiny * lift, tiny * lift, 0, 0}, kOk},
      {"-denormal * 1", Op::kMul, -tiny, 1, {-tiny, -F{0}, -F{0}, -F{0}}, kOk},
      // A denormal divisor is a zero divisor once DAZ reads it as zero.
      {"1 / denormal", Op::kDiv, tiny, 1, all(inf), {0, 0, 2, 2}},
  };
}

template <class F>
EngStatus Apply(Op op, const F* first, const F* second, F* dst, int n) {
  switch (op) {
    case Op::kAdd:
      return Ops<F>::Add(first, second, dst, n);
    case Op::kSub:
      return Ops<F>::Sub(first, second, dst, n);
    case Op::kMul:
      return Ops<F>::Mul(first, second, dst, n);
    case Op::kDiv:
      return Ops<F>::Div(first, second, dst, n);
  }
  return engStsErr;
}

template <class F>
class IeeeSpecials : public testing::Test {};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(IeeeSpecials, RealTypes);

TYPED_TEST(IeeeSpecials, PropagateUnderEveryDenormalMode) {
  using F = TypeParam;
  const int modes = ProcessorHasDenormalsAreZero() ? 4 : 2;
  for (int m = 0; m < modes; ++m) {
    for (const IeeeCase<F>& c : IeeeCases<F>()) {
      SCOPED_TRACE(std::string(c.name) + ", MXCSR modes " + std::to_string(kModes[m]));
      const std::vector<F> first(kCopies, c.first);
      const std::vector<F> second(kCopies, c.second);
      std::vector<F> dst(kCopies);
      EngStatus status;
      {
        FpModes in_force(kModes[m]);
        status = Apply(c.op, first.data(), second.data(), dst.data(), kCopies);
      }
      EXPECT_EQ(status, c.status[m]);
      ExpectSame(std::vector<F>(kCopies, c.expected[m]), dst);
    }
  }
}

}  // namespace
}  // namespace zal::engine
