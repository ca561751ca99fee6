// The matrix product through the exported interface, against a long double product: shapes from
// 1 to 70 in both orders and all four element types, at whatever level the run forces, plus the
// refusals, the unknown order and the row-major temporary's size rule.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <new>
#include <random>
#include <type_traits>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

using zalaccelerate::ColumnMajor;
using zalaccelerate::MatrixDataOrder;
using zalaccelerate::RowMajor;
using zalaccelerate::utility::Multiply;

template <class T>
struct RealOf {
  using Type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
  using Type = R;
};
template <class T>
constexpr bool kIsComplex = !std::is_same_v<T, typename RealOf<T>::Type>;

using Wide = std::complex<long double>;

Wide Widen(float x) {
  return x;
}
Wide Widen(double x) {
  return x;
}
template <class R>
Wide Widen(std::complex<R> x) {
  return {x.real(), x.imag()};
}

template <class T>
T Random(std::mt19937& random) {
  using R = typename RealOf<T>::Type;
  std::uniform_real_distribution<R> uniform(-1, 1);
  if constexpr (kIsComplex<T>) {
    const R re = uniform(random);
    return T(re, uniform(random));
  } else {
    return uniform(random);
  }
}

std::ptrdiff_t At(MatrixDataOrder order, int i, int j, int rows, int columns) {
  return order == RowMajor ? std::ptrdiff_t{i} * columns + j : i + std::ptrdiff_t{j} * rows;
}

// The destination inside guard zones, which must come back as they were.
constexpr std::ptrdiff_t kGuard = 17;

template <class T>
T Sentinel() {
  return T(-12345);
}

template <class T>
class MatrixApi : public testing::Test {};
using ElementTypes = testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(MatrixApi, ElementTypes);

// Every element within (k + 4) eps sum |a_il b_lj| of the exact product (twice that for complex
// elements, whose products round twice), and the guards intact.
template <class T>
void ExpectProduct(MatrixDataOrder order, int m, int n, int k, std::mt19937& random) {
  using R = typename RealOf<T>::Type;
  std::vector<T> a(static_cast<std::size_t>(m) * k), b(static_cast<std::size_t>(k) * n);
  for (T& x : a) x = Random<T>(random);
  for (T& x : b) x = Random<T>(random);
  std::vector<T> c(static_cast<std::size_t>(m) * n + 2 * kGuard, Sentinel<T>());
  Multiply(order, m, n, k, a.data(), b.data(), c.data() + kGuard);

  const long double eps = std::numeric_limits<R>::epsilon() / 2;
  const long double factor = (kIsComplex<T> ? 2 : 1) * (k + 4) * eps;
  int failures = 0;
  for (int i = 0; i < m && failures < 5; ++i) {
    for (int j = 0; j < n && failures < 5; ++j) {
      Wide exact = 0;
      long double magnitude = 0;
      for (int l = 0; l < k; ++l) {
        const Wide term = Widen(a[At(order, i, l, m, k)]) * Widen(b[At(order, l, j, k, n)]);
        exact += term;
        magnitude += std::abs(term);
      }
      const Wide got = Widen(c[kGuard + At(order, i, j, m, n)]);
      if (!(std::abs(got - exact) <= factor * magnitude)) {
        ++failures;
        ADD_FAILURE() << (order == RowMajor ? "RowMajor" : "ColumnMajor") << " m=" << m
                      << " n=" << n << " k=" << k << " at (" << i << ", " << j << "): got "
                      << std::abs(got) << ", off by " << std::abs(got - exact) << ", bound "
                      << factor * magnitude;
      }
    }
  }
  for (std::ptrdiff_t g = 0; g < kGuard; ++g) {
    ASSERT_EQ(c[g], Sentinel<T>()) << "m=" << m << " n=" << n << " k=" << k;
    ASSERT_EQ(c[c.size() - 1 - g], Sentinel<T>()) << "m=" << m << " n=" << n << " k=" << k;
  }
}

struct Shape {
  int m, n, k;
};

// Square shapes 1..70, the degenerate vectors, and non-square shapes drawn from 1..70.
std::vector<Shape> Shapes() {
  std::vector<Shape> shapes;
  for (int d = 1; d <= 70; ++d) shapes.push_back({d, d, d});
  for (Shape s : {Shape{1, 1, 70}, Shape{70, 1, 1}, Shape{1, 70, 1}, Shape{70, 70, 1},
                  Shape{1, 70, 70}, Shape{70, 1, 70}, Shape{3, 70, 5}, Shape{69, 2, 67}}) {
    shapes.push_back(s);
  }
  std::mt19937 random(2026);
  std::uniform_int_distribution<int> dimension(1, 70);
  for (int i = 0; i < 80; ++i) {
    const int m = dimension(random);
    const int n = dimension(random);
    shapes.push_back({m, n, dimension(random)});
  }
  return shapes;
}

