// The transform one point at a time: the same algorithm as every level, with a one-lane vector.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/fft/fft_spec.h"
#include "engine/simd/vec_common-inl.h"

namespace zal::engine::portable {
namespace {

// Distinct from every level's tag: a portable spec runs only here.
constexpr int kSpecLevel = -1;

#include "engine/primitives/fft/fft_scalar-inl.h"

template <class T>
using FFTVector = Scalar<T>;

template <class T, class Body>
void WithLanes(const FFTSpec&, Body body) {
  body(Scalar<T>{});
}

#include "engine/primitives/fft/fft_core-inl.h"
#include "engine/primitives/fft/fft_entries-inl.h"

}  // namespace

#define ZAL_FFT_SHORT_SETUP(K, T, call)
#define ZAL_FFT_SHORT_RUN(call)

ZAL_FFT_ALL_PRIMITIVES

}  // namespace zal::engine::portable

ZAL_FFT_PRIMITIVES(ZAL_CHECK_SHAPE)
