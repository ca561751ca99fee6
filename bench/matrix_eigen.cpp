// Eigen's product over maps of the caller's arrays, as a user building for this machine writes
// it: -O3 -march=native.
#include <Eigen/Core>

#include "bench/matrix_contenders.h"

namespace zal::bench::matrix {
namespace {

template <class T, int kStorage>
using Matrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic, kStorage>;

template <class T, int kStorage>
void Product(int d, const T* a, const T* b, T* c) {
  Eigen::Map<Matrix<T, kStorage>>(c, d, d).noalias() =
      Eigen::Map<const Matrix<T, kStorage>>(a, d, d) *
      Eigen::Map<const Matrix<T, kStorage>>(b, d, d);
}

template <class T>
void Product(bool rows, int d, const T* a, const T* b, T* c) {
  if (rows) {
    Product<T, Eigen::RowMajor>(d, a, b, c);
  } else {
    Product<T, Eigen::ColMajor>(d, a, b, c);
  }
}

}  // namespace

void EigenProduct(bool rows, int d, const float* a, const float* b, float* c) {
  Product(rows, d, a, b, c);
}
void EigenProduct(bool rows, int d, const double* a, const double* b, double* c) {
  Product(rows, d, a, b, c);
}
void EigenProduct(bool rows, int d, const std::complex<float>* a, const std::complex<float>* b,
                  std::complex<float>* c) {
  Product(rows, d, a, b, c);
}
void EigenProduct(bool rows, int d, const std::complex<double>* a, const std::complex<double>* b,
                  std::complex<double>* c) {
  Product(rows, d, a, b, c);
}

}  // namespace zal::bench::matrix