TYPED_TEST(MatrixApi, MatchesTheLongDoubleProductInBothOrders) {
  std::mt19937 random(7);
  for (const Shape& s : Shapes()) {
    for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
      ExpectProduct<TypeParam>(order, s.m, s.n, s.k, random);
    }
  }
}

// Shapes whose operands outgrow the product's on-stack blocks, and the blocking's edges.
TYPED_TEST(MatrixApi, MatchesTheLongDoubleProductOfLargeShapes) {
  std::mt19937 random(11);
  for (Shape s : {Shape{200, 190, 300}, Shape{257, 129, 65}, Shape{33, 300, 260}}) {
    for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
      ExpectProduct<TypeParam>(order, s.m, s.n, s.k, random);
    }
  }
}

// Operands and destination one element off any wider boundary.
TYPED_TEST(MatrixApi, TakesBuffersAtAnyElementOffset) {
  using T = TypeParam;
  const int m = 9, n = 11, k = 13;
  std::mt19937 random(5);
  std::vector<T> a(m * k + 1), b(k * n + 1), c(m * n + 1), expected(m * n);
  for (T& x : a) x = Random<T>(random);
  for (T& x : b) x = Random<T>(random);
  for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
    Multiply(order, m, n, k, a.data() + 1, b.data() + 1, c.data() + 1);
    std::vector<T> aligned_a(a.begin() + 1, a.end()), aligned_b(b.begin() + 1, b.end());
    Multiply(order, m, n, k, aligned_a.data(), aligned_b.data(), expected.data());
    for (int i = 0; i < m * n; ++i) {
      EXPECT_NEAR(std::abs(c[i + 1] - expected[i]), 0.0, 1e-5) << i;
    }
  }
}

TYPED_TEST(MatrixApi, TwoByTwoInEachOrder) {
  using T = TypeParam;
  const T a[] = {T(1), T(2), T(3), T(4)};
  const T b[] = {T(5), T(6), T(7), T(8)};
  T c[4];
  Multiply(RowMajor, 2, 2, 2, a, b, c);
  EXPECT_EQ(std::vector<T>(c, c + 4), (std::vector<T>{T(19), T(22), T(43), T(50)}));
  Multiply(ColumnMajor, 2, 2, 2, a, b, c);
  EXPECT_EQ(std::vector<T>(c, c + 4), (std::vector<T>{T(23), T(34), T(31), T(46)}));
}

TYPED_TEST(MatrixApi, OneByOneIsTheDotProductOfARowAndAColumn) {
  using T = TypeParam;
  const T a[] = {T(1), T(2), T(3)};
  const T b[] = {T(4), T(-5), T(6)};
  for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
    T c = T(0);
    Multiply(order, 1, 1, 3, a, b, &c);
    EXPECT_EQ(c, T(12));
  }
}

TYPED_TEST(MatrixApi, EmptyInnerDimensionGivesZeros) {
  using T = TypeParam;
  const T none[1] = {T(9)};
  for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
    std::vector<T> c(6, T(7));
    Multiply(order, 2, 3, 0, none, none, c.data());
    EXPECT_EQ(c, std::vector<T>(6, T(0)));
  }
}

TYPED_TEST(MatrixApi, NaNAndInfinityPropagateThroughTheirRowAndColumn) {
  using T = TypeParam;
  using R = typename RealOf<T>::Type;
  const int d = 20;
  std::vector<T> a(d * d, T(1)), b(d * d, T(1)), c(d * d);
  a[0] = T(std::numeric_limits<R>::quiet_NaN());           // row 0
  b[d * (d - 1)] = T(std::numeric_limits<R>::infinity());  // column d - 1
  Multiply(ColumnMajor, d, d, d, a.data(), b.data(), c.data());
  for (int i = 0; i < d; ++i) {
    for (int j = 0; j < d; ++j) {
      const R re = std::real(c[i + j * d]);
      if (i == 0) {
        EXPECT_TRUE(std::isnan(re)) << i << ", " << j;
      } else if (j == d - 1) {
        // A complex infinity times a finite number has a 0 * Inf inside it.
        EXPECT_TRUE(kIsComplex<T> ? !std::isfinite(re) : std::isinf(re)) << i << ", " << j;
      } else {
        EXPECT_EQ(re, R(d)) << i << ", " << j;
      }
    }
  }
}

