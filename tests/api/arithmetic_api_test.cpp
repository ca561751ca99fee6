// The exported arithmetic through the shared library: that each wrapper hands its arguments to the
// engine in the documented roles (Sub and Div reversed, constants in their positions), and that
// refused calls write nothing. Kernel results are covered bit for bit by the cross-level tests.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

namespace u = zalaccelerate::utility;

constexpr unsigned kLength = 37;

template <class T>
T Sample(std::mt19937& rng) {
  std::uniform_real_distribution<double> value(0.5, 4.0);
  std::bernoulli_distribution negative(0.3);
  const auto one = [&] { return (negative(rng) ? -1 : 1) * value(rng); };
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(one());
  } else {
    using R = typename T::value_type;
    return T(static_cast<R>(one()), static_cast<R>(one()));
  }
}

template <class T>
double Magnitude(T x) {
  return std::abs(std::complex<double>(x));
}

template <class T>
using Epsilon = std::numeric_limits<decltype(std::real(T{}))>;

// Real results are single IEEE operations and must match exactly; complex products and quotients
// may differ from std::complex's by a few rounding errors.
template <class T>
void ExpectClose(const std::vector<T>& got, const std::vector<T>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    if constexpr (std::is_floating_point_v<T>) {
      EXPECT_EQ(got[i], want[i]) << "element " << i;
    } else {
      const double tolerance = 8 * Epsilon<T>::epsilon() * (Magnitude(want[i]) + 1);
      EXPECT_LE(Magnitude(got[i] - want[i]), tolerance) << "element " << i;
    }
  }
}

// One export: how to call it on (a, b, c, dst), and what dst must hold after.
template <class T>
struct Case {
  const char* name;
  std::function<void(unsigned, const T*, T*, T, T*)> call;  // len, a, b (read-write), c, dst
  std::function<T(T a, T b, T c, T dst)> want;
  bool writes_b;  // in-place forms write b, not dst
};

template <class T>
std::vector<Case<T>> Cases() {
  return {
      {"Add", [](unsigned n, const T* a, T* b, T, T* d) { u::Add(n, a, b, d); },
       [](T a, T b, T, T) { return a + b; }, false},
      {"Sub", [](unsigned n, const T* a, T* b, T, T* d) { u::Sub(n, a, b, d); },
       [](T a, T b, T, T) { return b - a; }, false},
      {"Mul", [](unsigned n, const T* a, T* b, T, T* d) { u::Mul(n, a, b, d); },
       [](T a, T b, T, T) { return a * b; }, false},
      {"Div", [](unsigned n, const T* a, T* b, T, T* d) { u::Div(n, a, b, d); },
       [](T a, T b, T, T) { return b / a; }, false},
      {"AddProduct", [](unsigned n, const T* a, T* b, T, T* d) { u::AddProduct(n, a, b, d); },
       [](T a, T b, T, T d) { return d + a * b; }, false},
      {"Add_InPlace", [](unsigned n, const T* a, T* b, T, T*) { u::Add_InPlace(n, a, b); },
       [](T a, T b, T, T) { return b + a; }, true},
      {"Sub_InPlace", [](unsigned n, const T* a, T* b, T, T*) { u::Sub_InPlace(n, a, b); },
       [](T a, T b, T, T) { return b - a; }, true},
      {"Mul_InPlace", [](unsigned n, const T* a, T* b, T, T*) { u::Mul_InPlace(n, a, b); },
       [](T a, T b, T, T) { return b * a; }, true},
      {"Div_InPlace", [](unsigned n, const T* a, T* b, T, T*) { u::Div_InPlace(n, a, b); },
       [](T a, T b, T, T) { return b / a; }, true},
      {"AddConstant", [](unsigned n, const T* a, T*, T c, T* d) { u::AddConstant(n, a, c, d); },
       [](T a, T, T c, T) { return a + c; }, false},
      {"SubConstant", [](unsigned n, const T* a, T*, T c, T* d) { u::SubConstant(n, a, c, d); },
       [](T a, T, T c, T) { return a - c; }, false},
      {"SubConstantRev",
       [](unsigned n, const T* a, T*, T c, T* d) { u::SubConstantRev(n, a, c, d); },
       [](T a, T, T c, T) { return c - a; }, false},
      {"MulConstant", [](unsigned n, const T* a, T*, T c, T* d) { u::MulConstant(n, a, d, c); },
       [](T a, T, T c, T) { return a * c; }, false},
      {"DivConstant", [](unsigned n, const T* a, T*, T c, T* d) { u::DivConstant(n, a, d, c); },
       [](T a, T, T c, T) { return a / c; }, false},
      {"AddConstant_InPlace",
       [](unsigned n, const T*, T* b, T c, T*) { u::AddConstant_InPlace(n, b, c); },
       [](T, T b, T c, T) { return b + c; }, true},
      {"SubConstant_InPlace",
       [](unsigned n, const T*, T* b, T c, T*) { u::SubConstant_InPlace(n, b, c); },
       [](T, T b, T c, T) { return b - c; }, true},
      {"SubConstantRev_InPlace",
       [](unsigned n, const T*, T* b, T c, T*) { u::SubConstantRev_InPlace(n, b, c); },
       [](T, T b, T c, T) { return c - b; }, true},
      {"MulConstant_InPlace",
       [](unsigned n, const T*, T* b, T c, T*) { u::MulConstant_InPlace(n, b, c); },
       [](T, T b, T c, T) { return b * c; }, true},
      {"DivConstant_InPlace",
       [](unsigned n, const T*, T* b, T c, T*) { u::DivConstant_InPlace(n, b, c); },
       [](T, T b, T c, T) { return b / c; }, true},
  };
}

