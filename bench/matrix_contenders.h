// The matrix product benchmark's peer: Eigen called directly, in its own translation unit built
// with -O3 -march=native, over maps of the same caller arrays.
#pragma once

#include <complex>

namespace zal::bench::matrix {

// c = a b, all d x d, by columns or by rows (Eigen maps the caller's row-major arrays directly).
void EigenProduct(bool rows, int d, const float* a, const float* b, float* c);
void EigenProduct(bool rows, int d, const double* a, const double* b, double* c);
void EigenProduct(bool rows, int d, const std::complex<float>* a, const std::complex<float>* b,
                  std::complex<float>* c);
void EigenProduct(bool rows, int d, const std::complex<double>* a, const std::complex<double>* b,
                  std::complex<double>* c);

}  // namespace zal::bench::matrix
