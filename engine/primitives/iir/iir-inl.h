// The recursive filter at one level: whole blocks as small matrix products over the level's
// registers (see iir_spec.h). Included once per level translation unit, inside which ZAL_LEVEL
// names the level.

#include <xmmintrin.h>

#include <cstddef>
#include <type_traits>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/iir/iir_spec.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr int kSpecLevel = ZAL_LEVEL_INDEX;

template <class T>
using IIRVector = VectorOf<T>;

template <class V>
ZAL_INLINE bool HasNonFinite(V v) {
  return AnyLane(Unordered(v, v));
}

#include "engine/primitives/iir/iir_block-inl.h"
#include "engine/primitives/iir/iir_entries-inl.h"

}  // namespace

ZAL_IIR_ALL_ENTRIES

}  // namespace zal::engine::ZAL_LEVEL

ZAL_IIR_PRIMITIVES(ZAL_CHECK_SHAPE)
