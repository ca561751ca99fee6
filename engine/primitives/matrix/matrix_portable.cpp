// The reference of the matrix product: each element a plain dot product over the inner index,
// summed in order, complex products written out in real arithmetic.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstddef>

#include "engine/core/primitive_declarations.h"

namespace zal::engine::portable {
namespace {

template <class T>
void AddProduct(T& sum, const T& x, const T& y) {
  sum += x * y;
}
template <class R>
void AddComplexProduct(R& sum_re, R& sum_im, R x_re, R x_im, R y_re, R y_im) {
  sum_re += x_re * y_re - x_im * y_im;
  sum_im += x_re * y_im + x_im * y_re;
}
void AddProduct(Complex32& sum, const Complex32& x, const Complex32& y) {
  AddComplexProduct(sum.re, sum.im, x.re, x.im, y.re, y.im);
}
void AddProduct(Complex64& sum, const Complex64& x, const Complex64& y) {
  AddComplexProduct(sum.re, sum.im, x.re, x.im, y.re, y.im);
}

template <class T>
EngStatus Product(const T* a, const T* b, T* c, int m, int n, int k, int rows) {
  if (!a || !b || !c) return engStsNullPtrErr;
  if (m <= 0 || n <= 0 || k < 0) return engStsSizeErr;
  // Element (i, j) of an r x s matrix: i + j r by columns, i s + j by rows.
  const auto at = [rows](std::ptrdiff_t i, std::ptrdiff_t j, std::ptrdiff_t r, std::ptrdiff_t s) {
    return rows ? i * s + j : i + j * r;
  };
  for (std::ptrdiff_t j = 0; j < n; ++j) {
    for (std::ptrdiff_t i = 0; i < m; ++i) {
      T sum{};
      for (std::ptrdiff_t l = 0; l < k; ++l) AddProduct(sum, a[at(i, l, m, k)], b[at(l, j, k, n)]);
      c[i + j * static_cast<std::ptrdiff_t>(m)] = sum;
    }
  }
  return engStsNoErr;
}

}  // namespace

#include "engine/primitives/matrix/matrix_entries-inl.h"

}  // namespace zal::engine::portable

ZAL_MATRIX_PRIMITIVES(ZAL_CHECK_SHAPE)
