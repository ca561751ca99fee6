// The matrix product, formed by Eigen's blocked product over views of the caller's arrays.
// Eigen's templates are compiled here with this level's flags, so each level gets the product
// kernels its registers allow. Its namespace is renamed into the level's own: every function the
// compiler keeps out of line is then this level's alone, and the linker can never hand another
// level's copy to a processor that lacks its instructions.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

// GCC 12 warns inside its own AVX-512 intrinsics, whose undefined operands Eigen's shuffles pass
// through; the diagnostic state where the intrinsics are first read is the one that counts.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <complex>
#include <cstddef>

#include "engine/core/primitive_declarations.h"

#define EIGEN_DONT_PARALLELIZE
#define EIGEN_MPL2_ONLY
#define Eigen zal::engine::ZAL_LEVEL::eigen
// Eigen's own throw would put the identity of std::bad_alloc, shared by every level, into this
// object; without it, Eigen asks operator new for an impossible size, which raises the same
// exception from the runtime.
#include <Eigen/src/Core/util/Macros.h>
#undef EIGEN_EXCEPTIONS
#include <Eigen/Core>
#undef Eigen

namespace zal::engine::ZAL_LEVEL {
namespace {

template <class T, int kStorage>
using ConstView = eigen::Map<const eigen::Matrix<T, eigen::Dynamic, eigen::Dynamic, kStorage>>;

template <class T>
using ColumnsView = eigen::Map<eigen::Matrix<T, eigen::Dynamic, eigen::Dynamic, eigen::ColMajor>>;

// The engine's complex records are std::complex in the caller's memory: Eigen sees them as such.
template <class T>
struct EigenScalar {
  using Type = T;
};
template <>
struct EigenScalar<Complex32> {
  using Type = std::complex<float>;
};
template <>
struct EigenScalar<Complex64> {
  using Type = std::complex<double>;
};

// Square products of 4 and 8: Eigen's fixed-size coefficient product runs unrolled in registers
// and skips the size tests, blocking and packing its general product pays at every call.
template <int kSize, int kStorage, class S>
void FixedProduct(const S* a, const S* b, S* c) {
  using Operand = eigen::Matrix<S, kSize, kSize, kStorage>;
  eigen::Map<eigen::Matrix<S, kSize, kSize, eigen::ColMajor>>(c).noalias() =
      eigen::Map<const Operand>(a).lazyProduct(eigen::Map<const Operand>(b));
}

template <int kStorage, class S>
bool SmallSquareProduct(const S* a, const S* b, S* c, int m, int n, int k) {
  if (m != n || n != k) return false;
  if (m == 4) {
    FixedProduct<4, kStorage>(a, b, c);
    return true;
  }
  if (m == 8) {
    FixedProduct<8, kStorage>(a, b, c);
    return true;
  }
  return false;
}

template <class T>
EngStatus Product(const T* a_in, const T* b_in, T* c_in, int m, int n, int k, int rows) {
  if (!a_in || !b_in || !c_in) return engStsNullPtrErr;
  if (m <= 0 || n <= 0 || k < 0) return engStsSizeErr;
  using S = typename EigenScalar<T>::Type;
  const S* a = reinterpret_cast<const S*>(a_in);
  const S* b = reinterpret_cast<const S*>(b_in);
  S* c_out = reinterpret_cast<S*>(c_in);
  if (rows ? SmallSquareProduct<eigen::RowMajor>(a, b, c_out, m, n, k)
           : SmallSquareProduct<eigen::ColMajor>(a, b, c_out, m, n, k)) {
    return engStsNoErr;
  }
  ColumnsView<S> c(c_out, m, n);
  // Eigen packs large operands into blocks on the heap; when that fails (std::bad_alloc, the
  // only exception it raises), c may hold a partial product, which the status reports. Catching
  // every exception keeps the type's identity out of this object, as above.
  try {
    if (rows) {
      c.noalias() = ConstView<S, eigen::RowMajor>(a, m, k) * ConstView<S, eigen::RowMajor>(b, k, n);
    } else {
      c.noalias() = ConstView<S, eigen::ColMajor>(a, m, k) * ConstView<S, eigen::ColMajor>(b, k, n);
    }
  } catch (...) {
    return engStsMemAllocErr;
  }
  return engStsNoErr;
}

}  // namespace

#include "engine/primitives/matrix/matrix_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL

ZAL_MATRIX_PRIMITIVES(ZAL_CHECK_SHAPE)
