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

// Complex square products by columns as real ones: A seen as a real 2d x d matrix (rows
// alternating real and imaginary parts) times the real parts of B, plus iA so seen times the
// imaginary parts. Fixed sizes keep both unrolled in registers, with none of the runtime's
// element-wise complex multiplication that Eigen's coefficient product of complex elements calls.
template <int kSize, class R>
void FixedComplexProduct(const std::complex<R>* a, const std::complex<R>* b, std::complex<R>* c) {
  using Tall = eigen::Matrix<R, 2 * kSize, kSize, eigen::ColMajor>;
  using Parts = eigen::Map<const eigen::Matrix<R, kSize, kSize, eigen::ColMajor>, 0,
                           eigen::Stride<2 * kSize, 2>>;
  const eigen::Map<const Tall> tall(reinterpret_cast<const R*>(a));
  Tall turned;
  for (int j = 0; j < kSize; ++j) {
    for (int i = 0; i < kSize; ++i) {
      turned(2 * i, j) = -tall(2 * i + 1, j);
      turned(2 * i + 1, j) = tall(2 * i, j);
    }
  }
  const R* parts = reinterpret_cast<const R*>(b);
  eigen::Map<Tall>(reinterpret_cast<R*>(c)).noalias() =
      tall.lazyProduct(Parts(parts)) + turned.lazyProduct(Parts(parts + 1));
}

// Below this sum of the three dimensions Eigen's general product hands over to its coefficient
// product, which for complex elements multiplies through the runtime's Annex G routine one
// element at a time; its blocked kernel, with packet complex arithmetic, is several times faster.
constexpr int kCoefficientProductBelow = 20;

// The products that bypass Eigen's size dispatch; false for the others.
template <int kStorage, class S>
bool SmallProduct(const S* a, const S* b, S* c, int m, int n, int k) {
  if constexpr (eigen::NumTraits<S>::IsComplex) {
    if (kStorage == eigen::ColMajor && m == n && n == k && (m == 4 || m == 8)) {
      if (m == 4) {
        FixedComplexProduct<4>(a, b, c);
      } else {
        FixedComplexProduct<8>(a, b, c);
      }
      return true;
    }
    if (m + n + k >= kCoefficientProductBelow) return false;
    using Blocked = eigen::internal::generic_product_impl<ConstView<S, kStorage>,
                                                          ConstView<S, kStorage>, eigen::DenseShape,
                                                          eigen::DenseShape, eigen::GemmProduct>;
    ColumnsView<S> out(c, m, n);
    out.setZero();
    Blocked::scaleAndAddTo(out, ConstView<S, kStorage>(a, m, k), ConstView<S, kStorage>(b, k, n),
                           S(1));
    return true;
  } else {
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
}

template <class T>
EngStatus Product(const T* a_in, const T* b_in, T* c_in, int m, int n, int k, int rows) {
  if (!a_in || !b_in || !c_in) return engStsNullPtrErr;
  if (m <= 0 || n <= 0 || k < 0) return engStsSizeErr;
  using S = typename EigenScalar<T>::Type;
  const S* a = reinterpret_cast<const S*>(a_in);
  const S* b = reinterpret_cast<const S*>(b_in);
  S* c_out = reinterpret_cast<S*>(c_in);
  ColumnsView<S> c(c_out, m, n);
  // Eigen packs large operands into blocks on the heap; when that fails (std::bad_alloc, the
  // only exception it raises), c may hold a partial product, which the status reports. Catching
  // every exception keeps the type's identity out of this object, as above.
  try {
    if (rows ? SmallProduct<eigen::RowMajor>(a, b, c_out, m, n, k)
             : SmallProduct<eigen::ColMajor>(a, b, c_out, m, n, k)) {
      return engStsNoErr;
    }
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
