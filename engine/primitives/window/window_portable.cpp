// The reference of the window family: one element at a time, each weight from the same double
// formulas as the kernels (window_weights-inl.h) at the smaller of the index and its mirror.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/default_nan-inl.h"
#include "engine/simd/vec_common-inl.h"

namespace zal::engine::portable {
namespace {
// The formulas' lane type here is double itself: broadcasting leaves it as it is, and lane masks
// are plain truth values.
inline double Broadcast(double x) {
  return x;
}
inline bool LessEqual(double a, double b) {
  return a <= b;
}
inline double Select(bool m, double a, double b) {
  return m ? a : b;
}
}  // namespace
}  // namespace zal::engine::portable

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

template <class T, RaisedCosine kKind>
EngStatus RaisedCosineWindow(const T* src, T* dst, int n, double alpha) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (n < 3) return engStsSizeErr;
  if constexpr (sizeof(T) == 4) {
    ApplySymmetric(src, dst, n, MakeRaisedCosine<kKind>(n, alpha));
  } else {
    ApplySymmetric(src, dst, n, MakePreciseRaisedCosine<kKind>(n, alpha));
  }
  return engStsNoErr;
}

template <class T>
EngStatus KaiserWindow(const T* src, T* dst, int n, T alpha) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (KaiserTooBig(n, alpha)) return engStsHugeWinErr;
  if (n == 1) {
    dst[0] = src[0];
    return engStsNoErr;
  }
  ApplySymmetric(src, dst, n, MakeKaiser<sizeof(T) == 8>(n, alpha));
  return engStsNoErr;
}

}  // namespace

EngStatus WindowBartlettF32(const float* src, float* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (n < 3) return engStsSizeErr;
  ApplySymmetric(src, dst, n, TriangleWeight{2.0 / (n - 1)});
  return engStsNoErr;
}

EngStatus WindowHannF32(const float* src, float* dst, int n) {
  return RaisedCosineWindow<float, RaisedCosine::kHann>(src, dst, n, 0);
}
EngStatus WindowHammingF32(const float* src, float* dst, int n) {
  return RaisedCosineWindow<float, RaisedCosine::kHamming>(src, dst, n, 0);
}
EngStatus WindowBlackmanF32(const float* src, float* dst, int n, float alpha) {
  return RaisedCosineWindow<float, RaisedCosine::kBlackman>(src, dst, n, alpha);
}
EngStatus WindowKaiserF32(const float* src, float* dst, int n, float alpha) {
  return KaiserWindow(src, dst, n, alpha);
}

EngStatus WindowHannF64(const double* src, double* dst, int n) {
  return RaisedCosineWindow<double, RaisedCosine::kHann>(src, dst, n, 0);
}
EngStatus WindowHammingF64(const double* src, double* dst, int n) {
  return RaisedCosineWindow<double, RaisedCosine::kHamming>(src, dst, n, 0);
}
EngStatus WindowBlackmanF64(const double* src, double* dst, int n, double alpha) {
  return RaisedCosineWindow<double, RaisedCosine::kBlackman>(src, dst, n, alpha);
}
EngStatus WindowKaiserF64(const double* src, double* dst, int n, double alpha) {
  return KaiserWindow(src, dst, n, alpha);
}

}  // namespace zal::engine::portable