template <class T>
struct OperandSet {
  std::vector<T> a, b, dst;
};

template <class T>
OperandSet<T> Operands(std::mt19937& rng) {
  OperandSet<T> set{std::vector<T>(kLength), std::vector<T>(kLength), std::vector<T>(kLength)};
  for (unsigned i = 0; i < kLength; ++i) {
    set.a[i] = Sample<T>(rng);
    set.b[i] = Sample<T>(rng);
    set.dst[i] = Sample<T>(rng);
  }
  return set;
}

template <class T>
class ArithmeticApi : public testing::Test {};
using ElementTypes = testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(ArithmeticApi, ElementTypes);

TYPED_TEST(ArithmeticApi, EachExportComputesItsDocumentedRoles) {
  using T = TypeParam;
  std::mt19937 rng(2024);
  for (const Case<T>& c : Cases<T>()) {
    SCOPED_TRACE(c.name);
    auto [a, b, dst] = Operands<T>(rng);
    const T constant = Sample<T>(rng);
    std::vector<T> want(kLength);
    for (unsigned i = 0; i < kLength; ++i) want[i] = c.want(a[i], b[i], constant, dst[i]);
    const std::vector<T> b_before = b, dst_before = dst;
    c.call(kLength, a.data(), b.data(), constant, dst.data());
    ExpectClose(c.writes_b ? b : dst, want);
    EXPECT_EQ(c.writes_b ? dst : b, c.writes_b ? dst_before : b_before) << "wrote the wrong buffer";
  }
}

TYPED_TEST(ArithmeticApi, RefusedCallsWriteNothing) {
  using T = TypeParam;
  std::mt19937 rng(7);
  for (const Case<T>& c : Cases<T>()) {
    SCOPED_TRACE(c.name);
    auto [a, b, dst] = Operands<T>(rng);
    const std::vector<T> b_before = b, dst_before = dst;
    for (unsigned len : {0u, 0x80000000u, 0xFFFFFFFFu}) {
      c.call(len, a.data(), b.data(), T(1), dst.data());
    }
    // A null destination refuses every form; each pointer position is covered in the engine's
    // own tests.
    if (c.writes_b) {
      c.call(kLength, a.data(), nullptr, T(1), dst.data());
    } else {
      c.call(kLength, a.data(), b.data(), T(1), nullptr);
    }
    EXPECT_EQ(b, b_before);
    EXPECT_EQ(dst, dst_before);
  }
}

TEST(ArithmeticApi, SingleTypeExtras) {
  const float a[3] = {1, 2, 4};
  float dst[3] = {10, 20, 30};
  u::AddConstantProduct(3, a, dst, 0.5f);
  EXPECT_EQ(dst[0], 10.5f);
  EXPECT_EQ(dst[2], 32.0f);

  const double ad[3] = {1, 2, 4};
  double dd[3] = {10, 20, 30};
  u::AddConstantProduct(3, ad, dd, 0.5);
  EXPECT_EQ(dd[0], 10.0) << "the double overload does nothing";
  EXPECT_EQ(dd[2], 30.0);

  float reciprocal[3] = {};
  u::DivConstantRev(3, 1.0f, a, reciprocal);
  EXPECT_EQ(reciprocal[0], 1.0f);
  EXPECT_EQ(reciprocal[1], 0.5f);
  EXPECT_EQ(reciprocal[2], 0.25f);

  short samples[4] = {1000, -1000, 3, 32767};
  u::MulConstant_InPlace(4, samples, short{3}, 1);  // *3/2: 1500, -1500, 4.5 -> 4, saturated
  EXPECT_EQ(samples[0], 1500);
  EXPECT_EQ(samples[1], -1500);
  EXPECT_EQ(samples[2], 4);
  EXPECT_EQ(samples[3], 32767);
  u::MulConstant_InPlace(0x80000000u, samples, short{0}, 0);
  EXPECT_EQ(samples[0], 1500);
}

}  // namespace
