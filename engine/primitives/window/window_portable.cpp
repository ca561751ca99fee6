// The reference of the window family: one element at a time, each weight from the same double
// formulas as the kernels (window_weights-inl.h, window_angle_sum-inl.h) at the smaller of the
// index and its mirror.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cmath>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"
#include "engine/simd/vec_common-inl.h"

namespace zal::engine::portable {
namespace {
// The formulas' lane type here is double itself: broadcasting leaves it as it is, and lane masks
// are plain truth values.
[[maybe_unused]] inline double Broadcast(double x) {
  return x;
}
inline bool LessEqual(double a, double b) {
  return a <= b;
}
inline double Select(bool m, double a, double b) {
  return m ? a : b;
}
inline double Sqrt(double x) {
  return std::sqrt(x);
}
}  // namespace
}  // namespace zal::engine::portable

#include "engine/primitives/window/window_angle_sum-inl.h"
#include "engine/primitives/window/window_weights-inl.h"

namespace zal::engine::portable {
namespace {

template <class T, class Weight>
void ApplySymmetric(const T* src, T* dst, int n, const Weight& weight) {
  for (int i = 0; i < n; ++i) {
    const int mirror = n - 1 - i;
    dst[i] =
        DefaultNaN(src[i] * static_cast<T>(weight(static_cast<double>(i < mirror ? i : mirror))));
  }
}

template <class Weight>
void ApplyByAngleSum(const double* src, double* dst, int n, const Weight& weight) {
  ApplySymmetric(src, dst, n, weight);
}

template <class Recurrence>
void ApplyByRecurrence(const float* src, float* dst, int n, const Recurrence& recurrence) {
  ApplySymmetric(src, dst, n, recurrence);
}

}  // namespace

#include "engine/primitives/window/window_entries-inl.h"

}  // namespace zal::engine::portable
