// The transform kernels of one level: the vector path for lengths of at least the lane count,
// the one-lane path below. Included once per level translation unit, inside which ZAL_LEVEL
// names the level.

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/fft/fft_spec.h"
#include "engine/simd/vec_fft-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr int kSpecLevel = ZAL_LEVEL_INDEX;

#include "engine/primitives/fft/fft_scalar-inl.h"

template <class T>
using FFTVector = VectorOf<T>;

// The spec fixes the path: whole registers, or one lane for lengths too short for them.
template <class T, class Body>
ZAL_INLINE void WithLanes(const FFTSpec& spec, Body body) {
  if (spec.lanes > 1) {
    body(FFTVector<T>{});
  } else {
    body(Scalar<T>{});
  }
}

#include "engine/primitives/fft/fft_core-inl.h"
#include "engine/primitives/fft/fft_entries-inl.h"

}  // namespace

// Transforms shorter than lanes^2 points fill a lanes x lanes block only partly: a level with
// narrower registers runs them faster. Float cores of at most 16 points go to sse42's 4 x 4
// blocks from avx up; at avx512 the other cores shorter than 128 (float) or 64 (double) points go
// to avx2's 8 x 8 or 4 x 4 ones. Their specs carry the tag of the level that runs them.
#if ZAL_LEVEL_INDEX >= 3
#define ZAL_FFT_TINY_SETUP(K, T, call) \
  if (IsTinyFloatCore<T>(FFTKind::k##K, order)) return ::zal::engine::sse42::call;
#define ZAL_FFT_TINY_RUN(call) \
  if (spec && spec->level == 2) return ::zal::engine::sse42::call;
#else
#define ZAL_FFT_TINY_SETUP(K, T, call)
#define ZAL_FFT_TINY_RUN(call)
#endif
#if ZAL_LEVEL_INDEX == 5
#define ZAL_FFT_SHORT_SETUP(K, T, call) \
  ZAL_FFT_TINY_SETUP(K, T, call)        \
  if (IsShortCore<T>(FFTKind::k##K, order)) return ::zal::engine::avx2::call;
#define ZAL_FFT_SHORT_RUN(call) \
  ZAL_FFT_TINY_RUN(call)        \
  if (spec && spec->level == 4) return ::zal::engine::avx2::call;
#else
#define ZAL_FFT_SHORT_SETUP(K, T, call) ZAL_FFT_TINY_SETUP(K, T, call)
#define ZAL_FFT_SHORT_RUN(call) ZAL_FFT_TINY_RUN(call)
#endif

ZAL_FFT_ALL_PRIMITIVES

}  // namespace zal::engine::ZAL_LEVEL

ZAL_FFT_PRIMITIVES(ZAL_CHECK_SHAPE)
