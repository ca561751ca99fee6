// The transform kernels of one level: the vector path for lengths of at least the lane count,
// the one-lane path below. Included once per level translation unit, inside which ZAL_LEVEL
// names the level.

#include <cstddef>
#include <cstdint>

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

#if ZAL_LEVEL_INDEX == 5
// Transforms shorter than lanes^2 points would fill a 16 x 16 block only partly: the avx2 kernels,
// whose blocks are a quarter the size, run them faster. Their specs carry the avx2 tag.
#define ZAL_FFT_SHORT_SETUP(K, T, call) \
  if (IsShortCore<T>(FFTKind::k##K, order)) return ::zal::engine::avx2::call;
#define ZAL_FFT_SHORT_RUN(call) \
  if (spec && spec->level == 4) return ::zal::engine::avx2::call;
#else
#define ZAL_FFT_SHORT_SETUP(K, T, call)
#define ZAL_FFT_SHORT_RUN(call)
#endif

ZAL_FFT_ALL_PRIMITIVES

}  // namespace zal::engine::ZAL_LEVEL

ZAL_FFT_PRIMITIVES(ZAL_CHECK_SHAPE)
