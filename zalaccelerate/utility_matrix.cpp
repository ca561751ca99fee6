// The matrix product fronts. Column-major goes straight to the engine; row-major forms the
// product by columns in a temporary, then transposes it into c.
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Engine;

constexpr std::align_val_t kTemporaryAlignment{64};

template <class T>
struct AlignedDelete {
  void operator()(T* p) const { ::operator delete[](p, kTemporaryAlignment); }
};

// The temporary of m x n elements, or null when m n is 0 or negative. Sizes past what the
// address space holds throw std::bad_alloc, as the failed allocation itself does.
template <class T>
std::unique_ptr<T[], AlignedDelete<T>> Temporary(int m, int n) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (m != 0 && n != 0 && m > kLargest / n) throw std::bad_alloc();
  const std::int64_t count = std::int64_t{m} * n;
  if (count <= 0) return nullptr;
  if (static_cast<std::uint64_t>(count) > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
    throw std::bad_alloc();
  }
  void* block = ::operator new[](static_cast<std::size_t>(count) * sizeof(T), kTemporaryAlignment);
  return std::unique_ptr<T[], AlignedDelete<T>>(static_cast<T*>(block));
}

template <class T, class Primitive>
void Product(Primitive& primitive, MatrixDataOrder order, int m, int n, int k, const T* a,
             const T* b, T* c) {
  if (order == ColumnMajor) {
    primitive(Engine(a), Engine(b), Engine(c), m, n, k, 0);
    return;
  }
  if (order != RowMajor) return;
  const auto by_columns = Temporary<T>(m, n);
  if (!c) return;
  if (primitive(Engine(a), Engine(b), Engine(by_columns.get()), m, n, k, 1) != engStsNoErr) return;
  for (std::ptrdiff_t i = 0; i < m; ++i) {
    for (std::ptrdiff_t j = 0; j < n; ++j) c[i * n + j] = by_columns[i + j * m];
  }
}

}  // namespace

void Multiply(MatrixDataOrder order, int m, int n, int k, const float* a, const float* b,
              float* c) {
  Product(dispatch::MatrixProductF32, order, m, n, k, a, b, c);
}
void Multiply(MatrixDataOrder order, int m, int n, int k, const double* a, const double* b,
              double* c) {
  Product(dispatch::MatrixProductF64, order, m, n, k, a, b, c);
}
void Multiply(MatrixDataOrder order, int m, int n, int k, const std::complex<float>* a,
              const std::complex<float>* b, std::complex<float>* c) {
  Product(dispatch::MatrixProductC32, order, m, n, k, a, b, c);
}
void Multiply(MatrixDataOrder order, int m, int n, int k, const std::complex<double>* a,
              const std::complex<double>* b, std::complex<double>* c) {
  Product(dispatch::MatrixProductC64, order, m, n, k, a, b, c);
}

}  // namespace zalaccelerate::utility