// Null pointers, empty or negative shapes and unknown orders write nothing.
TYPED_TEST(MatrixApi, RefusedCallsWriteNothing) {
  using T = TypeParam;
  const std::vector<T> a(16, T(1)), b(16, T(2));
  const std::vector<T> untouched(16, T(3));
  std::vector<T> c = untouched;
  struct Case {
    int order, m, n, k;
    bool null_a, null_b, null_c;
  };
  const Case cases[] = {
      {ColumnMajor, 4, 4, 4, true, false, false},
      {RowMajor, 4, 4, 4, true, false, false},
      {ColumnMajor, 4, 4, 4, false, true, false},
      {RowMajor, 4, 4, 4, false, true, false},
      {ColumnMajor, 4, 4, 4, false, false, true},
      {RowMajor, 4, 4, 4, false, false, true},
      {ColumnMajor, 0, 4, 4, false, false, false},
      {RowMajor, 0, 4, 4, false, false, false},
      {ColumnMajor, 4, 0, 4, false, false, false},
      {RowMajor, 4, 0, 4, false, false, false},
      {ColumnMajor, -4, 4, 4, false, false, false},
      {RowMajor, -4, 4, 4, false, false, false},
      {ColumnMajor, 4, -4, 4, false, false, false},
      {ColumnMajor, 4, 4, -1, false, false, false},
      {RowMajor, 4, 4, -1, false, false, false},
      {RowMajor, 0, -4, 4, false, false, false},
      {2, 4, 4, 4, false, false, false},
      {-1, 4, 4, 4, false, false, false},
      {0x7FFFFFFF, 4, 4, 4, false, false, false},
  };
  for (const Case& x : cases) {
    Multiply(static_cast<MatrixDataOrder>(x.order), x.m, x.n, x.k, x.null_a ? nullptr : a.data(),
             x.null_b ? nullptr : b.data(), x.null_c ? nullptr : c.data());
    EXPECT_EQ(c, untouched) << "order " << x.order << " m=" << x.m << " n=" << x.n << " k=" << x.k
                            << " nulls " << x.null_a << x.null_b << x.null_c;
  }
}

// The row-major temporary of m x n elements: a size past 2^63 - 1 (a nonzero m with a negative
// n) throws before anything is read; the column-major form has no temporary and refuses quietly.
TYPED_TEST(MatrixApi, RowMajorTemporaryOfImpossibleSizeThrows) {
  using T = TypeParam;
  std::vector<T> c(4, T(3));
  const std::vector<T> untouched = c;
  EXPECT_THROW(Multiply(RowMajor, 2, -1, 2, c.data(), c.data(), c.data()), std::bad_alloc);
  EXPECT_THROW(Multiply(RowMajor, -2, -3, 2, c.data(), c.data(), c.data()), std::bad_alloc);
  const T* none = nullptr;
  EXPECT_THROW(Multiply(RowMajor, 1, std::numeric_limits<int>::min(), 1, none, none,
                        static_cast<T*>(nullptr)),
               std::bad_alloc);
  EXPECT_NO_THROW(Multiply(ColumnMajor, 2, -1, 2, c.data(), c.data(), c.data()));
  EXPECT_NO_THROW(Multiply(RowMajor, 0, -1, 2, c.data(), c.data(), c.data()));
  EXPECT_NO_THROW(Multiply(RowMajor, -2, 3, 2, c.data(), c.data(), c.data()));
  EXPECT_EQ(c, untouched);
}

TEST(MatrixApiComplex, ProductIsNotConjugated) {
  const std::complex<float> a(1, 1), b(1, -1);
  std::complex<float> c;
  Multiply(ColumnMajor, 1, 1, 1, &a, &b, &c);
  EXPECT_EQ(c, std::complex<float>(2, 0));
  const std::complex<double> i(0, 1);
  std::complex<double> square;
  Multiply(RowMajor, 1, 1, 1, &i, &i, &square);
  EXPECT_EQ(square, std::complex<double>(-1, 0));
}

TEST(MatrixApiOrder, EnumeratesTheTwoLayoutsIn32Bits) {
  static_assert(sizeof(MatrixDataOrder) == 4);
  static_assert(std::is_same_v<std::underlying_type_t<MatrixDataOrder>, int>);
  EXPECT_EQ(RowMajor, 0);
  EXPECT_EQ(ColumnMajor, 1);
}

}  // namespace
