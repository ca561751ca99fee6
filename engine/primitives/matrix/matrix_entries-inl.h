// The matrix product's entry points, the same for the level kernels and the portable variant: each
// includer defines Product its own way.
// Included inside namespace zal::engine::ZAL_LEVEL (or portable), after it.

EngStatus MatrixProductF32(const float* a, const float* b, float* c, int m, int n, int k,
                           int rows) {
  return Product(a, b, c, m, n, k, rows);
}
EngStatus MatrixProductF64(const double* a, const double* b, double* c, int m, int n, int k,
                           int rows) {
  return Product(a, b, c, m, n, k, rows);
}
EngStatus MatrixProductC32(const Complex32* a, const Complex32* b, Complex32* c, int m, int n,
                           int k, int rows) {
  return Product(a, b, c, m, n, k, rows);
}
EngStatus MatrixProductC64(const Complex64* a, const Complex64* b, Complex64* c, int m, int n,
                           int k, int rows) {
  return Product(a, b, c, m, n, k, rows);
}
