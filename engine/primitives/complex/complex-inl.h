// Magnitudes, power spectra and polar coordinates, written once against the vector layer. Every
// result is a fixed sequence of IEEE operations, so every level gives the portable variant's
// bits: |z| = sqrt(re^2 + im^2) in either layout, atan2 in float (engine/simd/vec_trig-inl.h),
// and PolarToCart's cos and sin in double, rounded once to float. Every NaN result is the default
// NaN.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"
#include "engine/simd/vec-inl.h"
#include "engine/simd/vec_trig-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// Runs block(in, out, i) over whole vectors of kStep elements, then once more on copies of the
// last few, padded with zeros: nothing is read or written past the caller's arrays.
// in_width and out_width count the scalars per element of the input and output arrays.
template <int kStep, int kInWidth, int kOutWidth, class In, class Out, class Block>
ZAL_INLINE void Blocks(const In* const (&in)[2], Out* const (&out)[2], int inputs, int outputs,
                       std::ptrdiff_t n, Block block) {
  std::ptrdiff_t i = 0;
  for (; i + kStep <= n; i += kStep) block(in, out, i);
  if (i == n) return;
  const std::ptrdiff_t rest = n - i;
  alignas(64) In in_copy[2][kStep * kInWidth] = {};
  alignas(64) Out out_copy[2][kStep * kOutWidth];
  for (int k = 0; k < inputs; ++k) {
    for (std::ptrdiff_t j = 0; j < rest * kInWidth; ++j) in_copy[k][j] = in[k][i * kInWidth + j];
  }
  const In* const copies_in[2] = {in_copy[0], in_copy[1]};
  Out* const copies_out[2] = {out_copy[0], out_copy[1]};
  block(copies_in, copies_out, 0);
  for (int k = 0; k < outputs; ++k) {
    for (std::ptrdiff_t j = 0; j < rest * kOutWidth; ++j)
      out[k][i * kOutWidth + j] = out_copy[k][j];
  }
}

// re^2 + im^2 of interleaved elements, one per lane, in element order.
template <class T>
ZAL_INLINE auto Norms(const T* pairs) {
  using V = VectorOf<T>;
  const V a = Load(pairs);
  const V b = Load(pairs + V::kLanes);
  const V sa = a * a;
  const V sb = b * b;
  return EvenLanes(sa, sb) + OddLanes(sa, sb);
}

template <bool kRoot, class C>
ZAL_INLINE EngStatus FromInterleaved(const C* src, RealOf<C>* dst, int n) {
  using R = RealOf<C>;
  if (const EngStatus status = Check(n, src, dst)) return status;
  constexpr int kLanes = VectorOf<R>::kLanes;
  const R* const in[2] = {reinterpret_cast<const R*>(src), nullptr};
  R* const out[2] = {dst, nullptr};
  Blocks<kLanes, 2, 1>(in, out, 1, 1, n, [](const R* const(&s)[2], R* const(&d)[2], auto i) {
    const auto norm = Norms(s[0] + 2 * i);
    if constexpr (kRoot) {
      Store(d[0] + i, DefaultNaN(Sqrt(norm)));
    } else {
      Store(d[0] + i, DefaultNaN(norm));
    }
  });
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus MagnitudeSplit(const T* re, const T* im, T* dst, int n) {
  if (const EngStatus status = Check(n, re, im, dst)) return status;
  Map<false>(WithDefaultNaN{[](auto x, auto y) { return Sqrt(x * x + y * y); }}, dst, n, re, im);
  return engStsNoErr;
}

}  // namespace

EngStatus MagnitudeSplitF32(const float* re, const float* im, float* dst, int n) {
  return MagnitudeSplit(re, im, dst, n);
}
EngStatus MagnitudeSplitF64(const double* re, const double* im, double* dst, int n) {
  return MagnitudeSplit(re, im, dst, n);
}
EngStatus MagnitudeC32(const Complex32* src, float* dst, int n) {
  return FromInterleaved<true>(src, dst, n);
}
EngStatus MagnitudeC64(const Complex64* src, double* dst, int n) {
  return FromInterleaved<true>(src, dst, n);
}
EngStatus PowerSpectrC32(const Complex32* src, float* dst, int n) {
  return FromInterleaved<false>(src, dst, n);
}
EngStatus PowerSpectrC64(const Complex64* src, double* dst, int n) {
  return FromInterleaved<false>(src, dst, n);
}

EngStatus CartToPolarF32(const float* src, float* magnitude, float* phase, int n) {
  if (const EngStatus status = Check(n, src, magnitude, phase)) return status;
  constexpr int kLanes = VF32::kLanes;
  const float* const in[2] = {src, nullptr};
  float* const out[2] = {magnitude, phase};
  Blocks<kLanes, 2, 1>(in, out, 1, 2, n,
                       [](const float* const(&s)[2], float* const(&d)[2], auto i) {
                         const VF32 a = Load(s[0] + 2 * i);
                         const VF32 b = Load(s[0] + 2 * i + kLanes);
                         const VF32 re = EvenLanes(a, b);
                         const VF32 im = OddLanes(a, b);
                         Store(d[0] + i, DefaultNaN(Sqrt(re * re + im * im)));
                         Store(d[1] + i, DefaultNaN(Atan2(im, re)));
                       });
  return engStsNoErr;
}

EngStatus PolarToCartF32(const float* magnitude, const float* phase, float* dst, int n) {
  if (const EngStatus status = Check(n, magnitude, phase, dst)) return status;
  constexpr int kLanes = VF32::kLanes;
  const float* const in[2] = {magnitude, phase};
  float* const out[2] = {dst, nullptr};
  Blocks<kLanes, 1, 2>(in, out, 2, 1, n,
                       [](const float* const(&s)[2], float* const(&d)[2], auto i) {
                         constexpr int kHalf = VF64::kLanes;
                         const SinCosF64 low = SinCos(LoadWidened(s[1] + i));
                         const SinCosF64 high = SinCos(LoadWidened(s[1] + i + kHalf));
                         const VF64 m_low = LoadWidened(s[0] + i);
                         const VF64 m_high = LoadWidened(s[0] + i + kHalf);
                         const VF32 re = DefaultNaN(Narrow(m_low * low.cos, m_high * high.cos));
                         const VF32 im = DefaultNaN(Narrow(m_low * low.sin, m_high * high.sin));
                         Store(d[0] + 2 * i, ZipFirst(re, im));
                         Store(d[0] + 2 * i + kLanes, ZipSecond(re, im));
                       });
  return engStsNoErr;
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_COMPLEX_PRIMITIVES(ZAL_CHECK_SHAPE)
